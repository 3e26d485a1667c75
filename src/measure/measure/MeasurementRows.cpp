#include "measure/MeasurementRows.h"

#include <cstdint>
#include <string>
#include <utility>

#include "measure/ShapeValues.h"

namespace tessary {

static_assert(ShapeValues::kMost == MeasurementTable::kMostValues);

std::vector<MeasurementTable::Row> measurementRows(const Shapes& shapes, const ToolState& tool,
                                                   const Calibration& calibration) {
  std::vector<MeasurementTable::Row> rows;
  for (int32_t index = 0; index < shapes.shapeCount(); ++index) {
    const SHAPE& shape = shapes.shape(index);
    if (tool.isHalfMade(index, shape.type)) continue;
    MeasurementTable::Row row{std::string(shapeKind(shape.type))};
    for (const ShapeValue& value : shapeValues(shape, calibration)) {
      MeasurementTable::Value& cell = row.values.emplace_back();
      appendNumber(cell.number, value);
      appendUnit(cell.unit, value.kind, calibration);
    }
    if (shape.text) row.text = *shape.text;
    if (!row.values.empty() || !row.text.empty()) rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace tessary
