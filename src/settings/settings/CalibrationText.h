#pragma once
// The one-line text form in which the calibrations are stored: for each slot
// "name,unit,pixels,length,resolution,date;". Names are not escaped, on purpose: one that holds a
// comma or a semicolon costs its slot and all after it on the next reading.

#include <array>
#include <string>
#include <string_view>

#include "settings/CalibrationRecord.h"

namespace tessary {

inline constexpr size_t kCalibrationSlots = 10;
using CalibrationSlots = std::array<CalibrationRecord, kCalibrationSlots>;

/// All ten slots, the empty ones too. `ppu` does not travel, and `length` loses what lies beyond
/// its sixth decimal.
std::string textOfCalibrations(const CalibrationSlots& slots);

/// Fills slots from the front until a record has other than six fields or all ten are full; what is
/// left stays empty. Fields that are no numbers read as 0; `ppu` is computed anew.
CalibrationSlots calibrationsOfText(std::string_view text);

}  // namespace tessary
