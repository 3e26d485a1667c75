#include "ui/InputTextWindowController.h"

#include "ui_InputTextWindowController.h"

namespace tessary {

InputTextWindowController::InputTextWindowController(QWidget* parent)
    : Dialog(parent), ui_(std::make_unique<Ui::InputTextWindowController>()) {
  ui_->setupUi(this);
  connect(ui_->buttonBox, &QDialogButtonBox::accepted, this, &InputTextWindowController::okClicked);
  connect(ui_->buttonBox, &QDialogButtonBox::rejected, this,
          &InputTextWindowController::cancelClicked);
}

InputTextWindowController::~InputTextWindowController() = default;

std::string InputTextWindowController::getInputText() const {
  // Pasted line breaks are still in the field's text, but it shows them as blanks.
  return ui_->textFld->displayText().toStdString();
}

void InputTextWindowController::okClicked() { done(1); }
void InputTextWindowController::cancelClicked() { done(0); }

}  // namespace tessary
