#pragma once

#include <memory>
#include <string>

#include "ui/Dialog.h"

namespace Ui {
class InputTextWindowController;
}

namespace tessary {

/// The sheet that asks for the text to lay over the picture. It ends with 1 for OK and 0 for
/// Cancel.
class InputTextWindowController final : public Dialog {
  Q_OBJECT
 public:
  explicit InputTextWindowController(QWidget* parent);
  ~InputTextWindowController() override;

  /// The text (UTF-8) as the field shows it: one line. May be read after the sheet has ended.
  std::string getInputText() const;

 private:
  void okClicked();
  void cancelClicked();

  std::unique_ptr<Ui::InputTextWindowController> ui_;
};

}  // namespace tessary
