#include "output/FileSync.h"

#include <cerrno>
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

std::optional<FileIdentity> identityOf(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}

}  // namespace

FileSync::FileSync() : FileSync(::fsync) {}

FileSync::FileSync(Flush flush) : flush_(std::move(flush)) {}

void FileSync::makeDurable(std::string path, FileIdentity identity) {
  queue_.post([this, path = std::move(path), identity] { syncFile(path, identity); });
}

// Opened anew rather than kept open: a disk that hangs must not collect open files.
void FileSync::syncFile(const std::string& path, FileIdentity identity) const {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  if (!file.isOpen() || identityOf(file.get()) != identity) return;  // moved, removed, replaced

  if (const int error = flush(file.get())) {
    ::unlink(path.c_str());
    log("The file {} was lost, the disk could not take it: {}", path,
        std::generic_category().message(error));
    return;
  }
  const std::string folder = std::filesystem::path(path).parent_path();
  const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.isOpen()) return;
  if (const int error = flush(directory.get())) {
    log("The file {} may be gone after a power failure: {}", path,
        std::generic_category().message(error));
  }
}

int FileSync::flush(int fd) const {
  int error = 0;
  do {
    error = flush_(fd) == 0 ? 0 : errno;
  } while (error == EINTR);
  // Not every file system can; then there is nothing to wait for either.
  const bool cannot = error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EROFS;
  return cannot ? 0 : error;
}

}  // namespace tessary
