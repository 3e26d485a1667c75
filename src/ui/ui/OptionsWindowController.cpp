#include "ui/OptionsWindowController.h"

#include <QtGui/QShortcut>
#include <QtWidgets/QFileDialog>

#include "ui/FloatingLevel.h"
#include "ui/Windows.h"
#include "ui_OptionsWindowController.h"

namespace tessary {
namespace {

// Differs from the 26 that a stored size is repaired to; it is meant.
constexpr int32_t kTextSizeRepair = 24;

}  // namespace

std::unique_ptr<OptionsWindowController> gOptionsWindowController;

OptionsWindowController::OptionsWindowController(Preferences& preferences)
    : ui_(std::make_unique<Ui::OptionsWindowController>()), preferences_(preferences) {
  ui_->setupUi(this);
  connect(ui_->buttonBox, &QDialogButtonBox::accepted, this, &OptionsWindowController::okClicked);
  connect(ui_->buttonBox, &QDialogButtonBox::rejected, this,
          &OptionsWindowController::cancelClicked);
  connect(ui_->folderFld, &QPushButton::clicked, this, &OptionsWindowController::folderClicked);
  windowDidLoad();
}

OptionsWindowController::~OptionsWindowController() = default;

void OptionsWindowController::windowDidLoad() {
  new FloatingLevel(*this);
  connect(new QShortcut(Qt::CTRL | Qt::Key_W, this), &QShortcut::activated, this,
          &OptionsWindowController::cancelClicked);
  ui_->gridColorFld->setFocus();
  ui_->gridColorFld->setColor(preferences_.gridColor);
  ui_->lineColorFld->setColor(preferences_.lineColor);
  ui_->textColorFld->setColor(preferences_.textColor);
  for (int32_t size = kSmallestTextSize; size <= kLargestTextSize; ++size)
    ui_->textSizeFld->addItem(QString::number(size));
  if (preferences_.textSize < kSmallestTextSize || preferences_.textSize > kLargestTextSize)
    preferences_.textSize = kTextSizeRepair;
  ui_->textSizeFld->setCurrentIndex(preferences_.textSize - kSmallestTextSize);
  showFolder();
  ui_->photoFormatFld->addItems({QStringLiteral("JPG"), QStringLiteral("PNG")});
  // A stored format that is neither selects nothing and is not repaired.
  const bool known = preferences_.imagePNG == 0 || preferences_.imagePNG == 1;
  ui_->photoFormatFld->setCurrentIndex(known ? preferences_.imagePNG : -1);
}

void OptionsWindowController::setParentWindow(const QWidget& parent) {
  placeBelowTitle(*this, parent);
  keepAbove(*this, parent);
}

void OptionsWindowController::okClicked() {
  preferences_.gridColor = ui_->gridColorFld->color();
  preferences_.lineColor = ui_->lineColorFld->color();
  preferences_.textColor = ui_->textColorFld->color();
  preferences_.textSize = ui_->textSizeFld->currentIndex() + kSmallestTextSize;
  preferences_.imagePNG = ui_->photoFormatFld->currentIndex();
  preferences_.save();
  emit preferencesDidChange();
  done(1);
}

void OptionsWindowController::cancelClicked() { done(0); }

void OptionsWindowController::folderClicked() {
  chooseFolder(*this, preferences_.url, [this](const std::string& folder) {
    preferences_.url = folder;
    preferences_.saveURL();
    showFolder();
  });
}

void OptionsWindowController::showFolder() {
  QString text;
  QString path = tr("No folder chosen");
  if (preferences_.url) {
    path = QString::fromStdString(*preferences_.url);
    text = QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
  }
  ui_->folderFld->setAccessibleDescription(path);
  ui_->folderFld->setText(text.replace('&', "&&"));  // one alone would underline what follows
}

}  // namespace tessary
