#include "ui/PictureSurface.h"

#include <cmath>

namespace tessary {

TextureSize PictureSurface::deviceSize(const QWidget& widget) {
  const double ratio = widget.devicePixelRatio();
  return {int32_t(std::lround(widget.width() * ratio)),
          int32_t(std::lround(widget.height() * ratio))};
}

}  // namespace tessary
