#include "settings/CalibrationText.h"

#include <iterator>

#include <fmt/format.h>

#include "base/Number.h"
#include "settings/Pieces.h"

namespace tessary {

std::string textOfCalibrations(const CalibrationSlots& slots) {
  std::string text;
  for (const CalibrationRecord& slot : slots) {
    fmt::format_to(std::back_inserter(text), "{},{},{},{:f},{},{};", slot.name, slot.unit,
                   slot.pixels, slot.length, slot.resolution, slot.date);
  }
  return text;
}

CalibrationSlots calibrationsOfText(std::string_view text) {
  CalibrationSlots slots;
  Pieces records(text, ';');
  for (CalibrationRecord& slot : slots) {
    const std::optional<std::string_view> record = records.next();
    if (!record) break;
    const auto fields = exactPieces<6>(*record, ',');
    if (!fields) break;
    slot.name = (*fields)[0];
    slot.unit = intValue((*fields)[1]);
    slot.pixels = intValue((*fields)[2]);
    slot.length = doubleValue((*fields)[3]);
    slot.resolution = intValue((*fields)[4]);
    slot.date = intValue((*fields)[5]);
    if (slot.pixels > 0 && slot.length > 0.0) slot.ppu = slot.pixels / slot.length;
  }
  return slots;
}

}  // namespace tessary
