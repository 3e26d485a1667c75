#pragma once
// Which reticle lies over the picture: the values of `_scaleType`.

#include <cstdint>

namespace tessary {

inline constexpr int32_t kScaleNone = 0;
inline constexpr int32_t kScaleCrosshair = 1;
inline constexpr int32_t kScaleGrid = 2;
inline constexpr int32_t kScaleConcentric = 3;

}  // namespace tessary
