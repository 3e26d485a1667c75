#pragma once
// Points, sizes and rectangles as pairs and quadruples of doubles, and a texture's size in pixels.
//
// Each space has points and rectangles of its own, and what takes one takes no other: who crosses
// over does so by a function with a name. In all of them y runs downwards.

#include <cstdint>

namespace tessary {

template <typename Space>
struct PointIn {
  double x = 0.0;
  double y = 0.0;
  friend bool operator==(const PointIn&, const PointIn&) = default;
};

struct Size {
  double width = 0.0;
  double height = 0.0;
  friend bool operator==(const Size&, const Size&) = default;
};

template <typename Space>
struct RectIn {
  PointIn<Space> origin;
  Size size;
  friend bool operator==(const RectIn&, const RectIn&) = default;
};

/// Pixels of the camera frame, origin at its top left.
using ImagePoint = PointIn<struct ImageSpace>;
using ImageRect = RectIn<ImageSpace>;
/// The view's own coordinates, which zoom and pan move over the picture.
using ViewPoint = PointIn<struct ViewSpace>;
using ViewRect = RectIn<ViewSpace>;
/// The container that the view lies in, origin at its top left.
using ContainerPoint = PointIn<struct ContainerSpace>;
using ContainerRect = RectIn<ContainerSpace>;
/// The desktop.
using ScreenPoint = PointIn<struct ScreenSpace>;
using ScreenRect = RectIn<ScreenSpace>;
/// Device pixels of the surface that is drawn to, which covers the container.
using SurfacePoint = PointIn<struct SurfaceSpace>;
using SurfaceRect = RectIn<SurfaceSpace>;

/// Whether `point` lies in `rect`. The low edges belong to it, the high edges do not, and a
/// rectangle without area holds nothing.
template <typename Space>
constexpr bool contains(const RectIn<Space>& rect, PointIn<Space> point) {
  return point.x >= rect.origin.x && point.x < rect.origin.x + rect.size.width &&
         point.y >= rect.origin.y && point.y < rect.origin.y + rect.size.height;
}

/// Pixel size of the current camera frame; 0 by 0 means that there is no picture.
struct TextureSize {
  int32_t width = 0;
  int32_t height = 0;
  friend bool operator==(const TextureSize&, const TextureSize&) = default;
};

}  // namespace tessary
