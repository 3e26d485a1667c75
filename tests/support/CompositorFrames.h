#pragma once
// Frames, vertices and pixels for tests of what composes and presents.

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <ostream>

#include <fmt/format.h>

#include "base/PixelBuffer.h"
#include "base/PointVertex.h"

namespace tessary::test {

/// Blue, green, red, alpha, or red, green, blue, alpha: as the place says that it comes from.
struct Pixel {
  std::array<uint8_t, 4> bytes{};
  friend bool operator==(const Pixel&, const Pixel&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
    const auto& b = pixel.bytes;
    return out << fmt::format("({}, {}, {}, {})", b[0], b[1], b[2], b[3]);
  }
};

inline Pixel pixelAt(const PixelBuffer& buffer, int32_t x, int32_t y) {
  Pixel pixel;
  std::copy_n(buffer.data() + size_t(y) * buffer.bytesPerRow() + size_t(x) * 4, 4,
              pixel.bytes.begin());
  return pixel;
}

/// A frame in which every pixel differs from its neighbours: blue counts columns, green rows.
inline PixelBuffer gradientFrame(TextureSize size) {
  PixelBuffer frame(size);
  uint8_t* byte = frame.data();
  for (int32_t y = 0; y < size.height; ++y) {
    for (int32_t x = 0; x < size.width; ++x) {
      *byte++ = uint8_t(x);
      *byte++ = uint8_t(y);
      *byte++ = uint8_t((x >> 8) * 16 + (y >> 8));
      *byte++ = 255;
    }
  }
  return frame;
}

inline PixelBuffer plainFrame(TextureSize size, Pixel bgra) {
  PixelBuffer frame(size);
  for (size_t i = 0; i < frame.byteCount(); ++i) frame.data()[i] = bgra.bytes[i % 4];
  return frame;
}

/// For what takes frames that are shared: not owned, so it must outlive its use.
inline std::shared_ptr<const PixelBuffer> borrowed(const PixelBuffer& frame) {
  return {std::shared_ptr<const PixelBuffer>(), &frame};
}

/// The vertex of pixel (x, y), as the overlay makes it: halves of the numerators are whole numbers.
inline PointVertex vertexAt(TextureSize size, int32_t x, int32_t y,
                            std::array<float, 4> rgba = {1, 0, 0, 1}) {
  const int32_t w = size.width;
  const int32_t h = size.height;
  return {{float((x - w / 2) / (w / 2.0)), float((h / 2 - y) / (h / 2.0)), 0.0F, 1.0F},
          {rgba[0], rgba[1], rgba[2], rgba[3]}};
}

/// 0.1 of 255 is 25.5: either neighbour will do.
inline bool isClearColor(const Pixel& rgba) {
  const auto& b = rgba.bytes;
  return (b[0] == 25 || b[0] == 26) && b[1] == b[0] && b[2] == b[0] && b[3] == 255;
}

}  // namespace tessary::test
