#include "preview/PassViewport.h"

#include <cmath>

#include "preview/ViewGeometry.h"

namespace tessary {
namespace {

struct Span {
  double origin;
  double size;
};

Span onSurface(double origin, double size, double viewOrigin, double viewSize, int32_t texture,
               double devicePixelRatio) {
  if (texture <= 0) return {0.0, 0.0};
  const double stretch = viewSize / texture;
  // A scaled whole number may come out just below itself (-50 at a ratio of 1.1), and must not lose
  // a pixel for that.
  constexpr double kSlack = 1e-6;
  // Floor, not round: a half pixel would blur a picture that is shown 1:1.
  return {std::floor((viewOrigin + origin * stretch) * devicePixelRatio + kSlack),
          std::round(size * stretch * devicePixelRatio)};
}

}  // namespace

PassViewport passViewport(int32_t zoom, ViewPoint viewLocation, TextureSize bitmapSize,
                          TextureSize textureSize) {
  const double scale = double(mapZoom(zoom));
  if (scale > 1.0) {
    return {-viewLocation.x / scale, -viewLocation.y / scale, double(textureSize.width),
            double(textureSize.height)};
  }
  return {-viewLocation.x, -viewLocation.y, double(bitmapSize.width), double(bitmapSize.height)};
}

SurfaceRect pictureOnSurface(const PassViewport& viewport, const ContainerRect& viewFrame,
                             TextureSize textureSize, double devicePixelRatio) {
  const Span x = onSurface(viewport.originX, viewport.width, viewFrame.origin.x,
                           viewFrame.size.width, textureSize.width, devicePixelRatio);
  const Span y = onSurface(viewport.originY, viewport.height, viewFrame.origin.y,
                           viewFrame.size.height, textureSize.height, devicePixelRatio);
  return {{x.origin, y.origin}, {x.size, y.size}};
}

}  // namespace tessary
