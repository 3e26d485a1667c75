#include "ui/Windows.h"

#include <utility>

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QFileDialog>

#include "base/FileCalls.h"
#include "dialogs/Placement.h"

namespace tessary {
namespace {

bool isWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

}  // namespace

ScreenRect screenRect(const QRect& rect) {
  return {{double(rect.x()), double(rect.y())}, {double(rect.width()), double(rect.height())}};
}

void moveFrameTo(QWidget& window, QPoint place) {
  if (window.frameGeometry().topLeft() != place) window.move(place);
  // Until the window manager has given it a frame, QWidget takes it to have none, and the title bar
  // would come to stand above `place`.
  QWindow* handle = window.windowHandle();
  if (handle && handle->frameMargins().isNull()) handle->setFramePosition(place);
}

void placeIn(QWidget& window, const QWidget& parent, double below) {
  window.adjustSize();
  // Under Wayland a popup's place counts from where the platform takes its parent to be; the widget
  // may take another place for its own, which the compositor has not granted.
  const QRect frame = isWayland() ? parent.windowHandle()->frameGeometry() : parent.frameGeometry();
  const ScreenPoint origin = placementIn(screenRect(frame), window.width(), below);
  window.move(int(origin.x), int(origin.y));
}

void placeBeside(QWidget& window, const QWidget& parent) {
  const ScreenPoint origin =
      placementBeside(screenRect(parent.frameGeometry()),
                      screenRect(parent.screen()->availableGeometry()), window.width());
  window.move(int(origin.x), int(origin.y));
}

void placeBelowTitle(QWidget& window, const QWidget& parent) {
  placeIn(window, parent, kBelowTitle);
}

void keepAbove(QWidget& window, const QWidget& parent) {
  // Under X11 it floats, and could no longer be minimised by itself.
  if (!isWayland()) return;
  window.winId();  // makes the platform's window
  window.windowHandle()->setTransientParent(parent.windowHandle());
}

Qt::WindowFlags noticeFlags() {
  // Wayland gives any window the keyboard when it shows, and lets only popups be placed. X11 would
  // keep a popup above the windows of all other programs, too.
  return (isWayland() ? Qt::ToolTip : Qt::Tool) | Qt::FramelessWindowHint |
         Qt::WindowDoesNotAcceptFocus;
}

QMessageBox& openAlert(QWidget& window, QMessageBox::Icon icon, const QString& message,
                       const QString& information) {
  auto* alert = new QMessageBox(icon, QString(), message, QMessageBox::Ok, &window);
  alert->setInformativeText(information);
  alert->setAttribute(Qt::WA_DeleteOnClose);
  alert->open();
  return *alert;
}

namespace {

/// The chooser looks into the folder that it begins with: not where the disk does not answer.
bool isThere(const std::string& folder) { return isFolder(folder).value_or(false); }

/// Where the search for a folder begins when none has been chosen yet: with the user's pictures.
QString firstFolder() {
  const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  return isThere(pictures.toStdString()) ? pictures : QDir::homePath();
}

}  // namespace

void chooseFolder(QWidget& window, const std::optional<std::string>& current,
                  std::function<void(const std::string& folder)> chosen) {
  auto* dialog = new QFileDialog(&window);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOption(QFileDialog::ShowDirsOnly);
  dialog->setWindowTitle(QStringLiteral("Choose path to save image and video files"));
  dialog->setDirectory(current && isThere(*current) ? QString::fromStdString(*current)
                                                    : firstFolder());
  // Once: a second Return may be on its way when the chooser ends.
  QObject::connect(
      dialog, &QFileDialog::fileSelected, &window,
      [chosen = std::move(chosen)](const QString& folder) { chosen(folder.toStdString()); },
      Qt::SingleShotConnection);
  dialog->open();
}

}  // namespace tessary
