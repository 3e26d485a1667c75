#pragma once

#include <cstdint>

#include "base/Geometry.h"
#include "preview/PreviewViewLocationDelegate.h"
#include "preview/ViewHost.h"

namespace tessary {

/// Zoom steps: -1 without a picture, 0 and up as in `mapZoom`.
inline constexpr int32_t kNoZoom = -1;
inline constexpr int32_t kZoom100 = 2;      ///< 100 percent.
inline constexpr int32_t kLargestZoom = 4;  ///< The last step that the user can choose.

/// Decides how large the picture is on screen, which part of it shows, where the view lies in its
/// container, and how large the window becomes for a new frame size. Arithmetic only: no pixel is
/// touched here. Main thread.
///
/// For one axis, with T the frame's size in pixels, B the picture's size on screen, V the larger of
/// the two and C the container's size:
///
///     fits (C >= B)                            overflows (C < B)
///
///     F (may be negative)                      F = 0
///     |<----------- V ------------>|           |<------------- B -------------->|
///     :    |<------ B ------>|     :           |<- O ->|<---- C ---->|          |
///     :<-->| margin (V-B)/2 = -L               L = O, at most M = B - C
///
/// The view's bounds origin O moves nothing on screen; it makes a mouse position that is converted
/// into the view come out in coordinates of the picture.
class ViewGeometry {
 public:
  /// `textureSize` is the current frame size, 0 by 0 for none; like `host` it has to outlive this.
  ViewGeometry(ViewHost& host, const TextureSize& textureSize)
      : host_(host), textureSize_(textureSize) {}

  /// Zoom step, `kNoZoom` without a picture.
  int32_t zoom() const { return _zoom; }
  int32_t bitmapWidth() const { return _bitmapWidth; }
  int32_t bitmapHeight() const { return _bitmapHeight; }
  TextureSize bitmapSize() const { return {_bitmapWidth, _bitmapHeight}; }
  /// Per axis, in view units: what is scrolled off the left (top) edge of a picture that overflows;
  /// minus the margin around one that fits.
  ViewPoint viewLocation() const { return _viewLocation; }
  TextureSize textureSize() const { return textureSize_; }
  /// Where the view lies in the container. It may reach beyond it on any side.
  ContainerRect viewFrame() const { return frame_; }
  /// The view's own coordinates of that rectangle.
  ViewRect viewBounds() const { return bounds_; }
  Size superviewFrameSize() const { return host_.superviewFrameSize(); }
  /// Room for the window to the right of and below its present top left corner.
  Size getMaxWindowSize() const;
  /// A point of the container in the view's own coordinates.
  ViewPoint convertPointFromSuperview(ContainerPoint point) const;

  /// Not owned; null for none.
  void setLocationDelegate(PreviewViewLocationDelegate* delegate) { _locationDelegate = delegate; }

  /// Chooses a step and centres the picture. The present step does nothing at all; a negative one
  /// means 100 percent and always lays out.
  void zoomTo(int32_t step);
  /// Scrolls to `x` and `y`, limited to what the picture has. Tells nobody; an axis that fits stays
  /// centred.
  void offsetLocationTo(float x, float y);
  /// Lays out for the container's new size; takes back only as much pan as no longer fits.
  void windowDidResize();

  /// Remembers where the picture lies, for the `pan` calls of the drag that begins.
  void beginPan() { _viewLocation0 = _viewLocation; }
  /// The mouse was pressed at `click` and is now at `screenPoint`. Tells the delegate if the
  /// picture had to move.
  void pan(ScreenPoint click, ScreenPoint screenPoint);

  /// Frames now have `size`: back to 100 percent, without a layout. `startPreview` follows.
  void frameSizeDidChange(TextureSize size);
  /// Fits the window to the new frame size; its top left corner stays.
  void startPreview();
  /// The picture is gone. View and window stay as they are, and nobody is told.
  void stopPreview();

 private:
  struct Axis {
    double frameOrigin;
    double size;
    double boundsOrigin;
    double location;
  };
  /// Gives the bounds origin of an axis that overflows by `excess`.
  template <typename Overflow>
  Axis layOutAxis(double container, int32_t bitmap, int32_t texture, Overflow overflow) const;
  void apply(const Axis& horizontal, const Axis& vertical);
  void tellFrameDidChange();

  ViewHost& host_;
  const TextureSize& textureSize_;
  PreviewViewLocationDelegate* _locationDelegate = nullptr;

  ContainerRect frame_{{0, 0}, {100, 100}};
  ViewRect bounds_{{0, 0}, {100, 100}};
  int32_t _zoom = kNoZoom;
  int32_t _bitmapWidth = 100;
  int32_t _bitmapHeight = 100;
  ViewPoint _viewLocation;
  ViewPoint _viewLocation0;
};

/// Scale of a zoom step; 1.0 for any that is not among 0 to 5.
float mapZoom(int32_t step);

/// At 100 percent one view unit is one pixel of the frame, and the view's coordinates have the
/// scroll position in them already: there, and there alone, a view point is an image point.
constexpr ImagePoint imagePointAt100Percent(ViewPoint point) { return {point.x, point.y}; }

}  // namespace tessary
