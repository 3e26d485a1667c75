#pragma once

#include <vector>

#include "base/MeasurementTable.h"
#include "measure/Shapes.h"
#include "measure/ToolState.h"
#include "overlay/Calibration.h"

namespace tessary {

/// A row for each shape, oldest first: what it measures, as on its label and in pixels where none
/// shows, or a text's words. None for what says nothing: a pencil's stroke, a shape without an
/// extent, and one that waits for its third point.
std::vector<MeasurementTable::Row> measurementRows(const Shapes& shapes, const ToolState& tool,
                                                   const Calibration& calibration);

}  // namespace tessary
