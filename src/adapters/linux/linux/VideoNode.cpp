#include "linux/VideoNode.h"

#include <cerrno>

#include <fcntl.h>
#include <linux/videodev2.h>

namespace tessary {

VideoNode::VideoNode(V4l2Calls& calls, const std::string& path)
    : calls_(calls),
      fd_(calls.open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)),
      openError_(fd_ < 0 ? errno : 0) {}

VideoNode::~VideoNode() {
  // After an unplug this fails, and the descriptor is gone all the same.
  if (fd_ >= 0) calls_.close(fd_);
}

int VideoNode::ioctl(unsigned long request, void* argument) const {
  for (;;) {
    if (calls_.ioctl(fd_, request, argument) == 0) return 0;
    if (errno != EINTR) return errno;
  }
}

int VideoNode::requestBuffers(unsigned& count) const {
  v4l2_requestbuffers request{};
  request.count = count;
  request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  request.memory = V4L2_MEMORY_MMAP;
  const int error = ioctl(VIDIOC_REQBUFS, &request);
  count = request.count;
  return error;
}

}  // namespace tessary
