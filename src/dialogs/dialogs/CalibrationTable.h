#pragma once
// What the list of calibrations shows in its six columns.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "settings/CalibrationText.h"

namespace tessary {

struct CalibrationColumn {
  std::string_view identifier;
  std::string_view title;
};

/// From left to right. "NAME" has to stay second: that column is the one that rename edits.
inline constexpr std::array<CalibrationColumn, 6> kCalibrationColumns{{
    {"ID_", "No."},
    {"NAME", "Name"},
    {"VALUE", "Pixels per unit"},
    {"UNIT", "Unit"},
    {"DATE", "Date"},
    {"RESOLUTION", "Resolution"},
}};
inline constexpr int kCalibrationNameColumn = 1;

constexpr bool isCalibrationSlot(int32_t index) noexcept {
  return index >= 0 && index < int32_t(kCalibrationSlots);
}

/// The text (UTF-8) of one cell, "" for what `record` does not hold: a date before 2020 and a frame
/// below 640x480 are not shown though they are stored. An unknown identifier ends the program.
std::string calibrationCellText(std::string_view identifier, int32_t row,
                                const CalibrationRecord& record);

/// What to tell of a name (UTF-8) that is being typed, "" for nothing: the signs that part the
/// slots where they are stored are taken, and cost this slot and all after it when they are read
/// again.
std::string calibrationNameWarning(std::string_view name);

/// The title of the window that calibrates slot `index`, or `otherwise` for a slot without a name
/// or no slot at all.
std::string calibrationTitle(const CalibrationSlots& slots, int32_t index,
                             std::string_view otherwise);

}  // namespace tessary
