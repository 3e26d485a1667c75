#include "linux/MappedBuffers.h"

#include <cerrno>

#include <linux/videodev2.h>
#include <sys/mman.h>

namespace tessary {
namespace {

// One is decoded while the driver fills the next, and two bridge a thread that comes late.
constexpr unsigned kBufferCount = 4;
// With fewer the driver has nothing to fill while a frame is decoded.
constexpr unsigned kFewestBuffers = 2;

v4l2_buffer captureBuffer(uint32_t index) {
  v4l2_buffer buffer{};
  buffer.index = index;
  buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  buffer.memory = V4L2_MEMORY_MMAP;
  return buffer;
}

}  // namespace

int MappedBuffers::allocate() {
  unmap();
  unsigned count = kBufferCount;
  if (const int error = node_.requestBuffers(count)) return error;
  if (count < kFewestBuffers) return ENOMEM;
  buffers_.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    v4l2_buffer buffer = captureBuffer(i);
    if (const int error = node_.ioctl(VIDIOC_QUERYBUF, &buffer)) return error;
    void* address = node_.calls().mmap(buffer.length, node_.fd(), off_t(buffer.m.offset));
    if (address == MAP_FAILED) return errno;
    buffers_.emplace_back(static_cast<uint8_t*>(address), buffer.length);
  }
  for (uint32_t i = 0; i < count; ++i) {
    if (const int error = queue(i)) return error;
  }
  return 0;
}

int MappedBuffers::queue(uint32_t index) const {
  v4l2_buffer buffer = captureBuffer(index);
  return node_.ioctl(VIDIOC_QBUF, &buffer);
}

void MappedBuffers::unmap() noexcept {
  for (const auto buffer : buffers_) node_.calls().munmap(buffer.data(), buffer.size());
  buffers_.clear();
}

}  // namespace tessary
