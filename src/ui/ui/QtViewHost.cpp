#include "ui/QtViewHost.h"

#include <algorithm>

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QWidget>

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
  const QRect frame = window_.frameGeometry();
  return {{double(frame.x()), double(frame.y())}, sizeOf(frame.size())};
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
  // Toolbar and menu count as part of the frame here.
  const QSize bars = window_.size() - container_.size();
  const QSize wanted = QSize(int(size.width), int(size.height)) + bars;
  const double ratio = window_.devicePixelRatio();
  window_.resize(grantedLength(wanted.width(), ratio), grantedLength(wanted.height(), ratio));
}

void QtViewHost::setFrameOrigin(ScreenPoint origin) {
  const QPoint topLeft(int(origin.x), int(origin.y));
  if (topLeft != window_.frameGeometry().topLeft()) window_.move(topLeft);
}

}  // namespace tessary
