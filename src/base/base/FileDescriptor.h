#pragma once

#include <utility>

#include <unistd.h>

namespace tessary {

/// An open file or folder, closed at its end.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd = -1) noexcept : fd_(fd) {}
  ~FileDescriptor() {
    if (isOpen()) ::close(fd_);
  }
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  bool isOpen() const noexcept { return fd_ >= 0; }
  int get() const noexcept { return fd_; }
  /// Closes it now, because some file systems tell only then what went wrong. False with errno set
  /// for a failure.
  bool close() noexcept { return !isOpen() || ::close(std::exchange(fd_, -1)) == 0; }

 private:
  int fd_;
};

}  // namespace tessary
