#include "linux/NodeProbe.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <linux/videodev2.h>

#include "base/FourCharCode.h"
#include "linux/VideoNode.h"

namespace tessary {
namespace {

// A driver that never says that the list is over must not keep us.
constexpr uint32_t kMostEntries = 256;

struct FrameSize {
  uint32_t width;
  uint32_t height;
  friend bool operator==(const FrameSize&, const FrameSize&) = default;
};

// Offered of a camera that takes any size in a range, beside its smallest and its largest.
constexpr std::array<FrameSize, 3> kCommonSizes{{{640, 480}, {1280, 720}, {1920, 1080}}};

bool onStep(uint32_t value, uint32_t least, uint32_t most, uint32_t step) {
  return value >= least && value <= most && (value - least) % std::max(step, 1u) == 0;
}

std::vector<FrameSize> sizesInRange(const v4l2_frmsize_stepwise& range) {
  std::vector<FrameSize> sizes{{range.min_width, range.min_height}};
  for (const FrameSize size : kCommonSizes) {
    if (onStep(size.width, range.min_width, range.max_width, range.step_width) &&
        onStep(size.height, range.min_height, range.max_height, range.step_height))
      sizes.push_back(size);
  }
  sizes.push_back({range.max_width, range.max_height});
  // The ends may themselves be common sizes.
  std::vector<FrameSize> distinct;
  for (const FrameSize size : sizes) {
    if (std::find(distinct.begin(), distinct.end(), size) == distinct.end())
      distinct.push_back(size);
  }
  return distinct;
}

// Asks for one entry of a list. False at its end, and when the camera vanished meanwhile or could
// not answer: that is left in `failure`.
bool entryOf(const VideoNode& node, unsigned long request, void* entry, int& failure) {
  const int error = node.ioctl(request, entry);
  if (error != 0 && error != EINVAL && error != ENOTTY) failure = error;
  return error == 0;
}

std::vector<FrameSize> frameSizes(const VideoNode& node, uint32_t pixelFormat, int& failure) {
  std::vector<FrameSize> sizes;
  for (uint32_t i = 0; i < kMostEntries; ++i) {
    v4l2_frmsizeenum entry{};
    entry.index = i;
    entry.pixel_format = pixelFormat;
    if (!entryOf(node, VIDIOC_ENUM_FRAMESIZES, &entry, failure)) break;
    if (entry.type != V4L2_FRMSIZE_TYPE_DISCRETE) return sizesInRange(entry.stepwise);
    sizes.push_back({entry.discrete.width, entry.discrete.height});
  }
  return sizes;
}

std::vector<FrameRateRange> frameRateRanges(const VideoNode& node, uint32_t pixelFormat,
                                            FrameSize size, int& failure) {
  const auto fraction = [](const v4l2_fract& f) { return Fraction{f.numerator, f.denominator}; };
  std::vector<FrameRateRange> ranges;
  for (uint32_t i = 0; i < kMostEntries; ++i) {
    v4l2_frmivalenum entry{};
    entry.index = i;
    entry.pixel_format = pixelFormat;
    entry.width = size.width;
    entry.height = size.height;
    if (!entryOf(node, VIDIOC_ENUM_FRAMEINTERVALS, &entry, failure)) break;
    if (entry.type != V4L2_FRMIVAL_TYPE_DISCRETE)
      return {{fraction(entry.stepwise.min), fraction(entry.stepwise.max)}};
    ranges.push_back({fraction(entry.discrete), fraction(entry.discrete)});
  }
  return ranges;
}

std::vector<VideoFormat> enumerateFormats(const VideoNode& node, int& failure) {
  std::vector<VideoFormat> formats;
  for (uint32_t i = 0; i < kMostEntries; ++i) {
    v4l2_fmtdesc description{};
    description.index = i;
    description.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (!entryOf(node, VIDIOC_ENUM_FMT, &description, failure)) break;
    const uint32_t subType = mediaSubTypeForPixelFormat(description.pixelformat);
    if (subType == 0) continue;
    for (const FrameSize size : frameSizes(node, description.pixelformat, failure)) {
      formats.push_back({{subType, int32_t(size.width), int32_t(size.height),
                          frameRateRanges(node, description.pixelformat, size, failure)},
                         description.pixelformat});
    }
  }
  return formats;
}

std::optional<VideoFormat> currentFormat(const VideoNode& node,
                                         const std::vector<VideoFormat>& formats, int& failure) {
  v4l2_format now{};
  now.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  if (entryOf(node, VIDIOC_G_FMT, &now, failure)) {
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const VideoFormat& f) {
      return f.pixelFormat == now.fmt.pix.pixelformat &&
             uint32_t(f.format.width) == now.fmt.pix.width &&
             uint32_t(f.format.height) == now.fmt.pix.height;
    });
    if (found != formats.end()) return *found;
  }
  // It stands at something that it doesn't offer, or that we can't show.
  if (!formats.empty()) return formats.front();
  return std::nullopt;
}

}  // namespace

uint32_t mediaSubTypeForPixelFormat(uint32_t pixelFormat) noexcept {
  switch (pixelFormat) {
    case V4L2_PIX_FMT_MJPEG:
    case V4L2_PIX_FMT_JPEG: return kMediaSubTypeMJPEG;
    case V4L2_PIX_FMT_YUYV: return kMediaSubTypeYUYV;
    case V4L2_PIX_FMT_UYVY: return kMediaSubTypeUYVY;
    case V4L2_PIX_FMT_NV12: return kMediaSubTypeNV12;
    default: return 0;
  }
}

NodeProbe probeNode(V4l2Calls& calls, const std::string& devNode) {
  NodeProbe probe;
  const VideoNode node(calls, devNode);
  if (!node.valid()) {
    if (node.openError() == EACCES || node.openError() == EPERM)
      probe.state = NodeProbe::State::NoPermission;
    return probe;
  }
  v4l2_capability capability{};
  if (const int error = node.ioctl(VIDIOC_QUERYCAP, &capability)) {
    if (error == ENOTTY || error == EINVAL) probe.state = NodeProbe::State::NotACamera;
    return probe;
  }
  const uint32_t caps = capability.capabilities & V4L2_CAP_DEVICE_CAPS ? capability.device_caps
                                                                       : capability.capabilities;
  if (!(caps & V4L2_CAP_VIDEO_CAPTURE) || !(caps & V4L2_CAP_STREAMING)) {
    probe.state = NodeProbe::State::NotACamera;
    return probe;
  }
  const auto* card = reinterpret_cast<const char*>(capability.card);
  probe.card.assign(card, ::strnlen(card, sizeof capability.card));
  int failure = 0;
  probe.formats = enumerateFormats(node, failure);
  probe.currentFormat = currentFormat(node, probe.formats, failure);
  // Half a list of formats is worse than none: it would stay for as long as the camera does.
  if (failure == 0) probe.state = NodeProbe::State::Camera;
  return probe;
}

}  // namespace tessary
