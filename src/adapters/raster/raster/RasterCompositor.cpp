#include "raster/RasterCompositor.h"

#include <cstring>
#include <utility>

namespace tessary {

void RasterCompositor::initBufferResources(TextureSize size) {
  clearBufferResources();
  if (size.width > 0 && size.height > 0) size_ = size;
}

void RasterCompositor::clearBufferResources() {
  size_ = {};
  frame_ = nullptr;
  _bufferTexture = nullptr;
  bufferHoldsFrame_ = false;
  overlay_.forget();
  composed_ = nullptr;
}

void RasterCompositor::setFrame(std::shared_ptr<const PixelBuffer> frame) {
  if (frame->size() != size_) return;
  // What was composed of the frame before stays presentable until the next composition.
  if (composed_ == frame_.get()) composed_ = frame.get();
  frame_ = std::move(frame);
  bufferHoldsFrame_ = false;
}

void RasterCompositor::compose(std::span<const PointVertex> lines,
                               std::span<const PointVertex> points) {
  if (!frame_) return;
  if (lines.empty() && points.empty()) {
    composed_ = frame_.get();
    return;
  }
  if (!_bufferTexture) _bufferTexture = std::make_unique<PixelBuffer>(size_);
  if (bufferHoldsFrame_) {
    overlay_.erase(*_bufferTexture, *frame_);
  } else {
    std::memcpy(_bufferTexture->data(), frame_->data(), frame_->byteCount());
    bufferHoldsFrame_ = true;
  }
  overlay_.draw(*_bufferTexture, lines, points);
  composed_ = _bufferTexture.get();
}

void RasterCompositor::present(const SurfaceRect& picture, const Surface& surface) {
  if (!surface.pixels) return;
  scaledCopy_.draw(composed_, picture, surface);
}

bool RasterCompositor::readBack(PixelBuffer& target) {
  if (!composed_ || target.size() != size_) return false;
  std::memcpy(target.data(), composed_->data(), composed_->byteCount());
  return true;
}

}  // namespace tessary
