#include "measure/MouseInteraction.h"

#include <utility>

#include "base/Truncate.h"

namespace tessary {

int32_t MouseInteraction::mouseDown(ViewPoint viewPoint, ScreenPoint screenPoint) {
  if (!isAt100Percent()) {
    _mouseDown = true;
    rememberPress(screenPoint);
    return -1;
  }
  const ImagePoint point = imagePointAt100Percent(viewPoint);
  if (isThirdPointDue()) {
    // `_mouseDown` stays as it is, so that the release of this press does nothing.
    rememberPress(screenPoint);
    return finishThirdPoint(point);
  }
  _mouseDown = true;
  if (calibrationLine_.isShown()) {
    calibrationLine_.mouseDown(point, tool_._opr1);
    _ptMouseClick = screenPoint;
    return -1;
  }
  // An unplugged camera can take the calibration line away while one of its ends is held.
  if (tool_._opr1 == kOprCalibrationLeft || tool_._opr1 == kOprCalibrationRight) {
    tool_._opr1 = kOprDrag;
  }
  if (tool_.isDragTool()) {
    select(point);
    rememberPress(screenPoint);
  } else {
    startShape(point);
  }
  return -1;
}

int32_t MouseInteraction::mouseUp(ViewPoint viewPoint) {
  if (!_mouseDown) return -1;
  _mouseDown = false;
  if (!isAt100Percent()) return -1;
  if (calibrationLine_.isShown()) {
    CalibrationLine::mouseUp(tool_._opr1);
    return -1;
  }
  SHAPE* const drawing = shapes_.drawingShape();
  if (hasSelectedShape() || tool_.isDragTool() || !drawing) return -1;
  drawing->pt2 = imagePointAt100Percent(viewPoint);
  if (hasThirdPoint(tool_._opr1)) {
    tool_._opr2 = tool_._opr1;
    return -1;
  }
  // Cleared before the redraw: this is what makes a line's long construction ticks short.
  const int32_t finished = std::exchange(tool_._iDrawingShape, -1);
  shapes_.redrawSelectedShape(finished);
  tool_.putDown();
  return finished;
}

void MouseInteraction::mouseDragged(ViewPoint viewPoint, ScreenPoint screenPoint) {
  if (isAt100Percent() && calibrationLine_.isShown()) {
    dragCalibrationLine(screenPoint);
  } else if (!tool_.isDragTool()) {
    extendShape(imagePointAt100Percent(viewPoint));  // at any zoom: meant
  } else if (isAt100Percent() && hasSelectedShape()) {
    dragSelectedShape(screenPoint);
  } else {
    geometry_.pan(_ptMouseClick, screenPoint);
  }
}

void MouseInteraction::mouseMoved(ViewPoint viewPoint) {
  if (!isAt100Percent()) return;
  const ImagePoint point = imagePointAt100Percent(viewPoint);
  if (calibrationLine_.isShown()) {
    calibrationLine_.mouseMoved(point);
    overlay_.redrawLinesAndPoints();
  } else if (hasThirdPoint(tool_._opr2)) {
    SHAPE* const drawing = shapes_.drawingShape();
    if (!drawing) return;
    drawing->pt3 = point;
    shapes_.redrawSelectedShape(tool_._iDrawingShape);
  } else if (tool_.isDragTool() && !shapes_._shapes.empty()) {
    hover(point);
  }
}

void MouseInteraction::rememberPress(ScreenPoint screenPoint) {
  _ptMouseClick = screenPoint;
  geometry_.beginPan();
}

int32_t MouseInteraction::finishThirdPoint(ImagePoint point) {
  SHAPE* const drawing = shapes_.drawingShape();
  // Not redrawn: what the last move of the mouse drew is meant to stand.
  if (drawing) drawing->pt3 = point;
  tool_.putDown();
  const int32_t index = std::exchange(tool_._iDrawingShape, -1);
  return drawing ? index : -1;
}

void MouseInteraction::select(ImagePoint point) {
  // A shape that was hovered only is meant to keep its frames until its next redraw.
  tool_._iHoverShape = -1;
  const int32_t hit = shapes_.hitTest(point);
  if (hit >= 0) _ptMoved = {};
  moveMark(tool_._iSelectedShape, hit);
}

void MouseInteraction::hover(ImagePoint point) {
  moveMark(tool_._iHoverShape, shapes_.hitTest(point));
}

void MouseInteraction::moveMark(int32_t& mark, int32_t index) {
  const int32_t before = std::exchange(mark, index);
  if (before == index) return;
  if (shapes_.hasShape(before)) shapes_.redrawSelectedShape(before);
  if (shapes_.hasShape(index)) shapes_.redrawSelectedShape(index);
}

void MouseInteraction::startShape(ImagePoint point) {
  moveMark(tool_._iSelectedShape, -1);
  moveMark(tool_._iHoverShape, -1);
  tool_._opr2 = kOprDrag;
  SHAPE& s = shapes_.newShape(point);
  if (s.type == kOprPencil) s.pencilPoints.push_back(&point, 1);
}

void MouseInteraction::extendShape(ImagePoint point) {
  SHAPE* const drawing = shapes_.drawingShape();
  if (!drawing) return;
  if (drawing->type == kOprPencil) {
    drawing->pencilPoints.push_back(&point, 1);
  } else {
    drawing->pt2 = point;
  }
  shapes_.redrawSelectedShape(tool_._iDrawingShape);
}

void MouseInteraction::dragCalibrationLine(ScreenPoint screenPoint) {
  if (calibrationLine_.mouseDragged(tool_._opr1, screenPoint.x - _ptMouseClick.x,
                                    geometry_.viewLocation().x,
                                    geometry_.superviewFrameSize().width)) {
    overlay_.redrawLinesAndPoints();
  }
}

void MouseInteraction::dragSelectedShape(ScreenPoint screenPoint) {
  // Measured from the press, so that the fractions cut off here are not lost across events.
  const int32_t dx = truncateToInt32(screenPoint.x - _ptMouseClick.x - _ptMoved.x);
  const int32_t dy = truncateToInt32(screenPoint.y - _ptMouseClick.y - _ptMoved.y);
  if (dx == 0 && dy == 0) return;
  shapes_.moveShape(tool_._iSelectedShape, dx, dy);
  _ptMoved.x += dx;
  _ptMoved.y += dy;
}

}  // namespace tessary
