#include "ui/CalibrationWindowController.h"

#include <algorithm>

#include <QtGui/QScreen>
#include <QtGui/QShortcut>
#include <QtGui/QValidator>
#include <QtWidgets/QPushButton>

#include "base/Log.h"
#include "base/Number.h"
#include "base/Truncate.h"
#include "dialogs/CalibrationTable.h"
#include "dialogs/LengthText.h"
#include "ui/Windows.h"
#include "ui_CalibrationWindowController.h"

namespace tessary {
namespace {

/// Turns a decimal comma into a point while it is typed; no character moves.
class LengthValidator final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& /*position*/) const override {
    const auto text = lengthText(input.toStdString());
    if (!text) return Invalid;
    input = QString::fromStdString(*text);
    return Acceptable;
  }
};

}  // namespace

CalibrationWindowController::CalibrationWindowController(QWidget* parent,
                                                         const Preferences& preferences)
    : Dialog(parent),
      ui_(std::make_unique<Ui::CalibrationWindowController>()),
      preferences_(preferences) {
  ui_->setupUi(this);
  ui_->lengthFld->setValidator(new LengthValidator(this));
  for (const int32_t unit : {kUnitMillimetre, kUnitMicrometre}) {  // an item's index is its code
    const std::string_view text = unitText(unit);
    ui_->unitFld->addItem(QString::fromUtf8(text.data(), qsizetype(text.size())));
  }
  using Self = CalibrationWindowController;
  connect(ui_->buttonBox, &QDialogButtonBox::accepted, this, &Self::okClicked);
  connect(ui_->buttonBox, &QDialogButtonBox::rejected, this, &Self::cancelClicked);
  connect(ui_->buttonBox, &QDialogButtonBox::helpRequested, this, &Self::helpClicked);
  auto* helpKey = new QShortcut(QKeySequence::HelpContents, this);
  connect(helpKey, &QShortcut::activated, this, &Self::helpClicked);
}

CalibrationWindowController::~CalibrationWindowController() = default;

void CalibrationWindowController::setEditingItem(int32_t slot) {
  _editingItem = slot;
  setWindowTitle(QString::fromStdString(
      calibrationTitle(preferences_.calibrations, slot, tr("Calibrate").toStdString())));
}

void CalibrationWindowController::setParentWindow(const QWidget& parent) {
  getScreenPPI();
  placeBelowTitle(*this, parent);
}

void CalibrationWindowController::showWindow() {
  show();
  raise();
  activateWindow();
}

void CalibrationWindowController::getScreenPPI() const {
  if (const QScreen* screen = this->screen())
    log("Screen ppi is: {}",
        truncateToInt32(std::max(screen->physicalDotsPerInchX(), screen->physicalDotsPerInchY())));
}

void CalibrationWindowController::okClicked() {
  _length = doubleValue(ui_->lengthFld->text().toStdString());
  _unit = ui_->unitFld->currentIndex();
  if (_delegate) _delegate->calibrationCompleted(_editingItem, _length, _unit);
  done(1);
}

void CalibrationWindowController::cancelClicked() {
  if (_delegate) _delegate->calibrationCompleted(_editingItem, 0.0, 0);
  done(0);
}

void CalibrationWindowController::helpClicked() {
  if (!_calibrationHelpController)
    _calibrationHelpController = std::make_unique<CalibrationHelpViewController>();
  _calibrationHelpController->showPopup(*ui_->buttonBox->button(QDialogButtonBox::Help));
}

}  // namespace tessary
