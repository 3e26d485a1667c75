#pragma once

#include <memory>

#include "platform/Compositor.h"
#include "raster/OverlayRaster.h"
#include "raster/ScaledCopy.h"

namespace tessary {

/// Composes and presents without any graphics library: for machines where OpenGL would run on the
/// processor too, or not at all.
///
/// Without an overlay the composed picture is the camera's frame itself; else a copy of it, in
/// which a change of the overlay alone first gives the pixels of the one before back to the frame.
/// It draws to surfaces in memory only.
class RasterCompositor final : public Compositor {
 public:
  void initBufferResources(TextureSize size) override;
  void clearBufferResources() override;
  bool hasBufferResources() const override { return size_ != TextureSize{}; }
  void contextWillBeDestroyed() override { clearBufferResources(); }
  void contextWasLost() override { clearBufferResources(); }
  void setFrame(std::shared_ptr<const PixelBuffer> frame) override;
  void compose(std::span<const PointVertex> lines, std::span<const PointVertex> points) override;
  /// Without a picture, only clears.
  void present(const SurfaceRect& picture, const Surface& surface) override;
  bool readBack(PixelBuffer& target) override;

 private:
  TextureSize size_;
  std::shared_ptr<const PixelBuffer> frame_;
  /// Frame and overlay; made when there first is an overlay.
  std::unique_ptr<PixelBuffer> _bufferTexture;
  bool bufferHoldsFrame_ = false;  // but for the overlay's pixels
  OverlayRaster overlay_;
  const PixelBuffer* composed_ = nullptr;  // one of the two
  ScaledCopy scaledCopy_;
};

}  // namespace tessary
