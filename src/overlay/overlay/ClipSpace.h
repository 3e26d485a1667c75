#pragma once
// The one place where a distance from the middle of the image becomes a coordinate in clip space.

#include <cstdint>

namespace tessary {

/// `fromMiddle` pixels, of an image `extent` pixels wide or high, in clip space. The narrowing of
/// the distance to float before it is divided is part of the result.
inline float clipCoordinate(double fromMiddle, int32_t extent) {
  const auto narrowed = static_cast<float>(fromMiddle);
  const double half = static_cast<double>(static_cast<float>(extent)) / 2.0;
  return static_cast<float>(static_cast<double>(narrowed) / half);
}

}  // namespace tessary
