#pragma once
// Points, sizes and rectangles as pairs and quadruples of doubles, and a texture's size in pixels.

#include <cstdint>

namespace tessary {

struct Point {
  double x = 0.0;
  double y = 0.0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0.0;
  double height = 0.0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  Point origin;
  Size size;
  friend bool operator==(const Rect&, const Rect&) = default;
};

/// Whether `point` lies in `rect`. The low edges belong to it, the high edges do not, and a
/// rectangle without area holds nothing.
constexpr bool contains(const Rect& rect, Point point) {
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
