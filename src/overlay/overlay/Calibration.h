#pragma once

#include <cstdint>
#include <string>

namespace tessary {

/// Unit codes as settings and dialogs carry them: 0, and any other value.
inline constexpr int32_t kUnitMillimetre = 0;
inline constexpr int32_t kUnitMicrometre = 1;

/// The calibration in force. The view owns it; reticles and shapes read it.
struct Calibration {
  float _pixelsPerUnit = -1.0f;  ///< Texture pixels per unit; negative for no calibration.
  std::string _unit = "mm";      ///< "mm" or "μm".

  /// Takes a pair from a slot or a dialog. A value below -1 leaves the old one, and the unit is
  /// meant to change all the same.
  void setCalibration(float pixelsPerUnit, int32_t unit) {
    if (pixelsPerUnit >= -1.0f) _pixelsPerUnit = pixelsPerUnit;
    _unit = unit == kUnitMillimetre ? "mm" : "\u03BCm";
  }
};

}  // namespace tessary
