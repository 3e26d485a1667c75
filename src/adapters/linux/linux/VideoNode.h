#pragma once

#include <string>

#include "linux/V4l2Calls.h"

namespace tessary {

/// An open video node: owns the descriptor and closes it.
class VideoNode {
 public:
  /// Opens for streaming, without blocking. A node that can't be opened is not valid(), and
  /// openError() is the errno.
  VideoNode(V4l2Calls& calls, const std::string& path);
  ~VideoNode();
  VideoNode(const VideoNode&) = delete;
  VideoNode& operator=(const VideoNode&) = delete;

  bool valid() const noexcept { return fd_ >= 0; }
  int openError() const noexcept { return openError_; }
  int fd() const noexcept { return fd_; }
  V4l2Calls& calls() const noexcept { return calls_; }

  /// 0, or the errno. Repeated when a signal interrupts it.
  int ioctl(unsigned long request, void* argument) const;
  /// Asks for `count` memory-mapped capture buffers and stores how many there are. 0 gives all
  /// back, and with them the claim on the camera. The result is as ioctl()'s.
  int requestBuffers(unsigned& count) const;

 private:
  V4l2Calls& calls_;
  int fd_;
  int openError_;
};

}  // namespace tessary
