#pragma once

#include <epoxy/gl.h>

#include <array>
#include <memory>
#include <ostream>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "HeadlessContext.h"
#include "base/PixelBuffer.h"
#include "base/PointVertex.h"
#include "opengl/GlObject.h"

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

/// The vertex of pixel (x, y), as the overlay makes it: halves of the numerators are whole numbers.
inline PointVertex vertexAt(TextureSize size, int32_t x, int32_t y,
                            std::array<float, 4> rgba = {1, 0, 0, 1}) {
  const int32_t w = size.width;
  const int32_t h = size.height;
  return {{float((x - w / 2) / (w / 2.0)), float((h / 2 - y) / (h / 2.0)), 0.0F, 1.0F},
          {rgba[0], rgba[1], rgba[2], rgba[3]}};
}

/// A framebuffer as a window's surface, with rows read from the top.
class Surface {
 public:
  explicit Surface(TextureSize size) : size_(size) {
    glBindTexture(GL_TEXTURE_2D, texture_.name());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size.width, size.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    bind();
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture_.name(), 0);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    glClearColor(1, 0, 1, 0);
    glClear(GL_COLOR_BUFFER_BIT);
  }
  void bind() const { glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.name()); }
  GLuint name() const { return framebuffer_.name(); }
  TextureSize size() const { return size_; }

  /// Reads all pixels; `at` answers from them.
  void read() {
    bytes_.resize(size_t(size_.width) * size_t(size_.height) * 4);
    bind();
    glReadPixels(0, 0, size_.width, size_.height, GL_RGBA, GL_UNSIGNED_BYTE, bytes_.data());
  }
  /// Red, green, blue, alpha, from the top left.
  Pixel at(int32_t x, int32_t y) const {
    Pixel pixel;
    const size_t row = size_t(size_.height - 1 - y);
    std::copy_n(bytes_.begin() + std::ptrdiff_t((row * size_t(size_.width) + size_t(x)) * 4), 4,
                pixel.bytes.begin());
    return pixel;
  }

 private:
  TextureSize size_;
  GlTexture texture_;
  GlFramebuffer framebuffer_;
  std::vector<uint8_t> bytes_;
};

/// 0.1 of 255 is 25.5: either neighbour will do.
inline bool isClearColor(const Pixel& rgba) {
  const auto& b = rgba.bytes;
  return (b[0] == 25 || b[0] == 26) && b[1] == b[0] && b[2] == b[0] && b[3] == 255;
}

/// Tests with a context of their own. A machine that can't make one fails them.
class GlTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(context_, nullptr); }
  void TearDown() override { EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)); }

 private:
  std::unique_ptr<HeadlessContext> context_ = HeadlessContext::make();
};

}  // namespace tessary::test
