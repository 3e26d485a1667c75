#pragma once

#include <cstdint>
#include <vector>

#include "measure/SHAPE.h"

namespace tessary {

/// The records of the shapes, as the shape list and their drawing share them. Main thread.
struct Shapes {
  Shapes() { _shapes.reserve(100); }  // normal use never moves the records

  int32_t shapeCount() const { return static_cast<int32_t>(_shapes.size()); }
  bool hasShape(int32_t index) const { return 0 <= index && index < shapeCount(); }
  SHAPE& shape(int32_t index) { return _shapes[static_cast<size_t>(index)]; }
  const SHAPE& shape(int32_t index) const { return _shapes[static_cast<size_t>(index)]; }

  /// Oldest first, which is also the order of drawing and of hit testing.
  std::vector<SHAPE> _shapes;
};

}  // namespace tessary
