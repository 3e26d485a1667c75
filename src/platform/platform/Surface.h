#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Geometry.h"

namespace tessary {

/// What shows around the picture, and without one: a grey, 0 to 1, in all three channels. It is a
/// tenth, said as a byte: halfway between two, each graphics card would take its own.
inline constexpr float kSurroundingGrey = 26.0F / 255.0F;

/// Whole device pixels from a surface's top left; `right` and `bottom` are the first beyond.
struct SurfaceClip {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
};

/// What a tick draws to: pixels in memory, or the framebuffer that is bound in the current graphics
/// context.
struct Surface {
  /// A framebuffer.
  static Surface framebuffer(TextureSize size) { return {size, nullptr, 0, {}}; }
  /// Pixels of blue, green, red and an alpha that stays opaque, rows from the top. Nothing is
  /// written outside of `clip`, which lies within `size`.
  static Surface memory(TextureSize size, uint8_t* pixels, size_t bytesPerRow, SurfaceClip clip) {
    return {size, pixels, bytesPerRow, clip};
  }

  TextureSize size;           ///< Device pixels.
  uint8_t* pixels = nullptr;  ///< Null for a framebuffer, which is always drawn as a whole.
  size_t bytesPerRow = 0;
  SurfaceClip clip;
};

}  // namespace tessary
