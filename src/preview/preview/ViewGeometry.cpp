#include "preview/ViewGeometry.h"

#include <algorithm>
#include <cmath>

#include "base/Truncate.h"

namespace tessary {
namespace {

/// Size of a picture on screen: the product is single precision, halves go away from zero.
int32_t scaledSize(int32_t texture, float scale) {
  return truncateToInt32(double(std::round(float(texture) * scale)));
}

}  // namespace

float mapZoom(int32_t step) {
  switch (step) {
    case 0: return 0.5F;
    case 1: return 0.75F;
    case kZoom100: return 1.0F;
    case 3: return 1.25F;
    case 4: return 1.5F;
    case 5: return 2.0F;  // the zoom slider ends at 4: nobody asks for this one
    default: return 1.0F;
  }
}

template <typename Overflow>
ViewGeometry::Axis ViewGeometry::layOutAxis(double container, int32_t bitmap, int32_t texture,
                                            Overflow overflow) const {
  const double view = std::max(bitmap, texture);
  if (container >= bitmap) {
    return {(container - view) / 2, view, 0.0, -((view - bitmap) / 2)};
  }
  const int32_t excess = truncateToInt32(bitmap - container);
  const double origin = overflow(excess);
  return {0.0, view, origin, origin};
}

void ViewGeometry::apply(const Axis& horizontal, const Axis& vertical) {
  _viewLocation = {horizontal.location, vertical.location};
  const Size size{horizontal.size, vertical.size};
  frame_ = {{horizontal.frameOrigin, vertical.frameOrigin}, size};
  bounds_ = {{horizontal.boundsOrigin, vertical.boundsOrigin}, size};
}

void ViewGeometry::tellFrameDidChange() {
  if (_locationDelegate) _locationDelegate->previewViewFrameDidChange();
}

void ViewGeometry::zoomTo(int32_t step) {
  if (step >= 0 && step == _zoom) return;
  _zoom = step < 0 ? kZoom100 : step;
  const float scale = mapZoom(_zoom);
  _bitmapWidth = scaledSize(textureSize_.width, scale);
  _bitmapHeight = scaledSize(textureSize_.height, scale);

  // A zoom forgets the pan: whole view units, so that 1:1 stays sharp.
  const auto centred = [](int32_t excess) { return double(excess / 2); };
  const Size container = host_.superviewFrameSize();
  apply(layOutAxis(container.width, _bitmapWidth, textureSize_.width, centred),
        layOutAxis(container.height, _bitmapHeight, textureSize_.height, centred));
  tellFrameDidChange();
}

void ViewGeometry::offsetLocationTo(float x, float y) {
  const auto limited = [](float wanted) {
    return [wanted](int32_t excess) {
      return std::max(std::min(double(wanted), double(excess)), 0.0);
    };
  };
  const Size container = host_.superviewFrameSize();
  apply(layOutAxis(container.width, _bitmapWidth, textureSize_.width, limited(x)),
        layOutAxis(container.height, _bitmapHeight, textureSize_.height, limited(y)));
}

void ViewGeometry::windowDidResize() {
  // No lower limit: the origin is never below 0. A view at 0 is not centred when the picture begins
  // to overflow: meant.
  const auto kept = [](double origin) {
    return [origin](int32_t excess) { return std::min(origin, double(excess)); };
  };
  const Size container = host_.superviewFrameSize();
  const ViewPoint origin = bounds_.origin;
  apply(layOutAxis(container.width, _bitmapWidth, textureSize_.width, kept(origin.x)),
        layOutAxis(container.height, _bitmapHeight, textureSize_.height, kept(origin.y)));
  tellFrameDidChange();
}

void ViewGeometry::pan(ScreenPoint click, ScreenPoint screenPoint) {
  const int32_t dx = truncateToInt32(screenPoint.x - click.x);
  const int32_t dy = truncateToInt32(screenPoint.y - click.y);
  const int32_t x = truncateToInt32(_viewLocation0.x - dx);
  const int32_t y = truncateToInt32(_viewLocation0.y - dy);
  if (x == _viewLocation.x && y == _viewLocation.y) return;
  offsetLocationTo(float(x), float(y));
  if (_locationDelegate) _locationDelegate->previewViewLocationDidChange(_viewLocation);
}

Size ViewGeometry::getMaxWindowSize() const {
  const ScreenRect window = host_.windowFrame();
  // The screen's origin, menu bar and task bar are left out of account: meant.
  const double below = host_.desktopBottom() - window.origin.y - window.size.height;
  return {host_.screenSize().width - truncateToInt32(window.origin.x),
          double(truncateToInt32(below)) + truncateToInt32(window.size.height)};
}

ViewPoint ViewGeometry::convertPointFromSuperview(ContainerPoint point) const {
  return {point.x - frame_.origin.x + bounds_.origin.x,
          point.y - frame_.origin.y + bounds_.origin.y};
}

void ViewGeometry::frameSizeDidChange(TextureSize size) {
  _zoom = kZoom100;
  _bitmapWidth = size.width;
  _bitmapHeight = size.height;
}

void ViewGeometry::startPreview() {
  const Size picture{double(_bitmapWidth), double(_bitmapHeight)};
  frame_.size = picture;
  bounds_.size = picture;

  const ScreenPoint topLeft = host_.windowFrame().origin;
  const Size most = getMaxWindowSize();
  host_.setContentSize(
      {float(std::min(picture.width, most.width)), float(std::min(picture.height, most.height))});
  host_.setFrameOrigin(topLeft);

  zoomTo(-1);
  tellFrameDidChange();  // a second time: meant
}

void ViewGeometry::stopPreview() {
  _zoom = kNoZoom;
  _bitmapWidth = 0;
  _bitmapHeight = 0;
  _viewLocation = {};
}

}  // namespace tessary
