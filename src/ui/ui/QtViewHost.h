#pragma once

#include "preview/ViewHost.h"

class QWidget;

namespace tessary {

/// The window system behind the picture's geometry. The view's frame and bounds are numbers kept
/// here: the widget that shows the picture covers the whole container and draws only what is seen.
class QtViewHost final : public ViewHost {
 public:
  /// Both must outlive it. `container` lies in `window`.
  QtViewHost(QWidget& window, QWidget& container);

  Size superviewFrameSize() const override;
  Rect frame() const override { return frame_; }
  Rect bounds() const override { return bounds_; }
  void setFrame(const Rect& frame) override;
  void setBounds(const Rect& bounds) override;
  void setFrameSize(Size size) override;
  void setBoundsSize(Size size) override;
  Rect windowFrame() const override;
  Rect screenFrame() const override;
  void setContentSize(Size size) override;
  void setFrameOrigin(Point origin) override;
  /// Nothing to do: the widget asks for the view's frame at each mouse event.
  void updateTrackingAreas() override {}

  /// A point of the desktop in Qt's coordinates with y turned upwards.
  static Point screenPoint(Point global);

 private:
  QWidget& window_;
  QWidget& container_;
  Rect frame_{{0, 0}, {100, 100}};
  Rect bounds_{{0, 0}, {100, 100}};
};

}  // namespace tessary
