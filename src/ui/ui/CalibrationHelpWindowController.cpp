#include "ui/CalibrationHelpWindowController.h"

#include <QtCore/QFile>
#include <QtGui/QShortcut>

#include "ui/FloatingLevel.h"
#include "ui/Windows.h"
#include "ui_CalibrationHelpWindowController.h"

namespace tessary {

std::unique_ptr<CalibrationHelpWindowController> gCalibrationHelpWindowController;

CalibrationHelpWindowController::CalibrationHelpWindowController()
    : ui_(std::make_unique<Ui::CalibrationHelpWindowController>()) {
  ui_->setupUi(this);
  new FloatingLevel(*this);
  for (const QKeyCombination key : {QKeyCombination(Qt::Key_Escape), Qt::CTRL | Qt::Key_W})
    connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
  QFile page(QStringLiteral(":/help.html"));
  if (page.open(QIODevice::ReadOnly)) ui_->text->setHtml(QString::fromUtf8(page.readAll()));
}

CalibrationHelpWindowController::~CalibrationHelpWindowController() = default;

void CalibrationHelpWindowController::setParentWindow(const QWidget& parent) {
  placeBelowTitle(*this, parent);
  keepAbove(*this, parent);
}

}  // namespace tessary
