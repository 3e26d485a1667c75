#pragma once

#include <QtCore/QTimer>
#include <QtWidgets/QLabel>

#include "dialogs/FailureMessages.h"

namespace tessary {

/// The line over the top of the picture that says what goes wrong, in the style of the status
/// texts. A longer text is broken into lines. It lies below a sheet that would cover it, and lets
/// the mouse through.
class FailureLine final : public QLabel {
  Q_OBJECT
 public:
  /// Lies in `container`. `messages` must outlive it.
  FailureLine(QWidget& container, FailureMessages& messages);
  ~FailureLine() override;

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void messageDidChange();
  void secondPassed();
  /// Fits the line to its text, the container, and a sheet that is up.
  void layOut();
  int topBelowSheets(QRect line) const;

  QWidget& container_;
  FailureMessages& messages_;
  QTimer timer_{this};
};

}  // namespace tessary
