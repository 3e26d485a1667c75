#pragma once
// What the integer codes of tools and shapes mean. A tool and the shape that it makes share a code;
// 51 and 52, the ends of the calibration line in `_opr1`, are in overlay/CalibrationLine.h.

#include <cstdint>

namespace tessary {

inline constexpr int32_t kOprDrag = 0;  ///< Of `_opr1`: select, move, pan. Of `_opr2`: nothing.
inline constexpr int32_t kOprLine = 1;
inline constexpr int32_t kOprLine2 = 2;  ///< Parallel lines.
inline constexpr int32_t kOprCircle = 3;
inline constexpr int32_t kOprRect = 4;
inline constexpr int32_t kOprAngle = 5;
inline constexpr int32_t kOprPencil = 6;
inline constexpr int32_t kOprText = 7;  ///< A shape's type only: no mouse tool makes texts.

/// Whether shapes of this type are finished by a third point, after the release.
constexpr bool hasThirdPoint(int32_t type) noexcept {
  return type == kOprLine2 || type == kOprAngle;
}

}  // namespace tessary
