#include "platform/ffmpeg/MovieFileCalls.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessary {
namespace {

constexpr mode_t kMode = 0666;  // less the user's mask

}  // namespace

int MovieFileCalls::openNameless(const std::string& folder) {
  return ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode);
}

int MovieFileCalls::openNew(const std::string& path) {
  return ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kMode);
}

int MovieFileCalls::link(int fd, const std::string& path) {
  const std::string self = fmt::format("/proc/self/fd/{}", fd);
  return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
}

int MovieFileCalls::unlink(const std::string& path) { return ::unlink(path.c_str()); }

ssize_t MovieFileCalls::writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) {
  return ::pwrite(fd, bytes.data(), bytes.size(), offset);
}

int MovieFileCalls::truncate(int fd, int64_t length) { return ::ftruncate(fd, length); }

int MovieFileCalls::flushToDisk(int fd) { return ::fdatasync(fd); }

int MovieFileCalls::nameCount(int fd) {
  struct stat status {};
  return ::fstat(fd, &status) == 0 ? int(status.st_nlink) : -1;
}

}  // namespace tessary
