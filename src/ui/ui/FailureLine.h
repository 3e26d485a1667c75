#pragma once

#include <QtCore/QTimer>
#include <QtWidgets/QLabel>

#include "dialogs/FailureMessages.h"
#include "ui/Announcer.h"

namespace tessary {

/// The line over the top of the picture that says what goes wrong, in the style of the status
/// texts. A longer text is broken into lines. It lies below a sheet that would cover it, and lets
/// the mouse through. Screen readers are told each failure once.
class FailureLine final : public QLabel {
  Q_OBJECT
 public:
  /// Lies in `container`. `messages` and `announcer` must outlive it.
  FailureLine(QWidget& container, FailureMessages& messages, Announcer& announcer);
  ~FailureLine() override;

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void messageDidChange();
  void secondPassed();
  void announce();
  /// Fits the line to its text, the container, and a sheet that is up.
  void layOut();
  int topBelowSheets(QRect line) const;

  QWidget& container_;
  FailureMessages& messages_;
  Announcer& announcer_;
  QTimer timer_{this};
};

}  // namespace tessary
