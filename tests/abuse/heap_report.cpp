// Loaded into the program with LD_PRELOAD: counts the heap in use, and at each SIGRTMIN writes the
// bytes in blocks smaller than kLarge to the file that TESSARY_HEAP_REPORT names. What is larger is
// left out: frames come and go, and where the C library puts them, in a hole of the heap or in a
// mapping of their own, is chance. That is why its own figures won't do. Without the variable
// nothing is written.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <malloc.h>
#include <pthread.h>

// The C library's own, below the names that are replaced here.
extern "C" {
void* __libc_malloc(size_t size) noexcept;
void* __libc_calloc(size_t count, size_t size) noexcept;
void* __libc_realloc(void* block, size_t size) noexcept;
void* __libc_memalign(size_t alignment, size_t size) noexcept;
void __libc_free(void* block) noexcept;
}

namespace {

constexpr size_t kLarge = 256 * 1024;

std::atomic<int64_t> s_inUse{0};

/// What this block counts for.
int64_t weight(void* block) {
  const size_t size = malloc_usable_size(block);
  return size < kLarge ? int64_t(size) : 0;
}

void* taken(void* block) {
  s_inUse.fetch_add(weight(block), std::memory_order_relaxed);
  return block;
}

void report(const std::string& path) {
  const int64_t inUse = s_inUse;
  const std::string part = path + ".part";
  std::FILE* file = std::fopen(part.c_str(), "w");
  if (file == nullptr) return;
  fmt::print(file, "{}\n", inUse);
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

extern "C" {

void* malloc(size_t size) noexcept { return taken(__libc_malloc(size)); }

void* calloc(size_t count, size_t size) noexcept { return taken(__libc_calloc(count, size)); }

void* realloc(void* block, size_t size) noexcept {
  const int64_t before = weight(block);
  void* const moved = __libc_realloc(block, size);
  // Without room the block stays as it was; a size of zero has freed it.
  if (moved != nullptr || size == 0) s_inUse.fetch_sub(before, std::memory_order_relaxed);
  return taken(moved);
}

void* memalign(size_t alignment, size_t size) noexcept {
  return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) noexcept { return memalign(alignment, size); }

int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
  void* const made = memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

void free(void* block) noexcept {
  s_inUse.fetch_sub(weight(block), std::memory_order_relaxed);
  __libc_free(block);
}

}  // extern "C"
