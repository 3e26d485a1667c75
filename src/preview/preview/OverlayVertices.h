#pragma once

#include <cstdint>
#include <span>

#include "base/PointVertex.h"

namespace tessary {

/// Everything that is drawn over the picture, in the frame's own pixel grid. Borrowed.
struct OverlayVertices {
  std::span<const PointVertex> lines;
  std::span<const PointVertex> points;
  uint64_t revision = 0;  ///< Another one for other vertices.
};

}  // namespace tessary
