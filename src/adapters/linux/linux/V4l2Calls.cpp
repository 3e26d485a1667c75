#include "linux/V4l2Calls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tessary {

int SystemV4l2Calls::open(const char* path, int flags) { return ::open(path, flags); }

int SystemV4l2Calls::close(int fd) { return ::close(fd); }

int SystemV4l2Calls::ioctl(int fd, unsigned long request, void* argument) {
  return ::ioctl(fd, request, argument);
}

void* SystemV4l2Calls::mmap(size_t length, int fd, off_t offset) {
  return ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, offset);
}

int SystemV4l2Calls::munmap(void* address, size_t length) { return ::munmap(address, length); }

int SystemV4l2Calls::poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) {
  return ::poll(descriptors, count, timeoutMilliseconds);
}

}  // namespace tessary
