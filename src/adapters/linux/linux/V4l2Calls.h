#pragma once

#include <cstddef>

#include <poll.h>
#include <sys/types.h>

namespace tessary {

/// The system calls that a video node is driven with, so that a test can stand in for the driver.
/// Results and errno are those of the calls of the same name. Any thread.
class V4l2Calls {
 public:
  virtual ~V4l2Calls() = default;
  virtual int open(const char* path, int flags) = 0;
  virtual int close(int fd) = 0;
  virtual int ioctl(int fd, unsigned long request, void* argument) = 0;
  /// Shared, readable and writable.
  virtual void* mmap(size_t length, int fd, off_t offset) = 0;
  virtual int munmap(void* address, size_t length) = 0;
  virtual int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) = 0;
};

/// The kernel's own.
class SystemV4l2Calls final : public V4l2Calls {
 public:
  int open(const char* path, int flags) override;
  int close(int fd) override;
  int ioctl(int fd, unsigned long request, void* argument) override;
  void* mmap(size_t length, int fd, off_t offset) override;
  int munmap(void* address, size_t length) override;
  int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) override;
};

}  // namespace tessary
