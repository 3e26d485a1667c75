#pragma once

#include <cstdint>
#include <vector>

#include "measure/Operations.h"
#include "measure/SHAPE.h"

namespace tessary {

/// What the shape list, the mouse and the drawing of shapes share. Main thread.
struct ShapeState {
  ShapeState() { _shapes.reserve(100); }  // normal use never moves the records

  int32_t shapeCount() const { return static_cast<int32_t>(_shapes.size()); }
  /// Indices may be stale: shapes go in the middle of a construction.
  bool hasShape(int32_t index) const { return 0 <= index && index < shapeCount(); }
  SHAPE& shape(int32_t index) { return _shapes[static_cast<size_t>(index)]; }
  const SHAPE& shape(int32_t index) const { return _shapes[static_cast<size_t>(index)]; }

  int32_t _opr1 = kOprDrag;  ///< The tool in hand, or the end of the calibration line.
  int32_t _opr2 = kOprDrag;  ///< The type of a shape that waits for its third point, or 0.
  /// Oldest first, which is also the order of drawing and of hit testing.
  std::vector<SHAPE> _shapes;
  int32_t _iDrawingShape = -1;   ///< Under construction, -1 for none. A text stays it when done.
  int32_t _iSelectedShape = -1;  ///< -1 for none.
  int32_t _iHoverShape = -1;     ///< Under the mouse, -1 for none.
};

}  // namespace tessary
