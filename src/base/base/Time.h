#pragma once
// Time as cameras and movies count it.

#include <chrono>
#include <cstdint>

namespace tessary {

/// A frame's own time stamp. Cameras stamp in whole microseconds; nothing is rounded on the way.
using MediaTime = std::chrono::microseconds;

/// Rational seconds, as drivers give frame durations: numerator / denominator.
struct Fraction {
  uint32_t numerator = 0;
  uint32_t denominator = 1;
  friend bool operator==(const Fraction&, const Fraction&) = default;
};

}  // namespace tessary
