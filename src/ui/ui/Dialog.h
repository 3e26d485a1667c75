#pragma once

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

}  // namespace tessary
