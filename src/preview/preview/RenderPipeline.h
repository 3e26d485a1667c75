#pragma once

#include <cstdint>

#include "base/PixelBuffer.h"
#include "platform/Compositor.h"
#include "preview/FrameRing.h"
#include "preview/OverlayVertices.h"
#include "preview/ViewGeometry.h"

namespace tessary {

/// Turns the newest frame and the overlay into the picture on screen, once a display tick.
///
/// Frame and overlay are composed in the frame's pixel grid; zoom and pan come in only when the
/// result is drawn to the window. What the compositor holds belongs to the graphics context's
/// thread, so it follows the ring in the next draw: a new run of frames makes everything anew, as
/// nothing is resized in place, and an empty ring leaves nothing of it. All calls come on that
/// thread with the context current, except where noted.
class RenderPipeline {
 public:
  /// Smaller frames are not composed.
  static constexpr TextureSize kSmallestFrame{640, 480};

  /// Both have to outlive the pipeline.
  RenderPipeline(FrameRing& ring, Compositor& compositor) : ring_(ring), compositor_(&compositor) {}

  /// Composes if the frame or the overlay changed, then draws the result to `surface`, which covers
  /// the whole container. False, and nothing drawn, without a picture, with one smaller than 640 by
  /// 480, or when `geometry` does not know the frames' size yet.
  bool drawInView(const ViewGeometry& geometry, const OverlayVertices& overlay,
                  const Surface& surface, double devicePixelRatio);
  /// Composes if anything changed, without drawing to the screen. Whether there is a picture.
  bool composeNow(const OverlayVertices& overlay);
  /// Size of the composed picture, 0 by 0 if there is none. Needs no context.
  TextureSize composedSize() const { return composedSize_; }
  /// Copies the composed picture into `target`, of `composedSize`. False when there is none.
  bool readBack(PixelBuffer& target);
  /// The context was lost with all that lived in it: `next`, which has to outlive the pipeline,
  /// draws from now on.
  void contextWasLost(Compositor& next);
  /// The context is about to go: drops what lives in it. A draw in the next context makes it anew.
  void contextWillBeDestroyed();

 private:
  /// Brings the compositor's resources in line with the ring.
  void prepareResources(const FrameRing::Newest& newest);
  void dropResources();

  FrameRing& ring_;
  Compositor* compositor_;

  uint64_t preparedRun_ = 0;
  bool madeOrFailed_ = false;      // one attempt for each run
  uint64_t composedSequence_ = 0;  // 0: nothing composed; the ring counts from 1
  uint64_t composedRevision_ = 0;  // of the overlay
  TextureSize composedSize_;
};

}  // namespace tessary
