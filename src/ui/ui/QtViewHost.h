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
  /// Where the window was last asked to be while it is where it was brought from there: else each
  /// new picture would bring it a bit further.
  ScreenRect windowFrame() const override;
  Size screenSize() const override;
  double desktopBottom() const override;
  void setContentSize(Size size) override;
  void setFrameOrigin(ScreenPoint origin) override;
  /// Called once, when the window manager has given the window its frame. Brings the window as it
  /// is into its screen: what was said before could not leave room for a frame. Until then the
  /// window counts as being where it was asked to be, whatever the toolkit makes of half the news.
  void windowWasFramed();

 private:
  QMargins frameMargins() const;
  QPoint frameCorner() const;
  bool fillsScreen() const;
  /// `frame`, brought within its screen. A window that fills the screen is the window manager's.
  QRect withinScreen(const QRect& frame) const;
  void resizeFrame(QSize size);
  void moveFrame(QPoint asked);

  struct Move {
    QPoint asked;
    QPoint granted;
  };
  QWidget& window_;
  QWidget& container_;
  std::optional<Size> contentSize_;  // the last that was asked for
  std::optional<Move> lastMove_;
  bool framed_ = false;
};

}  // namespace tessary
