#include "ui/MainWindow.h"

#include <algorithm>

#include <QtGui/QCloseEvent>
#include <QtGui/QExposeEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtGui/QWindow>

#include "ui/Accessibility.h"

namespace tessary {
namespace {

constexpr QSize kInitialSize(800, 600);
constexpr QSize kMinimumSize(480, 360);
constexpr int kUsualPictureWidth = 1280;
constexpr int kRoomForTitle = 25;

}  // namespace

MainWindow::MainWindow() {
  installAccessibleInterfaces();  // before anything in it is made
  // It has no title of its own.
  setAccessibleName(QGuiApplication::applicationDisplayName());
  setMinimumSize(kMinimumSize);
  resize(kInitialSize);
  // Far enough left for the usual picture, which the window grows to with its left edge in place.
  // Said before it shows: later the window manager's own choice may come in between.
  const QRect screen = this->screen()->availableGeometry();
  move(screen.x() + std::max((screen.width() - kUsualPictureWidth) / 2, 0),
       screen.y() + kRoomForTitle);
}

bool MainWindow::isOccluded() const {
  const QWindow* window = windowHandle();
  return !window || !window->isExposed() || isMinimized();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  emit willClose();
  event->accept();
}

void MainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  emit didResize();
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange) emit occlusionStateDidChange();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  // Only the platform's window learns of being exposed, and it exists from now on.
  windowHandle()->installEventFilter(this);
}

void MainWindow::keyPressEvent(QKeyEvent* event) { emit keyDown(event); }

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  const bool handled = QMainWindow::eventFilter(watched, event);
  // Told once the window has taken note of the event itself.
  if (event->type() == QEvent::Expose)
    QMetaObject::invokeMethod(this, &MainWindow::occlusionStateDidChange, Qt::QueuedConnection);
  return handled;
}

}  // namespace tessary
