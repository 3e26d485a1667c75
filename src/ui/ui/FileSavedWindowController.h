#pragma once

#include <memory>

#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

#include "dialogs/NoticeClock.h"

namespace Ui {
class FileSavedWindowController;
}

namespace tessary {

/// The notice that names the file just saved. It takes no focus and closes by itself, or by a
/// click. It is kept and used again: setParentWindow, setFileName, showWindow.
class FileSavedWindowController final : public QWidget {
  Q_OBJECT
 public:
  /// Stays above `parent`.
  explicit FileSavedWindowController(QWidget* parent);
  ~FileSavedWindowController() override;

  /// Places the notice near the top of `parent`. It does not follow the parent by itself.
  void setParentWindow(const QWidget& parent);
  /// From now on the notice has its full time.
  void setFileName(const QString& name);
  void showWindow();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void timerTriggered();
  void windowWillClose();

  std::unique_ptr<Ui::FileSavedWindowController> ui_;
  const QWidget* parentWnd_ = nullptr;
  NoticeClock clock_;
  QTimer timer{this};
};

}  // namespace tessary
