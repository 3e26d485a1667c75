#include "GlSurface.h"
#include "HeadlessContext.h"
#include "Renderer.h"
#include "opengl/GlCompositor.h"

namespace tessary::test {
namespace {

class FramebufferSurface final : public TestSurface {
 public:
  explicit FramebufferSurface(TextureSize size) : surface_(size) {}
  TextureSize size() const override { return surface_.size(); }
  Surface target() override {
    surface_.bind();
    return Surface::framebuffer(surface_.size());
  }
  void read() override { surface_.read(); }
  Pixel at(int32_t x, int32_t y) const override { return surface_.at(x, y); }

 private:
  GlSurface surface_;
};

class OpenGlRenderer final : public Renderer {
 public:
  explicit OpenGlRenderer(std::unique_ptr<HeadlessContext> context)
      : context_(std::move(context)) {}
  ~OpenGlRenderer() override { EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)); }
  Compositor& compositor() override { return compositor_; }
  std::unique_ptr<TestSurface> makeSurface(TextureSize size) override {
    return std::make_unique<FramebufferSurface>(size);
  }

 private:
  std::unique_ptr<HeadlessContext> context_;
  GlCompositor compositor_;
};

}  // namespace

std::unique_ptr<Renderer> Renderer::make() {
  auto context = HeadlessContext::make();
  if (!context) return nullptr;
  return std::make_unique<OpenGlRenderer>(std::move(context));
}

}  // namespace tessary::test
