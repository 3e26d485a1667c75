#include "ui/Dialog.h"

#include <utility>

#include <QtWidgets/QAbstractButton>

namespace tessary {

void Dialog::done(int returnCode) {
  if (std::exchange(ended_, true)) return;
  setEnabled(false);
  // A button that was pressed by its key clicks a tenth of a second later, disabled or not.
  for (QAbstractButton* button : findChildren<QAbstractButton*>()) button->blockSignals(true);
  QDialog::done(returnCode);
}

}  // namespace tessary
