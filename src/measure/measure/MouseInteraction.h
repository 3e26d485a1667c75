#pragma once

#include <cstdint>

#include "base/Geometry.h"
#include "measure/OverlayRedraw.h"
#include "measure/ShapeList.h"
#include "measure/ToolState.h"
#include "overlay/CalibrationLine.h"
#include "preview/ViewGeometry.h"

namespace tessary {

/// What the mouse does: it makes, selects, hovers and moves shapes, drags the ends of the
/// calibration line, and pans. One small state machine over the fields of ToolState:
///
///                  `_opr1`   `_opr2`   `_iDrawingShape`
///     idle         0         0         -1, or stale after a text
///     tool armed   1 to 6    0         -1 or stale
///     stroke       1 to 6    0         the new shape
///     third point  2 or 5    same      the new shape
///
/// Shapes are made and edited at 100 percent only, where view points are image points. Screen
/// points do not depend on the view, so that a drag stays in step while the picture moves under the
/// mouse. Main thread.
class MouseInteraction {
 public:
  MouseInteraction(ToolState& tool, ShapeList& shapes, CalibrationLine& calibrationLine,
                   ViewGeometry& geometry, OverlayRedraw& overlay)
      : tool_(tool),
        shapes_(shapes),
        calibrationLine_(calibrationLine),
        geometry_(geometry),
        overlay_(overlay) {}

  // Both answer the index of the shape that they have finished, -1 for none.
  int32_t mouseDown(ViewPoint viewPoint, ScreenPoint screenPoint);
  int32_t mouseUp(ViewPoint viewPoint);
  void mouseDragged(ViewPoint viewPoint, ScreenPoint screenPoint);
  /// Moves without a button.
  void mouseMoved(ViewPoint viewPoint);
  /// Meant to do nothing: no pan, no context menu.
  void rightMouseDown() {}

  bool _mouseDown = false;    ///< A press was accepted: its release is to be acted on.
  ScreenPoint _ptMouseClick;  ///< Screen point of the press.
  ImagePoint _ptMoved;        ///< How far the selected shape moved since, in whole pixels.

 private:
  bool isAt100Percent() const { return geometry_.zoom() == kZoom100; }
  bool isThirdPointDue() const { return hasThirdPoint(tool_._opr1) && tool_._opr1 == tool_._opr2; }
  bool hasSelectedShape() const { return shapes_.hasShape(tool_._iSelectedShape); }
  /// Where a drag starts from, for shape or picture.
  void rememberPress(ScreenPoint screenPoint);
  int32_t finishThirdPoint(ImagePoint point);
  void select(ImagePoint point);
  void hover(ImagePoint point);
  void startShape(ImagePoint point);
  void extendShape(ImagePoint point);
  void dragCalibrationLine(ScreenPoint screenPoint);
  void dragSelectedShape(ScreenPoint screenPoint);
  /// Marks shape `index` (-1 for none) in `mark`, which is one of the selected and the hovered, and
  /// redraws the two that this concerns.
  void moveMark(int32_t& mark, int32_t index);

  ToolState& tool_;
  ShapeList& shapes_;
  CalibrationLine& calibrationLine_;
  ViewGeometry& geometry_;
  OverlayRedraw& overlay_;
};

}  // namespace tessary
