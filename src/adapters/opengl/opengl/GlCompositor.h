#pragma once

#include <memory>

#include "platform/Compositor.h"

namespace tessary {

/// Composes and presents with OpenGL 3.3 core or OpenGL ES 3.0, in whatever context is current.
///
/// A frame is uploaded once, by a plain copy of the camera's bytes, which a driver does many times
/// faster than any conversion. Without an overlay that is the picture; else a copy of it, made by
/// the graphics card, over which the overlay is drawn in the same order of channels. Blue and red
/// change places once, on the way to the screen; reading back gives the camera's order again.
///
/// Leaves the framebuffer binding and the viewport as it found them; binds nothing else, and leaves
/// blending and depth test off. Frames larger than the graphics card's textures are refused with a
/// log line. What doesn't depend on the frame's size is made once a context: drivers keep a little
/// of each shader program that they ever saw. Destroy it with the context current, or tell it
/// before that the context goes.
class GlCompositor final : public Compositor {
 public:
  GlCompositor();
  ~GlCompositor() override;

  void initBufferResources(TextureSize size) override;
  void clearBufferResources() override;
  bool hasBufferResources() const override { return picture_ != nullptr; }
  void contextWillBeDestroyed() override;
  void contextWasLost() override;
  void setFrame(std::shared_ptr<const PixelBuffer> frame) override;
  void compose(std::span<const PointVertex> lines, std::span<const PointVertex> points) override;
  /// Without resources, only clears.
  void present(const SurfaceRect& picture, const Surface& surface) override;
  bool readBack(PixelBuffer& target) override;

 private:
  struct Texture;
  struct Picture;
  struct Programs;
  std::unique_ptr<Programs> programs_;
  std::unique_ptr<Picture> picture_;
};

}  // namespace tessary
