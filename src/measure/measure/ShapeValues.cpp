#include "measure/ShapeValues.h"

#include <cmath>
#include <cstdint>
#include <iterator>
#include <numbers>

#include <fmt/format.h>

#include "base/Truncate.h"
#include "measure/CalcAngle.h"
#include "measure/Parallel.h"
#include "measure/WholePixels.h"

namespace tessary {

namespace {

using enum ShapeValue::Kind;

/// Divides pixels by the pixels per unit, once.
class Scaled {
 public:
  explicit Scaled(const Calibration& calibration)
      : pixelsPerUnit_(calibration.isCalibrated() ? calibration._pixelsPerUnit : 1.0F) {}
  double operator()(float pixels) const { return double{std::abs(pixels) / pixelsPerUnit_}; }
  float pixelsPerUnit() const { return pixelsPerUnit_; }

 private:
  float pixelsPerUnit_;
};

/// The radius that a circle is labelled with, in pixels. Meant not to be rounded, unlike the one it
/// is plotted with.
int32_t labelRadius(ImagePoint pt1, ImagePoint pt2) {
  const int32_t dx = wholeDistance(pt1.x, pt2.x);
  const int32_t dy = wholeDistance(pt1.y, pt2.y);
  if (pt2.x == pt1.x) return dy;
  if (pt2.y == pt1.y) return dx;
  return truncateToInt32(std::sqrt(static_cast<float>(sumOfSquares(dx, dy))));
}

void addCircle(ShapeValues& values, const SHAPE& s, const Scaled& scaled) {
  const int32_t r = labelRadius(s.pt1, s.pt2);
  const auto diameter = static_cast<int32_t>(2u * static_cast<uint32_t>(r));
  const int32_t square = sumOfSquares(r, 0);
  values.add(Length, scaled(static_cast<float>(r)));
  values.add(Length, scaled(static_cast<float>(diameter * std::numbers::pi)));
  // Meant to be divided once only, so that this is not in square units; a rectangle's area is.
  values.add(Area, scaled(static_cast<float>(square * std::numbers::pi)));
}

void addRectangle(ShapeValues& values, const SHAPE& s, const Scaled& scaled) {
  const float w = static_cast<float>(std::abs(s.pt2.x - s.pt1.x)) / scaled.pixelsPerUnit();
  const float h = static_cast<float>(std::abs(s.pt2.y - s.pt1.y)) / scaled.pixelsPerUnit();
  const float area = w * h;
  values.add(Length, double{w});
  values.add(Length, double{h});
  values.add(Area, double{area});
}

}  // namespace

ShapeValues shapeValues(const SHAPE& shape, const Calibration& calibration) {
  const Scaled scaled(calibration);
  const SHAPE& s = shape;
  ShapeValues values;
  switch (s.type) {
    case kOprLine: {
      const auto a = static_cast<float>(std::abs(s.pt2.x - s.pt1.x));
      const auto b = static_cast<float>(std::abs(s.pt2.y - s.pt1.y));
      values.add(Length, scaled(std::sqrt(a * a + b * b)));
      break;
    }
    case kOprLine2:
      values.add(Length, scaled(static_cast<float>(parallelThrough(s.pt1, s.pt2, s.pt3).d)));
      break;
    case kOprCircle:
      if (s.pt2 != s.pt1) addCircle(values, s, scaled);
      break;
    case kOprRect:
      if (s.pt2 != s.pt1) addRectangle(values, s, scaled);
      break;
    case kOprAngle:
      if (s.pt2 != s.pt1 && s.pt3 != s.pt2)
        values.add(Angle, double{_CalcAngle(s.pt1, s.pt2, s.pt3)});
      break;
    default: break;
  }
  return values;
}

std::string_view shapeKind(int32_t type) {
  switch (type) {
    case kOprLine: return "Line";
    case kOprLine2: return "Parallel Lines";
    case kOprCircle: return "Circle";
    case kOprRect: return "Rectangle";
    case kOprAngle: return "Angle";
    case kOprPencil: return "Pencil";
    case kOprText: return "Text";
    default: return "";
  }
}

void appendNumber(std::string& text, const ShapeValue& value) {
  fmt::format_to(std::back_inserter(text), "{:.3f}", value.number);
}

void appendUnit(std::string& text, ShapeValue::Kind kind, const Calibration& calibration) {
  if (kind == Angle) {
    text += "\u00B0";
    return;
  }
  text += calibration.isCalibrated() ? calibration._unit : "px";
  if (kind == Area) text += "^2";
}

}  // namespace tessary
