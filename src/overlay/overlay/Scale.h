#pragma once

#include <cstdint>

#include "base/ScaleType.h"
#include "overlay/CalibrationLine.h"
#include "overlay/OverlayContext.h"

namespace tessary {

/// The reticles: which one lies over the picture, how long its steps are, and how each is drawn.
/// With a calibration a reticle shows a round real length and its label, without one a ruler in
/// pixels. Everything is in video pixels and so independent of the zoom. Main thread.
class Scale {
 public:
  Scale(OverlayContext& context, const CalibrationLine& calibrationLine)
      : context_(context), calibrationLine_(calibrationLine) {}

  int32_t getCurrScale() const { return _scaleType; }
  /// Only stores the reticle; the caller redraws.
  void changeScale(int32_t scaleType) { _scaleType = scaleType; }

  /// Chooses the step (1, 2 or 5 times a power of ten) that comes nearest to 100 pixels under the
  /// calibration in force. Without a calibration both lengths become 0; with one so large that no
  /// step is near, they stay.
  void calcGridPixelsAndLen();

  /// Each appends its reticle to the total lists, unless another one is chosen or the calibration
  /// line is shown.
  void drawCrosshair() { drawReticle(kScaleCrosshair); }
  void drawGrid() { drawReticle(kScaleGrid); }
  void drawConcentric() { drawReticle(kScaleConcentric); }

  int32_t _scaleType = kScaleNone;
  int32_t _scalePixels = 0;  ///< One step in video pixels.
  float _scaleLen = 0.0f;    ///< One step in the calibration's unit.

 private:
  void drawReticle(int32_t kind);

  OverlayContext& context_;
  const CalibrationLine& calibrationLine_;
};

}  // namespace tessary
