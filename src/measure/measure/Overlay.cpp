#include "measure/Overlay.h"

namespace tessary {

void Overlay::changeScale(int32_t scaleType) {
  scale.changeScale(scaleType);
  redrawLinesAndPoints();
}

void Overlay::setCalibration(float pixelsPerUnit, int32_t unit) {
  context.calibration.setCalibration(pixelsPerUnit, unit);
  scale.calcGridPixelsAndLen();
  geometry_.zoomTo(kZoom100);
  redrawLinesAndPoints();
}

void Overlay::startCalibration() {
  calibrationLine.startCalibration(geometry_.superviewFrameSize().width);
  geometry_.zoomTo(kZoom100);
  redrawLinesAndPoints();
}

void Overlay::stopCalibration() {
  calibrationLine.stopCalibration();
  geometry_.zoomTo(kZoom100);
  redrawLinesAndPoints();
}

void Overlay::changeOperation(int32_t op) {
  tool.changeOperation(op);
  geometry_.zoomTo(kZoom100);
}

void Overlay::stopPreview() {
  context.calibration._pixelsPerUnit = kUncalibrated;
  calibrationLine.stopCalibration();
}

}  // namespace tessary
