#pragma once

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

}  // namespace tessary
