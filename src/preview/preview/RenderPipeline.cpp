#include "preview/RenderPipeline.h"

#include "preview/PassViewport.h"

namespace tessary {

void RenderPipeline::clearBufferResources() {
  {
    const std::lock_guard lock(mutex_);
    announced_.size = {};
    ++announced_.generation;
  }
  ring_.clear();
}

void RenderPipeline::initBufferResources(TextureSize size) {
  const std::lock_guard lock(mutex_);
  announced_.size = size;
  ++announced_.generation;
}

TextureSize RenderPipeline::textureSize() const {
  const std::lock_guard lock(mutex_);
  return announced_.size;
}

void RenderPipeline::dropResources() {
  compositor_.clearBufferResources();
  madeOrFailed_ = false;
  composedSequence_ = 0;
  composedSize_ = {};
}

TextureSize RenderPipeline::takeAnnouncement() {
  Announcement announced;
  {
    const std::lock_guard lock(mutex_);
    announced = announced_;
  }
  const TextureSize size = announced.size;
  if (announced.generation != takenGeneration_) {
    dropResources();
    takenGeneration_ = announced.generation;
  }
  const bool largeEnough =
      size.width >= kSmallestFrame.width && size.height >= kSmallestFrame.height;
  if (largeEnough && !madeOrFailed_) {
    compositor_.initBufferResources(size);
    madeOrFailed_ = true;
  }
  return size;
}

bool RenderPipeline::composeNow(const Overlay& overlay) {
  const TextureSize size = takeAnnouncement();
  if (!compositor_.hasBufferResources()) return false;
  const FrameRing::Newest newest = ring_.newest();
  if (!newest.frame || newest.frame->size() != size) return false;
  if (newest.sequence != composedSequence_ || overlayChanged_) {
    compositor_.compose(*newest.frame, overlay.lines, overlay.points);
    composedSequence_ = newest.sequence;
    composedSize_ = size;
    overlayChanged_ = false;
  }
  return true;
}

bool RenderPipeline::drawInView(const ViewGeometry& geometry, const Overlay& overlay,
                                TextureSize surface, double devicePixelRatio) {
  // Also when nothing can be presented: a still has to find the current picture.
  if (!composeNow(overlay)) return false;
  // The frame queue is ahead of the main thread: a layout for another size would misplace the
  // picture.
  if (geometry.textureSize() != composedSize_) return false;
  if (surface.width <= 0 || surface.height <= 0) return false;
  const PassViewport viewport =
      passViewport(geometry.zoom(), geometry.viewLocation(), geometry.bitmapSize(), composedSize_);
  compositor_.present(
      pictureOnSurface(viewport, geometry.viewFrame(), composedSize_, devicePixelRatio), surface);
  return true;
}

bool RenderPipeline::readBack(PixelBuffer& target) {
  if (composedSequence_ == 0 || target.size() != composedSize_) return false;
  return compositor_.readBack(target);
}

void RenderPipeline::contextWillBeDestroyed() {
  dropResources();
  compositor_.contextWillBeDestroyed();
}

}  // namespace tessary
