// Loaded into the program with LD_PRELOAD: at each SIGRTMIN the heap in use, in bytes, is written
// to the file that TESSARY_HEAP_REPORT names: that in ordinary blocks, then that in large ones,
// which have mappings of their own. Without the variable it does nothing.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <malloc.h>
#include <pthread.h>

namespace {

void report(const std::string& path) {
  const struct mallinfo2 heap = mallinfo2();
  const std::string part = path + ".part";
  std::FILE* file = std::fopen(part.c_str(), "w");
  if (file == nullptr) return;
  fmt::print(file, "{} {}\n", heap.uordblks, heap.hblkhd);
  std::fclose(file);
  std::rename(part.c_str(), path.c_str());  // so that it's never read half written
}

/// Before main: every thread of the program inherits that the signal waits for this one.
[[gnu::constructor]] void start() {
  const char* path = std::getenv("TESSARY_HEAP_REPORT");
  if (path == nullptr) return;
  sigset_t asked;
  sigemptyset(&asked);
  sigaddset(&asked, SIGRTMIN);
  pthread_sigmask(SIG_BLOCK, &asked, nullptr);
  std::thread([asked, path = std::string(path)] {
    int number = 0;
    while (sigwait(&asked, &number) == 0) report(path);
  }).detach();
}

}  // namespace
