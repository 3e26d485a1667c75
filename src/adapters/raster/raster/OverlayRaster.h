#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/PixelBuffer.h"
#include "base/PointVertex.h"

namespace tessary {

/// Lines and points of the overlay, drawn into a picture by OpenGL's rules for both, pixel for
/// pixel where these leave no choice: a point lights the pixel that it lies in; a line lights, in
/// each column that it passes the centre of (each row, if it is steeper), the pixel that it passes
/// there. Both ends of a line belong to it, all ends lie below all lines, and nothing is blended.
class OverlayRaster {
 public:
  /// Draws into `target`, and remembers where.
  void draw(PixelBuffer& target, std::span<const PointVertex> lines,
            std::span<const PointVertex> points);
  /// Gives the pixels of the last drawing in `target` back to `frame`, of the same size.
  void erase(PixelBuffer& target, const PixelBuffer& frame);
  /// The last drawing's target is gone.
  void forget() { drawn_.clear(); }

 private:
  /// A drawing under way.
  class Pass;

  std::vector<uint32_t> drawn_;  // offsets of pixels, some more than once
};

}  // namespace tessary
