#pragma once

#include <optional>

#include <QtCore/QMargins>
#include <QtCore/QRect>

#include "preview/ViewHost.h"

class QWidget;

namespace tessary {

/// The window system behind the picture's geometry. The window never sticks out of the part of its
/// screen that is for windows: picture and sliders could not be reached there.
class QtViewHost final : public ViewHost {
 public:
  /// Both must outlive it. `container` lies in `window`.
  QtViewHost(QWidget& window, QWidget& container);

  Size superviewFrameSize() const override;
  ScreenRect windowFrame() const override;
  Size screenSize() const override;
  double desktopBottom() const override;
  void setContentSize(Size size) override;
  void setFrameOrigin(ScreenPoint origin) override;
  /// Brings the window as it is into its screen: what was said before it had a frame could not
  /// leave room for that.
  void bringWithinScreen();

 private:
  QMargins frameMargins() const;
  /// `frame`, brought within its screen. A window that fills the screen is the window manager's.
  QRect withinScreen(const QRect& frame) const;
  void resizeFrame(QSize size);

  QWidget& window_;
  QWidget& container_;
  std::optional<Size> contentSize_;  // the last that was asked for
};

}  // namespace tessary
