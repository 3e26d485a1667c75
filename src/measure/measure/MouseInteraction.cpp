#include "measure/MouseInteraction.h"

#include <utility>

#include "base/Truncate.h"

namespace tessary {

void MouseInteraction::mouseDown(ViewPoint viewPoint, ScreenPoint screenPoint) {
  if (!isAt100Percent()) {
    _mouseDown = true;
    rememberPress(screenPoint);
    return;
  }
  const ImagePoint point = imagePointAt100Percent(viewPoint);
  if (hasThirdPoint(shapes_._opr1) && shapes_._opr1 == shapes_._opr2) {
    // `_mouseDown` stays as it is, so that the release of this press does nothing.
    finishThirdPoint(point);
    rememberPress(screenPoint);
    return;
  }
  _mouseDown = true;
  if (calibrationLine_.isShown()) {
    calibrationLine_.mouseDown(point, shapes_._opr1);
    _ptMouseClick = screenPoint;
    return;
  }
  // An unplugged camera can take the calibration line away while one of its ends is held.
  if (shapes_._opr1 == kOprCalibrationLeft || shapes_._opr1 == kOprCalibrationRight) {
    shapes_._opr1 = kOprDrag;
  }
  if (shapes_._opr1 == kOprDrag) {
    select(point);
    rememberPress(screenPoint);
  } else {
    startShape(point);
  }
}

void MouseInteraction::mouseUp(ViewPoint viewPoint) {
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
  shapes_.shape(shapes_._iDrawingShape).pt2 = imagePointAt100Percent(viewPoint);
  if (hasThirdPoint(shapes_._opr1)) {
    shapes_._opr2 = shapes_._opr1;
    return;
  }
  // Cleared before the redraw: this is what makes a line's long construction ticks short.
  shapes_.redrawSelectedShape(std::exchange(shapes_._iDrawingShape, -1));
  shapes_._opr1 = kOprDrag;
  shapes_._opr2 = kOprDrag;
}

void MouseInteraction::mouseDragged(ViewPoint viewPoint, ScreenPoint screenPoint) {
  if (isAt100Percent() && calibrationLine_.isShown()) {
    dragCalibrationLine(screenPoint);
  } else if (shapes_._opr1 != kOprDrag) {
    extendShape(imagePointAt100Percent(viewPoint));  // at any zoom: meant
  } else if (isAt100Percent() && shapes_.hasShape(shapes_._iSelectedShape)) {
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
  } else if (hasThirdPoint(shapes_._opr2)) {
    if (!shapes_.hasShape(shapes_._iDrawingShape)) return;
    shapes_.shape(shapes_._iDrawingShape).pt3 = point;
    shapes_.redrawSelectedShape(shapes_._iDrawingShape);
  } else if (shapes_._opr1 == kOprDrag && !shapes_._shapes.empty()) {
    hover(point);
  }
}

void MouseInteraction::rememberPress(ScreenPoint screenPoint) {
  _ptMouseClick = screenPoint;
  geometry_.beginPan();
}

int32_t MouseInteraction::hitTest(ImagePoint point) const {
  for (int32_t i = 0; i < shapes_.shapeCount(); ++i) {
    for (const ImageRect& rect : shapes_.shape(i).hitRects) {
      if (contains(rect, point)) return i;
    }
  }
  return -1;
}

void MouseInteraction::finishThirdPoint(ImagePoint point) {
  // Not redrawn: what the last move of the mouse drew is meant to stand.
  if (shapes_.hasShape(shapes_._iDrawingShape)) {
    shapes_.shape(shapes_._iDrawingShape).pt3 = point;
  }
  shapes_._opr1 = kOprDrag;
  shapes_._opr2 = kOprDrag;
  shapes_._iDrawingShape = -1;
}

void MouseInteraction::select(ImagePoint point) {
  // A shape that was hovered only is meant to keep its frames until its next redraw.
  shapes_._iHoverShape = -1;
  const int32_t before = std::exchange(shapes_._iSelectedShape, hitTest(point));
  if (shapes_._iSelectedShape >= 0) _ptMoved = {};
  redrawChange(before, shapes_._iSelectedShape);
}

void MouseInteraction::hover(ImagePoint point) {
  const int32_t before = std::exchange(shapes_._iHoverShape, hitTest(point));
  redrawChange(before, shapes_._iHoverShape);
}

void MouseInteraction::redrawChange(int32_t before, int32_t now) {
  if (before == now) return;
  if (shapes_.hasShape(before)) shapes_.redrawSelectedShape(before);
  if (shapes_.hasShape(now)) shapes_.redrawSelectedShape(now);
}

void MouseInteraction::startShape(ImagePoint point) {
  const int32_t selected = std::exchange(shapes_._iSelectedShape, -1);
  if (shapes_.hasShape(selected)) shapes_.redrawSelectedShape(selected);
  const int32_t hovered = std::exchange(shapes_._iHoverShape, -1);
  if (shapes_.hasShape(hovered)) shapes_.redrawSelectedShape(hovered);
  shapes_._opr2 = kOprDrag;
  SHAPE& s = shapes_.newShape(point);
  if (s.type == kOprPencil) s.pencilPoints.push_back(&point, 1);
}

void MouseInteraction::extendShape(ImagePoint point) {
  if (!shapes_.hasShape(shapes_._iDrawingShape)) return;
  SHAPE& s = shapes_.shape(shapes_._iDrawingShape);
  if (s.type == kOprPencil) {
    s.pencilPoints.push_back(&point, 1);
  } else {
    s.pt2 = point;
  }
  shapes_.redrawSelectedShape(shapes_._iDrawingShape);
}

void MouseInteraction::dragCalibrationLine(ScreenPoint screenPoint) {
  if (calibrationLine_.mouseDragged(shapes_._opr1, screenPoint.x - _ptMouseClick.x,
                                    geometry_.viewLocation().x, host_.superviewFrameSize().width)) {
    overlay_.redrawLinesAndPoints();
  }
}

void MouseInteraction::dragSelectedShape(ScreenPoint screenPoint) {
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
