#pragma once
// Distances as shapes count them: in whole pixels, and in 32 bits.

#include <cmath>
#include <cstdint>

#include "base/Truncate.h"

namespace tessary {

/// Whole pixels between two coordinates.
inline int32_t wholeDistance(double a, double b) { return truncateToInt32(std::abs(b - a)); }

/// 32-bit products and sums that are meant to wrap.
inline int32_t sumOfSquares(int32_t a, int32_t b) {
  const auto ua = static_cast<uint32_t>(a);
  const auto ub = static_cast<uint32_t>(b);
  return static_cast<int32_t>(ua * ua + ub * ub);
}

}  // namespace tessary
