#include "raster/OverlayRaster.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tessary {
namespace {

/// On the picture, in pixels from its top left corner; single precision, as on a graphics card.
struct Place {
  float x;
  float y;
};

/// Lines are drawn in whole parts of a pixel, as by graphics cards: without that the rounding of a
/// coordinate would choose between two pixels.
constexpr int64_t kPixel = 256;

struct FixedPlace {
  explicit FixedPlace(Place place) {
    constexpr float kFar = 1 << 22;  // the products below stay in range
    isNear = std::abs(place.x) < kFar && std::abs(place.y) < kFar;  // and are numbers
    if (!isNear) return;
    x = std::llround(double(place.x) * kPixel);
    y = std::llround(double(place.y) * kPixel);
  }
  bool isNear = false;
  int64_t x = 0;
  int64_t y = 0;
};

/// Of `a / b`, `b` above zero.
int64_t floorOf(int64_t a, int64_t b) { return a >= 0 ? a / b : -((b - 1 - a) / b); }

uint8_t colourByte(float channel) {
  return uint8_t(std::lround(std::clamp(channel, 0.0F, 1.0F) * 255.0F));
}

/// Blue, green, red, alpha, as in the picture's memory.
uint32_t pixelOf(const PointVertex& vertex) {
  const uint8_t bytes[4] = {colourByte(vertex.color[2]), colourByte(vertex.color[1]),
                            colourByte(vertex.color[0]), colourByte(vertex.color[3])};
  uint32_t pixel = 0;
  std::memcpy(&pixel, bytes, sizeof pixel);
  return pixel;
}

/// The whole part, for what may lie anywhere: -1 below the picture, `size` beyond it.
int32_t wholeWithin(float value, int32_t size) {
  if (!(value >= 0.0F)) return -1;
  return value < float(size) ? int32_t(value) : size;
}

}  // namespace

class OverlayRaster::Pass {
 public:
  Pass(PixelBuffer& target, std::vector<uint32_t>& drawn)
      : size_(target.size()), data_(target.data()), drawn_(drawn) {}

  void shiftFor(float (*shift)(int32_t)) { shift_ = {shift(size_.width), shift(size_.height)}; }

  void point(const PointVertex& vertex) {
    const Place at = place(vertex);
    light(wholeWithin(at.x, size_.width), wholeWithin(at.y, size_.height), vertex);
  }

  void line(const PointVertex& from, const PointVertex& to) {
    const FixedPlace a(place(from));
    const FixedPlace b(place(to));
    if (!a.isNear || !b.isNear || (a.x == b.x && a.y == b.y)) return;
    if (std::abs(b.x - a.x) >= std::abs(b.y - a.y)) {
      crossings(a.x, a.y, b.x, b.y, size_.width, [&](int32_t x, int32_t y) { light(x, y, from); });
    } else {
      crossings(a.y, a.x, b.y, b.x, size_.height, [&](int32_t y, int32_t x) { light(x, y, from); });
    }
  }

 private:
  Place place(const PointVertex& vertex) const {
    const float halfWidth = float(size_.width) / 2;
    const float halfHeight = float(size_.height) / 2;
    return {(vertex.position[0] + shift_.x) * halfWidth + halfWidth,
            (shift_.y - vertex.position[1]) * halfHeight + halfHeight};
  }

  /// Calls `light` for each whole i whose centre lies between `from` and `to`, with the pixel in
  /// which the line is there, across: on the edge of two, the one behind it if `takesNext`.
  template <typename Light>
  static void crossings(int64_t from, int64_t acrossFrom, int64_t to, int64_t acrossTo,
                        int32_t size, const Light& light) {
    const bool takesNext = acrossTo > acrossFrom;
    if (from > to) {
      std::swap(from, to);
      std::swap(acrossFrom, acrossTo);
    }
    const int64_t length = to - from;
    const int64_t rise = acrossTo - acrossFrom;
    int64_t i = std::max<int64_t>(floorOf(from + kPixel / 2 - 1, kPixel), 0);
    const int64_t last = std::min<int64_t>(floorOf(to - kPixel / 2, kPixel), size - 1);
    for (; i <= last; ++i) {
      const int64_t along = i * kPixel + kPixel / 2 - from;
      const int64_t across =
          floorOf(acrossFrom * length + along * rise - (takesNext ? 0 : 1), length * kPixel);
      light(int32_t(i), int32_t(std::clamp<int64_t>(across, -1, INT32_MAX)));
    }
  }

  void light(int32_t x, int32_t y, const PointVertex& vertex) {
    if (x < 0 || x >= size_.width || y < 0 || y >= size_.height) return;
    const uint32_t offset = uint32_t(y) * uint32_t(size_.width) + uint32_t(x);
    const uint32_t pixel = pixelOf(vertex);
    std::memcpy(data_ + size_t(offset) * 4, &pixel, 4);
    drawn_.push_back(offset);
  }

  TextureSize size_;
  uint8_t* data_;
  std::vector<uint32_t>& drawn_;
  Place shift_{};
};

void OverlayRaster::draw(PixelBuffer& target, std::span<const PointVertex> lines,
                         std::span<const PointVertex> points) {
  drawn_.clear();
  Pass pass(target, drawn_);
  pass.shiftFor(lineShift);
  for (const PointVertex& end : lines) pass.point(end);
  for (size_t i = 0; i + 1 < lines.size(); i += 2) pass.line(lines[i], lines[i + 1]);
  pass.shiftFor(labelShift);
  for (const PointVertex& point : points) pass.point(point);
}

void OverlayRaster::erase(PixelBuffer& target, const PixelBuffer& frame) {
  for (const uint32_t offset : drawn_) {
    std::memcpy(target.data() + size_t(offset) * 4, frame.data() + size_t(offset) * 4, 4);
  }
  drawn_.clear();
}

}  // namespace tessary
