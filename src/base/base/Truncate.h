#pragma once

#include <cstdint>
#include <limits>

namespace tessary {

/// `value` without its fraction. What 32 bits can't hold becomes the nearest end of their range,
/// and what is not a number becomes 0.
constexpr int32_t truncateToInt32(double value) noexcept {
  constexpr double kLowest = std::numeric_limits<int32_t>::min();
  constexpr double kHighest = std::numeric_limits<int32_t>::max();
  if (value != value) return 0;
  if (value <= kLowest) return std::numeric_limits<int32_t>::min();
  if (value >= kHighest) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(value);
}

}  // namespace tessary
