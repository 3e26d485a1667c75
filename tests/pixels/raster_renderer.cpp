#include <vector>

#include "Renderer.h"
#include "raster/RasterCompositor.h"

namespace tessary::test {
namespace {

/// Rows are longer than the surface is wide, as in a window whose middle is drawn to.
class MemorySurface final : public TestSurface {
 public:
  explicit MemorySurface(TextureSize size)
      : size_(size), bytes_(bytesPerRow() * size_t(size.height)) {
    for (size_t i = 0; i < bytes_.size(); ++i) bytes_[i] = uint8_t(kBeginning >> (i % 4 * 8));
  }
  TextureSize size() const override { return size_; }
  Surface target() override {
    return Surface::memory(size_, bytes_.data(), bytesPerRow(), {0, 0, size_.width, size_.height});
  }
  void read() override {}
  Pixel at(int32_t x, int32_t y) const override {
    const uint8_t* p = bytes_.data() + size_t(y) * bytesPerRow() + size_t(x) * 4;
    return {{p[2], p[1], p[0], p[3]}};
  }

 private:
  static constexpr uint32_t kBeginning = 0x00FF00FF;
  size_t bytesPerRow() const { return (size_t(size_.width) + 3) * 4; }

  TextureSize size_;
  std::vector<uint8_t> bytes_;
};

class RasterRenderer final : public Renderer {
 public:
  Compositor& compositor() override { return compositor_; }
  std::unique_ptr<TestSurface> makeSurface(TextureSize size) override {
    return std::make_unique<MemorySurface>(size);
  }

 private:
  RasterCompositor compositor_;
};

}  // namespace

std::unique_ptr<Renderer> Renderer::make() { return std::make_unique<RasterRenderer>(); }

}  // namespace tessary::test
