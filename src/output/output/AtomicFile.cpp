#include "output/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PartFiles.h"

namespace tessary {
namespace {

constexpr int kNameAttempts = 100;  // more than crashes could ever leave behind of one process

}  // namespace

AtomicFile::AtomicFile(std::string path, FileCalls& calls) : path_(std::move(path)), calls_(calls) {
  if (!openNameless()) openPart();
}

AtomicFile::~AtomicFile() {
  file_.close();
  if (!partPath_.empty()) calls_.unlink(partPath_);
}

// A folder that can't be written to is told by the second attempt.
bool AtomicFile::openNameless() {
  file_ = FileDescriptor(calls_.openNameless(std::filesystem::path(path_).parent_path().string()));
  return file_.isOpen();
}

bool AtomicFile::openPart() {
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    const std::string part = hiddenPartPath(path_);
    file_ = FileDescriptor(calls_.openNew(part));
    if (file_.isOpen()) {
      partPath_ = part;
      markInUse(file_.get());
      return true;
    }
    if (errno != EEXIST) break;
  }
  return fail(errno);
}

bool AtomicFile::save(std::span<const uint8_t> bytes) {
  if (!isOpen() || !write(bytes)) return false;
  if (takeName()) return true;
  if (!partPath_.empty()) return false;
  // Only a rename replaces a file, and it wants a name. And where /proc is not to be had, a
  // nameless file stays nameless.
  error_ = 0;
  file_.close();
  return openPart() && write(bytes) && takeName();
}

bool AtomicFile::write(std::span<const uint8_t> bytes) {
  if (const int error = writeWhole(calls_, file_.get(), bytes, 0)) return fail(error);
  struct stat status {};
  if (fstat(file_.get(), &status) != 0) return fail(errno);
  identity_ = {status.st_dev, status.st_ino};
  // Starts the write-out without waiting for it. With the blocks handed to the disk before the new
  // name, a journalling file system does not bring back a name without its bytes after a power
  // failure. Where that is not to be had, nothing is lost by asking.
  ::sync_file_range(file_.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
  return true;
}

bool AtomicFile::takeName() {
  if (partPath_.empty()) {
    if (calls_.link(file_.get(), path_) != 0) return fail(errno);
    return file_.close() || fail(errno);
  }
  if (!file_.close()) return fail(errno);
  if (::rename(partPath_.c_str(), path_.c_str()) != 0) return fail(errno);
  partPath_.clear();
  return true;
}

bool AtomicFile::fail(int error) {
  error_ = error;
  if (!partPath_.empty()) file_.close();
  return false;
}

}  // namespace tessary
