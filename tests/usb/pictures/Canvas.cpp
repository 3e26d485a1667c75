#include "pictures/Canvas.h"

#include <algorithm>
#include <cmath>

namespace tessary::lab {
namespace {

uint8_t toByte(double value) { return uint8_t(std::lround(std::clamp(value, 0.0, 255.0))); }

}  // namespace

Canvas::Canvas(Size size) : size_(size), bytes_(size_t(size.width) * size_t(size.height) * 3) {}

void Canvas::set(int x, int y, const Rgb& color) {
  uint8_t* pixel = bytes_.data() + (size_t(y) * size_t(size_.width) + size_t(x)) * 3;
  pixel[0] = toByte(color.red);
  pixel[1] = toByte(color.green);
  pixel[2] = toByte(color.blue);
}

void Canvas::fill(int left, int top, int width, int height, const Rgb& color) {
  const int right = std::min(left + width, size_.width);
  const int bottom = std::min(top + height, size_.height);
  for (int y = std::max(top, 0); y < bottom; ++y)
    for (int x = std::max(left, 0); x < right; ++x) set(x, y, color);
}

}  // namespace tessary::lab
