#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tessary {

/// What was measured on a picture, as texts (UTF-8) for the cells of a table.
struct MeasurementTable {
  static constexpr size_t kMostValues = 3;

  struct Value {
    std::string number;  ///< Three decimals and a point, as on the label.
    std::string unit;
  };
  /// One shape.
  struct Row {
    std::string kind;
    std::vector<Value> values;  ///< In the order of the label; at most `kMostValues`.
    std::string text;           ///< Of a text, which has no values.
  };

  std::vector<Row> rows;    ///< In the shapes' order.
  std::string calibration;  ///< Name of the slot in force; empty for one without a name, or none.
};

}  // namespace tessary
