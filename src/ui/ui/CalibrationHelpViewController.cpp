#include "ui/CalibrationHelpViewController.h"

#include <algorithm>

#include <QtCore/QEvent>
#include <QtGui/QScreen>

#include "ui_CalibrationHelpViewController.h"

namespace tessary {
namespace {

/// Where a popup of `size` stands on `screen`: below the button, or else above it.
QPoint placeBeside(const QRect& sender, QSize size, const QRect& screen) {
  const bool below = sender.bottom() + 1 + size.height() <= screen.bottom() + 1;
  const int left = sender.center().x() - size.width() / 2;
  return {std::max(screen.left(), std::min(left, screen.right() + 1 - size.width())),
          below ? sender.bottom() + 1 : sender.top() - size.height()};
}

/// A popup that tells when it has closed.
class Popover final : public QFrame {
 public:
  Popover(QWidget* parent, std::function<void()> didClose)
      : QFrame(parent, Qt::Popup), didClose_(std::move(didClose)) {
    // A click on the button that opened it closes it, and does not open it again at once.
    setAttribute(Qt::WA_NoMouseReplay);
  }

 protected:
  void hideEvent(QHideEvent* event) override {
    QFrame::hideEvent(event);
    didClose_();
  }

 private:
  std::function<void()> didClose_;
};

}  // namespace

CalibrationHelpViewController::~CalibrationHelpViewController() { delete popover; }

void CalibrationHelpViewController::showPopup(QWidget& sender) {
  if (!popover) {
    popover = new Popover(sender.window(), [this] { popoverDidClose(); });
    Ui::CalibrationHelpViewController().setupUi(popover);
  }
  popover->adjustSize();
  const QRect place(sender.mapToGlobal(QPoint(0, 0)), sender.size());
  popover->move(placeBeside(place, popover->size(), sender.screen()->availableGeometry()));
  popover->show();
}

void CalibrationHelpViewController::popoverDidClose() {
  if (!popover) return;
  popover->deleteLater();
  popover.clear();
}

}  // namespace tessary
