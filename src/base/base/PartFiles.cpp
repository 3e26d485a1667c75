#include "base/PartFiles.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "base/Number.h"

namespace tessary {
namespace {

constexpr std::string_view kEnding = ".part";
std::atomic<uint32_t> s_partsMade{0};

/// The process in ".NAME.PROCESS-NUMBER.part"; nothing for any other name.
std::optional<pid_t> processOf(std::string_view name) {
  if (!name.starts_with('.') || !name.ends_with(kEnding)) return std::nullopt;
  name.remove_suffix(kEnding.size());
  const size_t dash = name.rfind('-');
  const size_t dot = dash == std::string_view::npos ? dash : name.rfind('.', dash);
  if (dot == std::string_view::npos || dot == 0) return std::nullopt;
  if (!wholeInt(name.substr(dash + 1))) return std::nullopt;
  return wholeInt(name.substr(dot + 1, dash - dot - 1));
}

bool isGone(pid_t process) { return process > 0 && ::kill(process, 0) != 0 && errno == ESRCH; }

}  // namespace

std::string hiddenPartPath(const std::string& path) {
  const std::filesystem::path whole(path);
  const std::string name =
      fmt::format(".{}.{}-{}{}", whole.filename().string(), ::getpid(), s_partsMade++, kEnding);
  return (whole.parent_path() / name).string();
}

void markInUse(int fd) { ::flock(fd, LOCK_EX | LOCK_NB); }

bool isInUse(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  return file.isOpen() && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// On a disk that several machines share the process may be another machine's: that one holds its
// lock.
void removeAbandonedParts(const std::string& folder) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const auto process = processOf(entry->path().filename().string());
    const std::string path = entry->path().string();
    if (process && isGone(*process) && !isInUse(path)) ::unlink(path.c_str());
  }
}

}  // namespace tessary
