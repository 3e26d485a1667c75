#include "linux/VideoNegotiation.h"

#include <algorithm>
#include <cerrno>

#include <linux/videodev2.h>

namespace tessary {
namespace {

size_t fewestBytes(uint32_t pixelFormat, size_t width, size_t height, size_t bytesPerRow) {
  if (width == 0 || height == 0) return 1;
  // Nothing need follow the last row.
  switch (pixelFormat) {
    case V4L2_PIX_FMT_YUYV:
    case V4L2_PIX_FMT_UYVY: return std::max(bytesPerRow, width * 2) * (height - 1) + width * 2;
    case V4L2_PIX_FMT_NV12: {
      const size_t rows = height + (height + 1) / 2;
      return std::max(bytesPerRow, width) * (rows - 1) + width;
    }
    default: return 1;
  }
}

}  // namespace

int negotiateVideo(const VideoNode& node, const WantedVideo& wanted, AgreedVideo& agreed) {
  v4l2_format format{};
  format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  format.fmt.pix.width = uint32_t(wanted.format.format.width);
  format.fmt.pix.height = uint32_t(wanted.format.format.height);
  format.fmt.pix.pixelformat = wanted.format.pixelFormat;
  format.fmt.pix.field = V4L2_FIELD_ANY;
  if (const int error = node.ioctl(VIDIOC_S_FMT, &format)) return error;
  const v4l2_pix_format& pix = format.fmt.pix;
  agreed = {pix.pixelformat,
            {int32_t(pix.width), int32_t(pix.height)},
            pix.bytesperline,
            fewestBytes(pix.pixelformat, pix.width, pix.height, pix.bytesperline)};

  v4l2_streamparm parameters{};
  parameters.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  int error;
  if (wanted.minFrameDuration.numerator != 0) {
    parameters.parm.capture.timeperframe = {wanted.minFrameDuration.numerator,
                                            wanted.minFrameDuration.denominator};
    error = node.ioctl(VIDIOC_S_PARM, &parameters);
  } else {
    error = node.ioctl(VIDIOC_G_PARM, &parameters);
  }
  // A camera whose rate can't be set or told runs at the rate it has.
  if (error == EINVAL || error == ENOTTY) return 0;
  if (error != 0) return error;
  const v4l2_fract& interval = parameters.parm.capture.timeperframe;
  if (interval.denominator != 0)
    agreed.frameInterval =
        std::chrono::milliseconds(uint64_t(interval.numerator) * 1000 / interval.denominator);
  return 0;
}

}  // namespace tessary
