#include "ui/CalibrationHelpWindowController.h"

#include <QtCore/QFile>

#include "ui/FloatingLevel.h"
#include "ui/Windows.h"
#include "ui_CalibrationHelpWindowController.h"

namespace tessary {

std::unique_ptr<CalibrationHelpWindowController> gCalibrationHelpWindowController;

CalibrationHelpWindowController::CalibrationHelpWindowController()
    : ui_(std::make_unique<Ui::CalibrationHelpWindowController>()) {
  ui_->setupUi(this);
  new FloatingLevel(*this);
  QFile page(QStringLiteral(":/help.html"));
  if (page.open(QIODevice::ReadOnly)) ui_->text->setHtml(QString::fromUtf8(page.readAll()));
}

CalibrationHelpWindowController::~CalibrationHelpWindowController() = default;

void CalibrationHelpWindowController::setParentWindow(const QWidget& parent) {
  placeBelowTitle(*this, parent);
}

}  // namespace tessary
