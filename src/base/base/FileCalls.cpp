#include "base/FileCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Number.h"
#include "base/SerialQueue.h"

namespace tessary {
namespace {

constexpr mode_t kMode = 0666;  // less the user's mask

}  // namespace

std::optional<bool> isFolder(const std::string& path) {
  return callWithin(kDiskAnswerLimit, [path] {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
  });
}

FileCalls& FileCalls::system() {
  // Never destroyed: a thread that is stuck on a disk may come back at any time.
  static auto& s_calls = *new FileCalls;
  return s_calls;
}

int FileCalls::openNameless(const std::string& folder) {
  return ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode);
}

int FileCalls::openNew(const std::string& path) {
  return ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kMode);
}

int FileCalls::link(int fd, const std::string& path) {
  const std::string self = fmt::format("/proc/self/fd/{}", fd);
  return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
}

int FileCalls::renameToNew(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS && errno != ENOTTY) return -1;
  // A file system that can't do that in one step.
  struct stat status {};
  if (::lstat(to.c_str(), &status) == 0) {
    errno = EEXIST;
    return -1;
  }
  return ::rename(from.c_str(), to.c_str());
}

int FileCalls::unlink(const std::string& path) { return ::unlink(path.c_str()); }

ssize_t FileCalls::writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) {
  return ::pwrite(fd, bytes.data(), bytes.size(), offset);
}

int FileCalls::truncate(int fd, int64_t length) { return ::ftruncate(fd, length); }

int FileCalls::flushToDisk(int fd) { return ::fdatasync(fd); }

int FileCalls::nameCount(int fd) {
  struct stat status {};
  return ::fstat(fd, &status) == 0 ? int(status.st_nlink) : -1;
}

int writeWhole(FileCalls& calls, int fd, std::span<const uint8_t> bytes, int64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = calls.writeAt(fd, bytes, offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    if (written == 0) return ENOSPC;
    bytes = bytes.subspan(size_t(written));
    offset += written;
  }
  return 0;
}

std::string fileErrorText(int code, const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  switch (code) {
    case ENOSPC:
    case EDQUOT: return "the disk is full";
    case EFBIG: return "the file has become as large as the disk allows";
    case ENOENT:
    case ENOTDIR: return fmt::format("the folder \"{}\" is gone", folder);
    case EACCES:
    case EPERM: return fmt::format("the folder \"{}\" may not be written to", folder);
    case EROFS: return "the disk can only be read";
    case EEXIST: return "there is a file of this name already";
    case EIO:
    case ENODEV:
    case ENXIO:
    case ENOTCONN:
    case ETIMEDOUT: return "the disk does not answer";
    default: return std::generic_category().message(code);
  }
}

std::string nextIndexedPath(const std::string& path) {
  const std::filesystem::path whole(path);
  const std::string stem = whole.stem().string();
  // DATE_TIME or DATE_TIME_INDEX: the index is the third piece.
  const size_t last = stem.rfind('_');
  std::optional<int32_t> index;
  if (std::ranges::count(stem, '_') > 1) index = wholeInt(std::string_view(stem).substr(last + 1));
  const std::string name = fmt::format("{}_{}{}", index ? stem.substr(0, last) : stem,
                                       index.value_or(0) + 1, whole.extension().string());
  return (whole.parent_path() / name).string();
}

}  // namespace tessary
