#pragma once

#include <cstdint>

#include "base/Geometry.h"
#include "measure/OverlayRedraw.h"
#include "measure/ShapeList.h"
#include "overlay/CalibrationLine.h"
#include "preview/ViewGeometry.h"
#include "preview/ViewHost.h"

namespace tessary {

/// What the mouse does: it makes, selects, hovers and moves shapes, drags the ends of the
/// calibration line, and pans. One small state machine over `_opr1`, `_opr2` and the indices of the
/// shape list:
///
///                  `_opr1`   `_opr2`   `_iDrawingShape`
///     idle         0         0         -1, or stale after a text
///     tool armed   1 to 6    0         -1 or stale
///     stroke       1 to 6    0         the new shape
///     third point  2 or 5    same      the new shape
///
/// Shapes are made and edited at 100 percent only, where view points are image points. Screen
/// points have y up and do not depend on the view, so that a drag stays in step while the picture
/// moves under the mouse. Main thread.
class MouseInteraction {
 public:
  MouseInteraction(ShapeList& shapes, CalibrationLine& calibrationLine, ViewGeometry& geometry,
                   const ViewHost& host, OverlayRedraw& overlay)
      : shapes_(shapes),
        calibrationLine_(calibrationLine),
        geometry_(geometry),
        host_(host),
        overlay_(overlay) {}

  void mouseDown(ViewPoint viewPoint, ScreenPoint screenPoint);
  void mouseUp(ViewPoint viewPoint);
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
  /// Where a drag starts from, for shape or picture.
  void rememberPress(ScreenPoint screenPoint);
  /// The oldest shape under `point`, -1 for none. It wins over newer ones that are drawn on top
  /// of it: meant.
  int32_t hitTest(ImagePoint point) const;

  void finishThirdPoint(ImagePoint point);
  void select(ImagePoint point);
  void hover(ImagePoint point);
  void startShape(ImagePoint point);
  void extendShape(ImagePoint point);
  void dragCalibrationLine(ScreenPoint screenPoint);
  void dragSelectedShape(ScreenPoint screenPoint);
  /// Redraws the shapes that a change of selection or hover concerns, if any.
  void redrawChange(int32_t before, int32_t now);

  ShapeList& shapes_;
  CalibrationLine& calibrationLine_;
  ViewGeometry& geometry_;
  const ViewHost& host_;
  OverlayRedraw& overlay_;
};

}  // namespace tessary
