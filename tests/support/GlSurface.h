#pragma once

#include <epoxy/gl.h>

#include <vector>

#include <gtest/gtest.h>

#include "CompositorFrames.h"
#include "opengl/GlObject.h"

namespace tessary::test {

/// A framebuffer as a window's surface, with rows read from the top.
class GlSurface {
 public:
  explicit GlSurface(TextureSize size) : size_(size) {
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

}  // namespace tessary::test
