#include "simulated/FrameLoop.h"

#include <algorithm>
#include <utility>

#include <libyuv.h>

#include "base/FourCharCode.h"

namespace tessary {
namespace {

constexpr size_t kLongestLoop = 48;
constexpr size_t kRawBytesKept = 64'000'000;  // so that uncompressed frames don't fill the memory

/// Of an uncompressed frame. Sizes are even.
size_t rawBytes(const CaptureFormat& format) {
  const size_t pixels = size_t(format.width) * size_t(format.height);
  return format.mediaSubType == kMediaSubTypeNV12 ? pixels * 3 / 2 : pixels * 2;
}

size_t loopLength(const CaptureFormat& format) {
  if (format.mediaSubType == kMediaSubTypeMJPEG) return kLongestLoop;
  return std::clamp<size_t>(kRawBytesKept / rawBytes(format), 8, kLongestLoop);
}

}  // namespace

struct FrameLoop::Renderer {
  explicit Renderer(const CaptureFormat& format, size_t frameCount)
      : scene({format.width, format.height}, frameCount), picture({format.width, format.height}) {}

  SimulatedScene scene;
  PixelBuffer picture;
};

FrameLoop::FrameLoop(const CaptureFormat& format, std::shared_ptr<ImageEncoder> encoder)
    : format_(format),
      encoder_(std::move(encoder)),
      frames_(loopLength(format)),
      missing_(frames_.size()) {}

FrameLoop::~FrameLoop() = default;

size_t FrameLoop::bytesPerRow() const {
  switch (format_.mediaSubType) {
    case kMediaSubTypeMJPEG: return 0;
    case kMediaSubTypeNV12: return size_t(format_.width);
    default: return size_t(format_.width) * 2;
  }
}

std::span<const uint8_t> FrameLoop::frame(size_t index) {
  index %= frames_.size();
  std::vector<uint8_t>& bytes = frames_[index];
  if (bytes.empty()) {
    if (!renderer_) renderer_ = std::make_unique<Renderer>(format_, frames_.size());
    bytes = encoded(index);
    if (!bytes.empty() && --missing_ == 0) renderer_.reset();
  }
  return bytes;
}

std::vector<uint8_t> FrameLoop::encoded(size_t index) {
  PixelBuffer& picture = renderer_->picture;
  renderer_->scene.draw(index, picture);
  if (format_.mediaSubType == kMediaSubTypeMJPEG) return encoder_->encode(picture);
  std::vector<uint8_t> bytes(rawBytes(format_));
  const int row = int(bytesPerRow());
  if (format_.mediaSubType == kMediaSubTypeNV12) {
    libyuv::ARGBToNV12(picture.data(), int(picture.bytesPerRow()), bytes.data(), row,
                       bytes.data() + size_t(row) * size_t(format_.height), row, format_.width,
                       format_.height);
  } else {
    libyuv::ARGBToYUY2(picture.data(), int(picture.bytesPerRow()), bytes.data(), row, format_.width,
                       format_.height);
  }
  return bytes;
}

}  // namespace tessary
