#pragma once

#include "preview/ViewHost.h"

class QWidget;

namespace tessary {

/// The window system behind the picture's geometry.
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

 private:
  QWidget& window_;
  QWidget& container_;
};

}  // namespace tessary
