#include "ui/RecordWindowController.h"

#include <chrono>
#include <utility>

#include "ui/Windows.h"
#include "ui_RecordWindowController.h"

namespace tessary {
namespace {

constexpr std::chrono::milliseconds kTick(100);

}  // namespace

RecordWindowController::RecordWindowController(QWidget* parent, Preferences& preferences)
    : Dialog(parent),
      ui_(std::make_unique<Ui::RecordWindowController>()),
      preferences_(preferences) {
  ui_->setupUi(this);
  connect(ui_->limitFld, &QComboBox::activated, this, &RecordWindowController::limitBtnClicked);
  connect(ui_->startBtn, &QPushButton::clicked, this, &RecordWindowController::startBtnClicked);
  connect(ui_->closeBtn, &QPushButton::clicked, this, &RecordWindowController::closeBtnClicked);
  connect(&timer, &QTimer::timeout, this, &RecordWindowController::timerTriggered);
  connect(this, &QDialog::finished, &timer, &QTimer::stop);
  timer.setTimerType(Qt::PreciseTimer);
  windowDidLoad();
}

RecordWindowController::~RecordWindowController() = default;

void RecordWindowController::windowDidLoad() {
  for (const std::string_view title : s_limitStrings)
    ui_->limitFld->addItem(QString::fromUtf8(title.data(), qsizetype(title.size())));
  // A stored limit that is not in the table stays in force until the user chooses one.
  ui_->limitFld->setCurrentIndex(int(recordLimitIndex(preferences_.maxRecord)));
  ui_->limitFld->setFocus();
  // At the top, as a sheet: the middle of the picture is what is being recorded.
  placeBelowTitle(*this, *parentWidget());
}

void RecordWindowController::limitBtnClicked() {
  const int index = ui_->limitFld->currentIndex();
  if (index < 0 || size_t(index) >= s_limitSeconds.size()) return;
  const int32_t seconds = s_limitSeconds[size_t(index)];
  if (seconds == preferences_.maxRecord) return;
  preferences_.maxRecord = seconds;
  if (_delegate) _delegate->recordLimitDidChange();
  preferences_.save();
}

void RecordWindowController::startBtnClicked() {
  if (std::exchange(started, true)) return;
  ui_->closeBtn->setText(QStringLiteral("Stop"));
  ui_->closeBtn->setAccessibleName(QStringLiteral("Stop"));
  ui_->closeBtn->setDefault(true);
  ui_->closeBtn->setFocus();
  ui_->startBtn->setEnabled(false);
  timer.start(kTick);
  if (_delegate) _delegate->startRecord(*this);
}

void RecordWindowController::closeBtnClicked() { done(started ? 1 : 0); }

void RecordWindowController::timerTriggered() {
  switch (clock_->tick(preferences_.maxRecord)) {
    case RecordClock::Tick::AtRest: break;
    case RecordClock::Tick::Counted:
      ui_->secondsFld->setText(QString::fromStdString(clock_->fmtSeconds()));
      break;
    case RecordClock::Tick::LimitPassed: done(1); break;
  }
}

}  // namespace tessary
