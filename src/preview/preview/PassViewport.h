#pragma once

#include <cstdint>

#include "base/Geometry.h"

namespace tessary {

/// Where the last pass draws the picture, in pixels of a drawable that has the frame's size, origin
/// top left. Parts may lie outside; what is left shows the clear colour.
struct PassViewport {
  double originX = 0.0;
  double originY = 0.0;
  double width = 0.0;
  double height = 0.0;
  double znear = -1.0;
  double zfar = 1.0;
  friend bool operator==(const PassViewport&, const PassViewport&) = default;
};

/// Up to 100 percent the view has the frame's size, and the viewport itself shrinks the picture.
/// Above, the view is larger than its drawable and magnifies it, so that the viewport only shifts.
PassViewport passViewport(int32_t zoom, ViewPoint viewLocation, TextureSize bitmapSize,
                          TextureSize textureSize);

/// The same picture on the real surface, which covers the container and not the view: in device
/// pixels from the container's top left corner, all four numbers whole. `viewFrame` is the view's
/// place in the container, over which its drawable is stretched.
SurfaceRect pictureOnSurface(const PassViewport& viewport, const ContainerRect& viewFrame,
                             TextureSize textureSize, double devicePixelRatio);

}  // namespace tessary
