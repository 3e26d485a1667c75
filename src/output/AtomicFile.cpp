#include "output/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessary {
namespace {

constexpr int kNameAttempts = 100;  // more than a crash could ever leave behind for one name
std::atomic<uint32_t> s_filesMade{0};

/// Hidden, and taken by no other program and no other file of this one.
std::string hiddenName(const std::filesystem::path& path) {
  return fmt::format(".{}.{}-{}.part", path.filename().string(), ::getpid(), s_filesMade++);
}

}  // namespace

AtomicFile::AtomicFile(std::string path) : path_(std::move(path)) { open(); }

AtomicFile::~AtomicFile() {
  if (!hiddenPath_.empty()) ::unlink(hiddenPath_.c_str());
}

void AtomicFile::open() {
  const std::filesystem::path path(path_);
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    const std::string hidden = path.parent_path() / hiddenName(path);
    // Readable and writable as the user's umask says, like any other picture.
    file_ = FileDescriptor(::open(hidden.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file_.isOpen()) {
      hiddenPath_ = hidden;
      return;
    }
    if (errno != EEXIST) break;
  }
  fail(errno);
}

bool AtomicFile::write(std::span<const uint8_t> bytes) {
  if (!isOpen()) return false;
  while (!bytes.empty()) {
    const ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return fail(errno);
    bytes = bytes.subspan(size_t(written));
  }
  return true;
}

bool AtomicFile::commit(FileSync& sync) {
  if (!isOpen()) return false;
  struct stat status {};
  if (fstat(file_.get(), &status) != 0) return fail(errno);
  // Starts the write-out without waiting for it. With the blocks handed to the disk before the new
  // name, a journalling file system does not bring back a name without its bytes after a power
  // failure. Where that is not to be had, nothing is lost by asking.
  ::sync_file_range(file_.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
  if (!file_.close()) return fail(errno);
  if (::rename(hiddenPath_.c_str(), path_.c_str()) != 0) return fail(errno);
  hiddenPath_.clear();
  sync.makeDurable(path_, {status.st_dev, status.st_ino});
  return true;
}

bool AtomicFile::fail(int error) {
  error_ = std::generic_category().message(error);
  file_.close();
  return false;
}

}  // namespace tessary
