#include "ui/Dialog.h"

#include <utility>

namespace tessary {

void Dialog::done(int returnCode) {
  if (std::exchange(ended_, true)) return;
  setEnabled(false);
  QDialog::done(returnCode);
}

}  // namespace tessary
