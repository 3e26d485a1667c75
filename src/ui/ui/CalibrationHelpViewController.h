#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QFrame>

namespace tessary {

/// The short help on how to lay the calibration line, beside the button that asks for it. It goes
/// away with the next click anywhere.
class CalibrationHelpViewController final : public QObject {
  Q_OBJECT
 public:
  ~CalibrationHelpViewController() override;

  /// Shows the help below `sender`, or above it where the screen ends.
  void showPopup(QWidget& sender);

 private:
  void popoverDidClose();

  QPointer<QFrame> popover;  // while it is up; the sender's window owns it
};

}  // namespace tessary
