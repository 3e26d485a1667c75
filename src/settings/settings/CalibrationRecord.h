#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessary {

/// Unit codes as settings and dialogs carry them: 0, and any other value.
inline constexpr int32_t kUnitMillimetre = 0;
inline constexpr int32_t kUnitMicrometre = 1;

/// How lengths in a unit are labelled.
constexpr std::string_view unitText(int32_t unit) noexcept {
  return unit == kUnitMillimetre ? "mm" : "\u03BCm";
}

/// The pixels per unit that stand for no calibration.
inline constexpr float kUncalibrated = -1.0f;

/// One of the ten calibration slots: a measured number of pixels tied to a real length. A new one
/// is an empty slot.
struct CalibrationRecord {
  std::string name;  ///< The user's name for the slot, "" until renamed.
  int32_t unit = kUnitMillimetre;
  int32_t pixels = 0;          ///< Length of the calibration line in video pixels.
  double length = 0.0;         ///< Real length of that line as typed, in `unit`.
  int32_t resolution = 0;      ///< Frame size then: width in the low 16 bits, height above.
  int32_t date = 0;            ///< Local date then: year * 10000 + month * 100 + day.
  double ppu = kUncalibrated;  ///< Pixels per unit, or none.
  friend bool operator==(const CalibrationRecord&, const CalibrationRecord&) = default;
};

}  // namespace tessary
