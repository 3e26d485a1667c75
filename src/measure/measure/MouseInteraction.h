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
/// View points are in the view's own coordinates, y down: at 100 percent, the only zoom at which
/// shapes are made or edited, they are image coordinates. Screen points have y up and do not depend
/// on the view, so that a drag stays in step while the picture moves under the mouse. Main thread.
class MouseInteraction {
 public:
  MouseInteraction(ShapeList& shapes, CalibrationLine& calibrationLine, ViewGeometry& geometry,
                   const ViewHost& host, OverlayRedraw& overlay)
      : shapes_(shapes),
        calibrationLine_(calibrationLine),
        geometry_(geometry),
        host_(host),
        overlay_(overlay) {}

  void mouseDown(Point viewPoint, Point screenPoint);
  void mouseUp(Point viewPoint);
  void mouseDragged(Point viewPoint, Point screenPoint);
  /// Moves without a button.
  void mouseMoved(Point viewPoint);
  /// Meant to do nothing: no pan, no context menu.
  void rightMouseDown() {}

  bool _mouseDown = false;  ///< A press was accepted: its release is to be acted on.
  Point _ptMouseClick;      ///< Screen point of the press.
  Point _ptMoved;           ///< How far the selected shape moved since, in whole pixels.

 private:
  bool isAt100Percent() const { return geometry_.zoom() == kZoom100; }
  /// Where a drag starts from, for shape or picture.
  void rememberPress(Point screenPoint);
  /// The oldest shape under `viewPoint`, -1 for none. It wins over newer ones that are drawn on top
  /// of it: meant.
  int32_t hitTest(Point viewPoint) const;

  void finishThirdPoint(Point viewPoint);
  void select(Point viewPoint);
  void hover(Point viewPoint);
  void startShape(Point viewPoint);
  void extendShape(Point viewPoint);
  void dragCalibrationLine(Point screenPoint);
  void dragSelectedShape(Point screenPoint);
  /// Redraws the shapes that a change of selection or hover concerns, if any.
  void redrawChange(int32_t before, int32_t now);

  ShapeList& shapes_;
  CalibrationLine& calibrationLine_;
  ViewGeometry& geometry_;
  const ViewHost& host_;
  OverlayRedraw& overlay_;
};

}  // namespace tessary
