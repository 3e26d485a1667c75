#pragma once

#include "measure/ShapeList.h"
#include "overlay/CalibrationLine.h"
#include "overlay/OverlayContext.h"
#include "overlay/Scale.h"

namespace tessary {

/// The full rebuild of everything that lies over the picture. Main thread.
class OverlayRedraw {
 public:
  OverlayRedraw(OverlayContext& context, Scale& scale, const CalibrationLine& calibrationLine,
                ShapeList& shapes)
      : context_(context), scale_(scale), calibrationLine_(calibrationLine), shapes_(shapes) {}

  /// Fills both total lists from nothing: the calibration line alone while it is shown, otherwise
  /// the reticle and over it the shapes. The next tick shows it.
  void redrawLinesAndPoints();

 private:
  OverlayContext& context_;
  Scale& scale_;
  const CalibrationLine& calibrationLine_;
  ShapeList& shapes_;
};

}  // namespace tessary
