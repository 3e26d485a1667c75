#pragma once
// What a shape measures: the one place that labels over the picture and tables have it from.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "measure/SHAPE.h"
#include "overlay/Calibration.h"

namespace tessary {

struct ShapeValue {
  enum class Kind { Length, Area, Angle };

  Kind kind = Kind::Length;
  /// Of a length or an area: in units of the calibration in force, in pixels without one; of an
  /// angle: in degrees.
  double number = 0.0;
};

/// The values of one shape, in the order of its label.
class ShapeValues {
 public:
  static constexpr size_t kMost = 3;

  void add(ShapeValue::Kind kind, double number) { values_[count_++] = {kind, number}; }
  size_t count() const { return count_; }
  const ShapeValue& operator[](size_t index) const { return values_[index]; }
  const ShapeValue* begin() const { return values_.data(); }
  const ShapeValue* end() const { return values_.data() + count_; }

 private:
  std::array<ShapeValue, kMost> values_;
  size_t count_ = 0;
};

/// Of a line the length; of parallel lines their distance; of a circle radius, circumference and
/// area; of a rectangle width, height and area; of an angle the angle. None of what has no extent,
/// which shows no label either, and of annotations.
///
/// Lengths become single precision before they are divided, and are rounded by their format alone.
/// A shape with a third point has to have it.
ShapeValues shapeValues(const SHAPE& shape, const Calibration& calibration);

/// What the shapes of a type are called, as in the menu; empty for what is no shape's type.
std::string_view shapeKind(int32_t type);

/// The number with three decimals and a point, whatever the locale.
void appendNumber(std::string& text, const ShapeValue& value);
/// The unit in force, or pixels without one; of an area with its "^2". Of an angle the degree sign.
void appendUnit(std::string& text, ShapeValue::Kind kind, const Calibration& calibration);

}  // namespace tessary
