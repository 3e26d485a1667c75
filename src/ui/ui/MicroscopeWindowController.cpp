#include "ui/MicroscopeWindowController.h"

#include <QtWidgets/QPushButton>

#include "base/Log.h"
#include "ui_MicroscopeWindowController.h"

namespace tessary {

MicroscopeWindowController::MicroscopeWindowController(QWidget* parent)
    : Dialog(parent), ui_(std::make_unique<Ui::MicroscopeWindowController>()) {
  ui_->setupUi(this);
  connect(ui_->microscopeFld, &QComboBox::activated, this,
          &MicroscopeWindowController::onSelMicroscope);
  connect(ui_->buttonBox, &QDialogButtonBox::accepted, this,
          &MicroscopeWindowController::okClicked);
  connect(ui_->buttonBox, &QDialogButtonBox::rejected, this,
          &MicroscopeWindowController::cancelClicked);
  refreshMicroscopes();
  ui_->microscopeFld->setFocus();
}

MicroscopeWindowController::~MicroscopeWindowController() = default;

void MicroscopeWindowController::refreshMicroscopes() {
  ui_->microscopeFld->clear();
  ui_->resolutionFld->clear();
  int index = -1;
  for (size_t i = 0; i < gMicroscopes.size(); ++i) {
    ui_->microscopeFld->addItem(QString::fromStdString(gMicroscopes[i]->name));
    if (gCurrMicroscope && gMicroscopes[i]->uniqueID == gCurrMicroscope->uniqueID) index = int(i);
  }
  if (index < 0 || index >= ui_->microscopeFld->count()) index = 0;
  ui_->microscopeFld->setCurrentIndex(index);
  onSelMicroscope();
}

void MicroscopeWindowController::onSelMicroscope() {
  ui_->resolutionFld->clear();
  int count = 0;
  int index = -1;
  if (const auto microscope = selectedMicroscope()) {
    const auto& preselected = microscope->defResolution;
    for (const auto& resolution : microscope->resolutions) {
      ui_->resolutionFld->addItem(
          QStringLiteral("%1x%2").arg(resolution->width).arg(resolution->height));
      if (preselected && resolution->width == preselected->width &&
          resolution->height == preselected->height)
        index = count;
      ++count;
    }
  }
  log("onSelMicroscope: {} {}", count, index);
  if (index < 0) index = count / 2;
  ui_->resolutionFld->setCurrentIndex(index);
  // A microscope that offers no resolution can't be opened.
  ui_->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(count > 0);
}

void MicroscopeWindowController::okClicked() {
  const auto microscope = selectedMicroscope();
  const int index = ui_->resolutionFld->currentIndex();
  if (!microscope || index < 0 || size_t(index) >= microscope->resolutions.size()) return;
  // The session is started anew even if nothing changed.
  if (_delegate) _delegate->startCaptureSession(microscope, microscope->resolutions[size_t(index)]);
  done(1);
}

void MicroscopeWindowController::cancelClicked() { done(0); }

std::shared_ptr<MicroscopeInfo> MicroscopeWindowController::selectedMicroscope() const {
  const int index = ui_->microscopeFld->currentIndex();
  if (index < 0 || size_t(index) >= gMicroscopes.size()) return nullptr;
  return gMicroscopes[size_t(index)];
}

}  // namespace tessary
