#pragma once

#include <memory>
#include <span>

#include "base/Geometry.h"
#include "base/PixelBuffer.h"
#include "base/PointVertex.h"
#include "platform/Surface.h"

namespace tessary {

/// Draws a camera frame and the overlay into one picture of the frame's size, and that picture to
/// the window. All calls come on one thread; where there is a graphics context, with it current.
class Compositor {
 public:
  virtual ~Compositor() = default;

  /// Makes the frame-sized picture (`_bufferTexture`) and what goes with it. A pipeline that can't
  /// be made ends the program with a log line.
  virtual void initBufferResources(TextureSize size) = 0;
  /// Drops them. Harmless when there are none.
  virtual void clearBufferResources() = 0;
  virtual bool hasBufferResources() const = 0;
  /// Drops everything that belongs to the graphics context, also what outlives a frame size. The
  /// next picture may be made in another context.
  virtual void contextWillBeDestroyed() = 0;

  /// The same when the context is gone already, and nothing in it can be told to go.
  virtual void contextWasLost() = 0;

  /// The frame of the compositions that follow, of the picture's size: kept or copied, as suits.
  virtual void setFrame(std::shared_ptr<const PixelBuffer> frame) = 0;
  /// Fills the whole picture: the frame, over it `lines` (two vertices a segment, of one colour),
  /// over these `points` (one pixel each). Nothing is blended: what is drawn replaces.
  virtual void compose(std::span<const PointVertex> lines, std::span<const PointVertex> points) = 0;

  /// Fills `surface` with `kSurroundingGrey` and draws the composed picture into `picture`, in
  /// pixels from the surface's top left corner; parts may lie outside.
  virtual void present(const SurfaceRect& picture, const Surface& surface) = 0;

  /// Copies the composed picture into `target`, which has its size. False when there is none.
  virtual bool readBack(PixelBuffer& target) = 0;
};

}  // namespace tessary
