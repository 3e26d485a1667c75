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
  ContainerRect frame() const override { return frame_; }
  ViewRect bounds() const override { return bounds_; }
  void setFrame(const ContainerRect& frame) override;
  void setBounds(const ViewRect& bounds) override;
  void setFrameSize(Size size) override;
  void setBoundsSize(Size size) override;
  ScreenRect windowFrame() const override;
  ScreenRect screenFrame() const override;
  void setContentSize(Size size) override;
  void setFrameOrigin(ScreenPoint origin) override;
  /// Nothing to do: the widget asks for the view's frame at each mouse event.
  void updateTrackingAreas() override {}

  /// A point of the desktop from Qt's coordinates with y turned upwards.
  static ScreenPoint screenPoint(double x, double y);

 private:
  QWidget& window_;
  QWidget& container_;
  ContainerRect frame_{{0, 0}, {100, 100}};
  ViewRect bounds_{{0, 0}, {100, 100}};
};

}  // namespace tessary
