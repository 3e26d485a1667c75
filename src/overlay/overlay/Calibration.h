#pragma once

#include <cstdint>
#include <string>

#include "settings/CalibrationRecord.h"

namespace tessary {

/// The calibration in force. The view owns it; reticles and shapes read it.
struct Calibration {
  float _pixelsPerUnit = kUncalibrated;  ///< Texture pixels per unit; negative for no calibration.
  std::string _unit{unitText(kUnitMillimetre)};

  bool isCalibrated() const { return _pixelsPerUnit > 0; }
  /// Takes a pair from a slot or a dialog. A value below -1 leaves the old one, and the unit is
  /// meant to change all the same.
  void setCalibration(float pixelsPerUnit, int32_t unit) {
    if (pixelsPerUnit >= kUncalibrated) _pixelsPerUnit = pixelsPerUnit;
    _unit = unitText(unit);
  }
};

}  // namespace tessary
