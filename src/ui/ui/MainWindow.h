#pragma once

#include <QtWidgets/QMainWindow>

namespace tessary {

/// The main window as the platform sees it: turns what happens to it into signals.
class MainWindow final : public QMainWindow {
  Q_OBJECT
 public:
  MainWindow();

  /// Whether nothing of it can be seen: minimised, or not exposed by the window system.
  bool isOccluded() const;

 signals:
  void willClose();
  void occlusionStateDidChange();
  void didResize();
  /// A key that no control has taken.
  void keyDown(QKeyEvent* event);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tessary
