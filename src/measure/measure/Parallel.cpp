#include "measure/Parallel.h"

#include <cmath>

#include "base/Truncate.h"
#include "measure/WholePixels.h"

namespace tessary {

Parallel parallelThrough(ImagePoint pt1, ImagePoint pt2, ImagePoint pt3) {
  if (pt2.y == pt1.y) {
    const double half = wholeDistance(pt1.x, pt2.x) / 2;
    return {{pt3.x, pt1.y}, {half, 0}, std::abs(pt3.y - pt1.y)};
  }
  if (pt2.x == pt1.x) {
    const double half = wholeDistance(pt1.y, pt2.y) / 2;
    return {{pt1.x, pt3.y}, {0, half}, std::abs(pt3.x - pt1.x)};
  }
  // Not the plain dot product: this way round is what decides the last digit of the label. Neither
  // division is by zero, for the baseline is slanted.
  const double t = std::atan2(pt2.y - pt1.y, pt2.x - pt1.x);
  const double u = pt3.x - pt1.x;
  const double v = pt3.y - pt1.y;
  const double a = v / std::tan(t);
  const double b = v / std::sin(t);
  const double c = u - a;
  const double d = c * std::sin(t);
  const double e = c * std::cos(t) + b;  // along the baseline from pt1 to the foot
  const ImagePoint foot{pt1.x + truncateToInt32(e * std::cos(t)),
                        pt1.y + truncateToInt32(e * std::sin(t))};
  const double length = std::sqrt(
      static_cast<double>(sumOfSquares(wholeDistance(pt1.x, pt2.x), wholeDistance(pt1.y, pt2.y))));
  const ImagePoint half{static_cast<double>(truncateToInt32(length * std::cos(t) * 0.5)),
                        static_cast<double>(truncateToInt32(length * std::sin(t) * 0.5))};
  return {foot, half, d};
}

}  // namespace tessary
