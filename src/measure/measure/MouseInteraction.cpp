#include "measure/MouseInteraction.h"

#include <utility>

#include "base/Truncate.h"

namespace tessary {

void MouseInteraction::mouseDown(Point viewPoint, Point screenPoint) {
  if (!isAt100Percent()) {
    _mouseDown = true;
    rememberPress(screenPoint);
    return;
  }
  if (hasThirdPoint(shapes_._opr1) && shapes_._opr1 == shapes_._opr2) {
    // `_mouseDown` stays as it is, so that the release of this press does nothing.
    finishThirdPoint(viewPoint);
    rememberPress(screenPoint);
    return;
  }
  _mouseDown = true;
  if (calibrationLine_.isShown()) {
    calibrationLine_.mouseDown(viewPoint, shapes_._opr1);
    _ptMouseClick = screenPoint;
    return;
  }
  // An unplugged camera can take the calibration line away while one of its ends is held.
  if (shapes_._opr1 == kOprCalibrationLeft || shapes_._opr1 == kOprCalibrationRight) {
    shapes_._opr1 = kOprDrag;
  }
  if (shapes_._opr1 == kOprDrag) {
    select(viewPoint);
    rememberPress(screenPoint);
  } else {
    startShape(viewPoint);
  }
}

void MouseInteraction::mouseUp(Point viewPoint) {
  if (!_mouseDown) return;
  _mouseDown = false;
  if (!isAt100Percent()) return;
  if (calibrationLine_.isShown()) {
    CalibrationLine::mouseUp(shapes_._opr1);
    return;
  }
  if (shapes_.hasShape(shapes_._iSelectedShape) || shapes_._opr1 == kOprDrag ||
      !shapes_.hasShape(shapes_._iDrawingShape)) {
    return;
  }
  shapes_.shape(shapes_._iDrawingShape).pt2 = viewPoint;
  if (hasThirdPoint(shapes_._opr1)) {
    shapes_._opr2 = shapes_._opr1;
    return;
  }
  // Cleared before the redraw: this is what makes a line's long construction ticks short.
  shapes_.redrawSelectedShape(std::exchange(shapes_._iDrawingShape, -1));
  shapes_._opr1 = kOprDrag;
  shapes_._opr2 = kOprDrag;
}

void MouseInteraction::mouseDragged(Point viewPoint, Point screenPoint) {
  if (isAt100Percent() && calibrationLine_.isShown()) {
    dragCalibrationLine(screenPoint);
  } else if (shapes_._opr1 != kOprDrag) {
    extendShape(viewPoint);  // at any zoom: meant
  } else if (isAt100Percent() && shapes_.hasShape(shapes_._iSelectedShape)) {
    dragSelectedShape(screenPoint);
  } else {
    geometry_.pan(_ptMouseClick, screenPoint);
  }
}

void MouseInteraction::mouseMoved(Point viewPoint) {
  if (!isAt100Percent()) return;
  if (calibrationLine_.isShown()) {
    calibrationLine_.mouseMoved(viewPoint);
    overlay_.redrawLinesAndPoints();
  } else if (hasThirdPoint(shapes_._opr2)) {
    if (!shapes_.hasShape(shapes_._iDrawingShape)) return;
    shapes_.shape(shapes_._iDrawingShape).pt3 = viewPoint;
    shapes_.redrawSelectedShape(shapes_._iDrawingShape);
  } else if (shapes_._opr1 == kOprDrag && !shapes_._shapes.empty()) {
    hover(viewPoint);
  }
}

void MouseInteraction::rememberPress(Point screenPoint) {
  _ptMouseClick = screenPoint;
  geometry_.beginPan();
}

int32_t MouseInteraction::hitTest(Point viewPoint) const {
  for (int32_t i = 0; i < shapes_.shapeCount(); ++i) {
    for (const Rect& rect : shapes_.shape(i).hitRects) {
      if (contains(rect, viewPoint)) return i;
    }
  }
  return -1;
}

void MouseInteraction::finishThirdPoint(Point viewPoint) {
  // Not redrawn: what the last move of the mouse drew is meant to stand.
  if (shapes_.hasShape(shapes_._iDrawingShape)) {
    shapes_.shape(shapes_._iDrawingShape).pt3 = viewPoint;
  }
  shapes_._opr1 = kOprDrag;
  shapes_._opr2 = kOprDrag;
  shapes_._iDrawingShape = -1;
}

void MouseInteraction::select(Point viewPoint) {
  // A shape that was hovered only is meant to keep its frames until its next redraw.
  shapes_._iHoverShape = -1;
  const int32_t before = std::exchange(shapes_._iSelectedShape, hitTest(viewPoint));
  if (shapes_._iSelectedShape >= 0) _ptMoved = {};
  redrawChange(before, shapes_._iSelectedShape);
}

void MouseInteraction::hover(Point viewPoint) {
  const int32_t before = std::exchange(shapes_._iHoverShape, hitTest(viewPoint));
  redrawChange(before, shapes_._iHoverShape);
}

void MouseInteraction::redrawChange(int32_t before, int32_t now) {
  if (before == now) return;
  if (shapes_.hasShape(before)) shapes_.redrawSelectedShape(before);
  if (shapes_.hasShape(now)) shapes_.redrawSelectedShape(now);
}

void MouseInteraction::startShape(Point viewPoint) {
  const int32_t selected = std::exchange(shapes_._iSelectedShape, -1);
  if (shapes_.hasShape(selected)) shapes_.redrawSelectedShape(selected);
  const int32_t hovered = std::exchange(shapes_._iHoverShape, -1);
  if (shapes_.hasShape(hovered)) shapes_.redrawSelectedShape(hovered);
  shapes_._opr2 = kOprDrag;
  SHAPE& s = shapes_.newShape(viewPoint);
  if (s.type == kOprPencil) s.pencilPoints.push_back(&viewPoint, 1);
}

void MouseInteraction::extendShape(Point viewPoint) {
  if (!shapes_.hasShape(shapes_._iDrawingShape)) return;
  SHAPE& s = shapes_.shape(shapes_._iDrawingShape);
  if (s.type == kOprPencil) {
    s.pencilPoints.push_back(&viewPoint, 1);
  } else {
    s.pt2 = viewPoint;
  }
  shapes_.redrawSelectedShape(shapes_._iDrawingShape);
}

void MouseInteraction::dragCalibrationLine(Point screenPoint) {
  if (calibrationLine_.mouseDragged(shapes_._opr1, screenPoint.x - _ptMouseClick.x,
                                    geometry_.viewLocation().x, host_.superviewFrameSize().width)) {
    overlay_.redrawLinesAndPoints();
  }
}

void MouseInteraction::dragSelectedShape(Point screenPoint) {
  // Measured from the press, so that the fractions cut off here are not lost across events. The
  // screen's y grows upwards.
  const int32_t dx = truncateToInt32(screenPoint.x - _ptMouseClick.x - _ptMoved.x);
  const int32_t dy = truncateToInt32(-screenPoint.y + _ptMouseClick.y - _ptMoved.y);
  if (dx == 0 && dy == 0) return;
  shapes_.moveShape(shapes_._iSelectedShape, dx, dy);
  _ptMoved.x += dx;
  _ptMoved.y += dy;
}

}  // namespace tessary
