#pragma once

#include <cstdint>
#include <string>

namespace tessary {

/// One of the ten calibration slots: a measured number of pixels tied to a real length. A new one
/// is an empty slot.
struct CalibrationRecord {
  std::string name;        ///< The user's name for the slot, "" until renamed.
  int32_t unit = 0;        ///< 0 means "mm", every other value "μm".
  int32_t pixels = 0;      ///< Length of the calibration line in video pixels.
  double length = 0.0;     ///< Real length of that line as typed, in `unit`.
  int32_t resolution = 0;  ///< Frame size then: width in the low 16 bits, height above.
  int32_t date = 0;        ///< Local date then: year * 10000 + month * 100 + day.
  double ppu = -1.0;       ///< Pixels per unit; -1.0 when the slot holds no calibration.
  friend bool operator==(const CalibrationRecord&, const CalibrationRecord&) = default;
};

}  // namespace tessary
