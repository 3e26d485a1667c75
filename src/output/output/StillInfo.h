#pragma once

#include <string>

#include "base/Clock.h"
#include "base/MeasurementTable.h"

namespace tessary {

/// Where a still comes from. Texts are UTF-8.
struct StillInfo {
  CalendarTime time;
  std::string camera;           ///< Its model; empty if nobody knows.
  float pixelsPerUnit = -1.0F;  ///< Of the calibration in force; not above 0 for none.
  std::string unit;             ///< Of that calibration.
  MeasurementTable table;
};

}  // namespace tessary
