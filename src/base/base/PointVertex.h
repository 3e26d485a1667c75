#pragma once

#include <cstdint>
#include <type_traits>

namespace tessary {

/// One vertex of the overlay as the shaders read it: 32 bytes.
struct PointVertex {
  /// x and y in clip space, -1 to 1 across the video texture with y up, then 0 and 1.
  float position[4];
  /// Red, green, blue, alpha, each 0 to 1.
  float color[4];
};

static_assert(sizeof(PointVertex) == 32 && std::is_trivially_copyable_v<PointVertex>);

/// What is added to each coordinate of a line's vertex, in clip space with y down, before it is
/// drawn into a picture of `size` pixels along that axis.
///
/// A vertex of pixel (x, y) arrives as (x - W/2) / (W/2.0) with the half in the numerator a whole
/// number. That is the pixel's centre for an odd W. For an even W it is the corner between four
/// pixels, where the rounding of the last bit would choose the pixel: this moves it to the centre.
constexpr float lineShift(int32_t size) { return size % 2 == 0 ? 1.0F / float(size) : 0.0F; }
/// The same for a label's vertices. These can stand at half a pixel, where the last bit would
/// choose again: it is less, which decides for the pixel before.
constexpr float labelShift(int32_t size) { return lineShift(size) - 0.5F / float(size); }

}  // namespace tessary
