#pragma once

#include <cstdint>

#include "measure/Operations.h"

namespace tessary {

/// The tool in hand and the shapes that it concerns. The mouse moves it on (MouseInteraction tells
/// how); the shape list keeps its indices in step with the shapes, and draws by them. Main thread.
struct ToolState {
  int32_t getCurrOperation() const { return _opr1; }
  /// Takes a tool in hand; the text, which is no mouse tool, gives the drag tool. What is half made
  /// stays so.
  void changeOperation(int32_t op) { _opr1 = op == kOprText ? kOprDrag : op; }
  /// Back to the drag tool, and no shape waits for its third point.
  void putDown() { _opr1 = _opr2 = kOprDrag; }
  /// No shape is selected or hovered any more.
  void unmark() { _iSelectedShape = _iHoverShape = -1; }

  bool isDragTool() const { return _opr1 == kOprDrag; }
  bool isSelected(int32_t index) const { return index == _iSelectedShape; }
  /// Whether the shape at `index`, of a type with a third point, does not have that point yet.
  bool isHalfMade(int32_t index, int32_t type) const {
    return hasThirdPoint(type) && index == _iDrawingShape && _opr2 != type;
  }
  bool isMarked(int32_t index) const { return isSelected(index) || index == _iHoverShape; }

  int32_t _opr1 = kOprDrag;  ///< The tool in hand, or the end of the calibration line.
  int32_t _opr2 = kOprDrag;  ///< The type of a shape that waits for its third point, or 0.
  // Indices may be stale: shapes go in the middle of a construction.
  int32_t _iDrawingShape = -1;   ///< Under construction, -1 for none. A text stays it when done.
  int32_t _iSelectedShape = -1;  ///< -1 for none.
  int32_t _iHoverShape = -1;     ///< Under the mouse, -1 for none.
};

}  // namespace tessary
