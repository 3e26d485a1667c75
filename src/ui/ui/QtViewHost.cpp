#include "ui/QtViewHost.h"

#include <algorithm>
#include <cstdlib>

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QWidget>

#include "dialogs/Placement.h"
#include "ui/Windows.h"

namespace tessary {
namespace {

Size sizeOf(const QSize& size) { return {double(size.width()), double(size.height())}; }

/// The least length from `wanted` on that Qt and the window manager agree on: at a scale factor of
/// 1.5 Qt has windows cut down to an even number of pixels, so that a picture would not fit any
/// more.
int grantedLength(int wanted, double ratio) {
  const int step = std::max(qRound(ratio), 1);
  int length = wanted;
  while (qRound(length * ratio) % step != 0) ++length;
  return length;
}

}  // namespace

QtViewHost::QtViewHost(QWidget& window, QWidget& container)
    : window_(window), container_(container) {}

Size QtViewHost::superviewFrameSize() const { return sizeOf(container_.size()); }

ScreenRect QtViewHost::windowFrame() const {
  QRect frame = window_.frameGeometry();
  if (lastMove_ && (!framed_ || lastMove_->granted == frame.topLeft()))
    frame.moveTopLeft(lastMove_->asked);
  return screenRect(frame);
}

Size QtViewHost::screenSize() const {
  const QScreen* screen = window_.screen();
  return screen ? sizeOf(screen->size()) : Size{};
}

double QtViewHost::desktopBottom() const {
  const QScreen* primary = QGuiApplication::primaryScreen();
  return primary ? primary->geometry().y() + primary->geometry().height() : 0;
}

void QtViewHost::setContentSize(Size size) {
  contentSize_ = size;
  // Toolbar and menu count as part of the frame here.
  const QSize bars = window_.size() - container_.size();
  const QSize wanted = QSize(int(size.width), int(size.height)) + bars;
  const double ratio = window_.devicePixelRatio();
  const QSize granted(grantedLength(wanted.width(), ratio), grantedLength(wanted.height(), ratio));
  resizeFrame(withinScreen({frameCorner(), granted.grownBy(frameMargins())}).size());
}

void QtViewHost::setFrameOrigin(ScreenPoint origin) { moveFrame({int(origin.x), int(origin.y)}); }

void QtViewHost::moveFrame(QPoint asked) {
  const QPoint granted = withinScreen({asked, window_.size().grownBy(frameMargins())}).topLeft();
  // At a scale factor of 1.5 a frame's corner can be a point beside what it was asked to be.
  const int most = window_.devicePixelRatio() > 1 ? 1 : 0;
  const QPoint way = granted - window_.frameGeometry().topLeft();
  const bool isThere = framed_ && std::max(std::abs(way.x()), std::abs(way.y())) <= most;
  lastMove_ = Move{asked, granted};
  if (!isThere) moveFrameTo(window_, granted);
}

void QtViewHost::windowWasFramed() {
  const ScreenPoint origin = windowFrame().origin;
  framed_ = true;
  const QSize size = window_.size().grownBy(frameMargins());
  // The window's own size may be from before a picture that the window manager has yet to come to.
  if (contentSize_)
    setContentSize(*contentSize_);
  else
    resizeFrame(withinScreen({frameCorner(), size}).size());
  // What the window manager made of it without a frame may be another place.
  if (!fillsScreen()) setFrameOrigin(origin);
}

bool QtViewHost::fillsScreen() const { return window_.isMaximized() || window_.isFullScreen(); }

QPoint QtViewHost::frameCorner() const {
  return !framed_ && lastMove_ ? lastMove_->granted : window_.frameGeometry().topLeft();
}

QMargins QtViewHost::frameMargins() const {
  const QWindow* window = window_.windowHandle();
  return window ? window->frameMargins() : QMargins();
}

QRect QtViewHost::withinScreen(const QRect& frame) const {
  const QScreen* screen = window_.screen();
  if (!screen || fillsScreen()) return frame;
  const QSize least = window_.minimumSize().grownBy(frameMargins());
  const ScreenRect within =
      broughtWithin(screenRect(frame), screenRect(screen->availableGeometry()), sizeOf(least));
  return {int(within.origin.x), int(within.origin.y), int(within.size.width),
          int(within.size.height)};
}

void QtViewHost::resizeFrame(QSize size) {
  const QPoint corner = frameCorner();
  window_.resize(size.shrunkBy(frameMargins()));
  if (!framed_) moveFrameTo(window_, corner);
}

}  // namespace tessary
