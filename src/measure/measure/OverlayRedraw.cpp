#include "measure/OverlayRedraw.h"

namespace tessary {

void OverlayRedraw::redrawLinesAndPoints() {
  context_._totalLines.count = 0;
  context_._totalPoints.count = 0;
  context_.totalListsDidChange();
  if (calibrationLine_.isShown()) {
    calibrationLine_.drawCalibrationLine();
    shapes_.totalListsWereTaken();
    return;
  }
  switch (scale_.getCurrScale()) {
    case kScaleCrosshair: scale_.drawCrosshair(); break;
    case kScaleGrid: scale_.drawGrid(); break;
    case kScaleConcentric: scale_.drawConcentric(); break;
    default: break;
  }
  shapes_.appendAllShapes();
}

}  // namespace tessary
