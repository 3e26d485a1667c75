#include "dialogs/CalibrationTable.h"

#include <cstdlib>

#include "base/Log.h"

namespace tessary {
namespace {

constexpr int32_t kFirstYear = 2020;
constexpr uint32_t kSmallestWidth = 640;
constexpr uint32_t kSmallestHeight = 480;

std::string dateText(int32_t date) {
  const int32_t year = date / 10000;
  const int32_t month = date % 10000 / 100;
  const int32_t day = date % 100;
  if (year < kFirstYear || month <= 0 || day <= 0) return {};
  return fmt::format("{:02}/{:02}/{:04}", month, day, year);
}

std::string resolutionText(int32_t resolution) {
  const uint32_t width = uint32_t(resolution) & 0xFFFF;
  const uint32_t height = uint32_t(resolution) >> 16;
  if (width < kSmallestWidth || height < kSmallestHeight) return {};
  return fmt::format("{}x{}", width, height);
}

}  // namespace

std::string calibrationCellText(std::string_view identifier, int32_t row,
                                const CalibrationRecord& record) {
  const bool calibrated = record.ppu > 0;
  if (identifier == "ID_") return fmt::format("{}", row + 1);
  if (identifier == "NAME") return record.name;
  if (identifier == "VALUE") return calibrated ? fmt::format("{:.2f}", record.ppu) : "";
  if (identifier == "UNIT") return calibrated ? std::string(unitText(record.unit)) : "";
  if (identifier == "DATE") return dateText(record.date);
  if (identifier == "RESOLUTION") return resolutionText(record.resolution);
  log("CalibrationListWindowController: Unhandled table column identifier {}", identifier);
  std::abort();
}

std::string calibrationNameWarning(std::string_view name) {
  if (name.find_first_of(",;") == std::string_view::npos) return {};
  return "With a comma or a semicolon in its name, this calibration and all below it will be lost "
         "at "
         "the next launch.";
}

std::string calibrationTitle(const CalibrationSlots& slots, int32_t index,
                             std::string_view otherwise) {
  if (!isCalibrationSlot(index) || slots[size_t(index)].name.empty()) return std::string(otherwise);
  return fmt::format("Calibrate - {}", slots[size_t(index)].name);
}

}  // namespace tessary
