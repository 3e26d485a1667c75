#include "output/FileSync.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "base/Log.h"

namespace tessary {
namespace {

constexpr std::chrono::seconds kEndLimit(2);

std::optional<FileIdentity> identityOf(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}

}  // namespace

/// What the thread uses.
struct FileSync::Work {
  Refused refused;
  Flush flush;

  void syncFile(const std::string& path, FileIdentity identity) const;
  /// The error number, 0 for none.
  int flushed(int fd) const;
};

FileSync::FileSync(Refused refused) : FileSync(std::move(refused), ::fsync) {}

FileSync::FileSync(Refused refused, Flush flush)
    : work_(std::make_shared<Work>(Work{std::move(refused), std::move(flush)})),
      queue_("com.tessary.file.sync", kEndLimit) {}

void FileSync::makeDurable(std::string path, FileIdentity identity) {
  queue_.post([work = work_, path = std::move(path), identity] { work->syncFile(path, identity); });
}

// Opened anew rather than kept open: a disk that hangs must not collect open files.
void FileSync::Work::syncFile(const std::string& path, FileIdentity identity) const {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  if (!file.isOpen() || identityOf(file.get()) != identity) return;  // moved, removed, replaced

  if (const int error = flushed(file.get())) {
    log("The file {} may be lost, the disk could not take it: {}", path,
        std::generic_category().message(error));
    if (refused) refused(path);
    return;
  }
  const std::string folder = std::filesystem::path(path).parent_path();
  const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.isOpen()) return;
  if (const int error = flushed(directory.get())) {
    log("The file {} may be gone after a power failure: {}", path,
        std::generic_category().message(error));
  }
}

int FileSync::Work::flushed(int fd) const {
  int error = 0;
  do {
    error = flush(fd) == 0 ? 0 : errno;
  } while (error == EINTR);
  // Not every file system can; then there is nothing to wait for either.
  const bool cannot = error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EROFS;
  return cannot ? 0 : error;
}

}  // namespace tessary
