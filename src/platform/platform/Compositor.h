#pragma once

#include <span>

#include "base/Geometry.h"
#include "base/PixelBuffer.h"
#include "base/PointVertex.h"

namespace tessary {

/// Draws a camera frame and the overlay into one texture of the frame's size, and that texture to
/// the window. All calls come on the thread of the graphics context, with that context current.
class Compositor {
 public:
  virtual ~Compositor() = default;

  /// Makes the frame-sized texture (`_bufferTexture`) and what goes with it. A pipeline that can't
  /// be made ends the program with a log line.
  virtual void initBufferResources(TextureSize size) = 0;
  /// Drops them. Harmless when there are none.
  virtual void clearBufferResources() = 0;
  virtual bool hasBufferResources() const = 0;
  /// Drops everything that belongs to the graphics context, also what outlives a frame size. The
  /// next texture may be made in another context.
  virtual void contextWillBeDestroyed() = 0;

  /// Fills the whole texture: `frame` (of the texture's size), over it `lines` (two vertices a
  /// segment), over these `points` (one pixel each). Nothing is blended: what is drawn replaces.
  virtual void compose(const PixelBuffer& frame, std::span<const PointVertex> lines,
                       std::span<const PointVertex> points) = 0;

  /// Clears the framebuffer that is bound now, `surface` pixels large, to the grey 0.1 and draws
  /// the texture into `picture`, in pixels from the surface's top left corner; parts may lie
  /// outside.
  virtual void present(const SurfaceRect& picture, TextureSize surface) = 0;

  /// Copies the texture into `target`, which has its size. False when there is none.
  virtual bool readBack(PixelBuffer& target) = 0;
};

}  // namespace tessary
