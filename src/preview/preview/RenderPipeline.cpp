#include "preview/RenderPipeline.h"

#include "preview/PassViewport.h"

namespace tessary {

void RenderPipeline::dropResources() {
  compositor_->clearBufferResources();
  madeOrFailed_ = false;
  composedSequence_ = 0;
  composedSize_ = {};
}

void RenderPipeline::prepareResources(const FrameRing::Newest& newest) {
  if (newest.run != preparedRun_) {
    dropResources();
    preparedRun_ = newest.run;
  }
  if (!newest.frame || madeOrFailed_) return;
  const TextureSize size = newest.frame->size();
  const bool largeEnough =
      size.width >= kSmallestFrame.width && size.height >= kSmallestFrame.height;
  if (!largeEnough) return;
  compositor_->initBufferResources(size);
  madeOrFailed_ = true;
}

bool RenderPipeline::composeNow(const OverlayVertices& overlay) {
  const FrameRing::Newest newest = ring_.newest();
  prepareResources(newest);
  if (!newest.frame || !compositor_->hasBufferResources()) return false;
  const bool isNewFrame = newest.sequence != composedSequence_;
  if (isNewFrame) {
    compositor_->setFrame(newest.frame);
    composedSequence_ = newest.sequence;
    composedSize_ = newest.frame->size();
  }
  if (isNewFrame || overlay.revision != composedRevision_) {
    compositor_->compose(overlay.lines, overlay.points);
    composedRevision_ = overlay.revision;
  }
  return true;
}

bool RenderPipeline::drawInView(const ViewGeometry& geometry, const OverlayVertices& overlay,
                                const Surface& surface, double devicePixelRatio) {
  // Also when nothing can be presented: a still has to find the current picture.
  if (!composeNow(overlay)) return false;
  // The frame queue is ahead of the main thread: a layout for another size would misplace the
  // picture.
  if (geometry.textureSize() != composedSize_) return false;
  if (surface.size.width <= 0 || surface.size.height <= 0) return false;
  const PassViewport viewport =
      passViewport(geometry.zoom(), geometry.viewLocation(), geometry.bitmapSize(), composedSize_);
  compositor_->present(
      pictureOnSurface(viewport, geometry.viewFrame(), composedSize_, devicePixelRatio), surface);
  return true;
}

bool RenderPipeline::readBack(PixelBuffer& target) {
  if (composedSequence_ == 0 || target.size() != composedSize_) return false;
  return compositor_->readBack(target);
}

void RenderPipeline::contextWasLost(Compositor& next) {
  compositor_->contextWasLost();
  compositor_ = &next;
  dropResources();
}

void RenderPipeline::contextWillBeDestroyed() {
  dropResources();
  compositor_->contextWillBeDestroyed();
}

}  // namespace tessary
