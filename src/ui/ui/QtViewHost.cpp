#include "ui/QtViewHost.h"

#include <algorithm>

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QWidget>

namespace tessary {
namespace {

/// The primary screen's bottom edge, from which y counts upwards.
double desktopBottom() {
  const QScreen* primary = QGuiApplication::primaryScreen();
  return primary ? primary->geometry().y() + primary->geometry().height() : 0;
}

ScreenRect turned(const QRect& rect) {
  return {{double(rect.x()), desktopBottom() - rect.y() - rect.height()},
          {double(rect.width()), double(rect.height())}};
}

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

Size QtViewHost::superviewFrameSize() const {
  return {double(container_.width()), double(container_.height())};
}

void QtViewHost::setFrame(const ContainerRect& frame) {
  frame_ = frame;
  container_.update();
}

void QtViewHost::setBounds(const ViewRect& bounds) { bounds_ = bounds; }
void QtViewHost::setFrameSize(Size size) { setFrame({frame_.origin, size}); }
void QtViewHost::setBoundsSize(Size size) { bounds_.size = size; }
ScreenRect QtViewHost::windowFrame() const { return turned(window_.frameGeometry()); }

ScreenRect QtViewHost::screenFrame() const {
  const QScreen* screen = window_.screen();
  return screen ? turned(screen->geometry()) : ScreenRect{};
}

void QtViewHost::setContentSize(Size size) {
  // Toolbar and menu count as part of the frame here.
  const QSize surroundings = window_.size() - container_.size();
  const QSize wanted = QSize(int(size.width), int(size.height)) + surroundings;
  const double ratio = window_.devicePixelRatio();
  window_.resize(grantedLength(wanted.width(), ratio), grantedLength(wanted.height(), ratio));
}

void QtViewHost::setFrameOrigin(ScreenPoint origin) {
  const QRect frame = window_.frameGeometry();
  const QPoint topLeft(int(origin.x), int(desktopBottom() - origin.y - frame.height()));
  if (topLeft != frame.topLeft()) window_.move(topLeft);
}

ScreenPoint QtViewHost::screenPoint(double x, double y) { return {x, desktopBottom() - y}; }

}  // namespace tessary
