#include "measure/CalcAngle.h"

#include <cmath>
#include <numbers>

namespace tessary {

namespace {

/// In single precision, as angles are defined here.
double direction(ImagePoint from, ImagePoint to) {
  const auto dx = static_cast<float>(to.x - from.x);
  const auto dy = static_cast<float>(to.y - from.y);
  return std::atan2(dy, dx);
}

}  // namespace

float _CalcAngle(ImagePoint pt1, ImagePoint pt2, ImagePoint pt3) {
  const double turn = (direction(pt1, pt2) - direction(pt1, pt3)) * 180.0 / std::numbers::pi;
  const double degrees = static_cast<float>(turn);
  if (std::abs(degrees) <= 180.0) return static_cast<float>(std::abs(degrees));
  return static_cast<float>(degrees >= 180.0 ? 360.0 - degrees : 360.0 + degrees);
}

}  // namespace tessary
