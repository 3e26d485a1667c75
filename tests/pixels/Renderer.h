#pragma once

#include <memory>

#include "CompositorFrames.h"
#include "platform/Compositor.h"

namespace tessary::test {

/// What a window would be to a compositor: begins in a colour that nothing here draws.
class TestSurface {
 public:
  virtual ~TestSurface() = default;
  virtual TextureSize size() const = 0;
  /// To be drawn to at once.
  virtual Surface target() = 0;
  /// Reads what was drawn; `at` answers from that.
  virtual void read() = 0;
  /// Red, green, blue, alpha, from the top left.
  virtual Pixel at(int32_t x, int32_t y) const = 0;
};

/// One adapter of the compositor, with all that it needs. The tests of this folder run with each:
/// every program that is built of them has another `make`.
class Renderer {
 public:
  /// Null where the machine can't draw so.
  static std::unique_ptr<Renderer> make();
  virtual ~Renderer() = default;
  virtual Compositor& compositor() = 0;
  virtual std::unique_ptr<TestSurface> makeSurface(TextureSize size) = 0;
};

/// What a surface begins with, as `at` gives it.
inline constexpr Pixel kUntouched{{255, 0, 255, 0}};

}  // namespace tessary::test
