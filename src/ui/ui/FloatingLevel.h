#pragma once

#include <QtCore/QObject>

class QWidget;

namespace tessary {

/// Keeps a window above all others, but for the time that anything modal is up: that must not open
/// below it, unseen, while the window that it blocks seems to be frozen.
class FloatingLevel final : public QObject {
 public:
  /// Goes with `window`, which is not shown yet.
  explicit FloatingLevel(QWidget& window);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void update();

  QWidget& window_;
};

}  // namespace tessary
