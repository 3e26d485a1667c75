#pragma once

#include <functional>
#include <utility>

#include <QtCore/QPointer>
#include <QtWidgets/QDialog>

namespace tessary {

/// What all dialogs of the program have in common: each ends once. Keys and clicks that were under
/// way when it ended, the second of a double click or of two Returns, find it disabled, and a
/// further `done` stays without effect. So no dialog is shown again after its end.
class Dialog : public QDialog {
  Q_OBJECT
 public:
  using QDialog::QDialog;

  void done(int returnCode) override;

 private:
  bool ended_ = false;
};

/// Opens `sheet` over its parent, and lets it go when it has ended and `ended` has been told the
/// return code. `up` points to it for as long as it is up. Without `owner`, whose `up` is, nothing
/// is told any more.
template <typename Sheet>
void openSheet(QObject& owner, QPointer<Sheet>& up, Sheet& sheet,
               std::function<void(int returnCode)> ended = {}) {
  up = &sheet;
  QObject::connect(&sheet, &QDialog::finished, &owner, [&, ended = std::move(ended)](int code) {
    if (ended) ended(code);
    up.clear();
    sheet.deleteLater();
  });
  sheet.open();
}

}  // namespace tessary
