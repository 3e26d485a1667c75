#include "ui/FileSavedWindowController.h"

#include <chrono>

#include <QtGui/QCloseEvent>

#include "dialogs/Placement.h"
#include "ui/Windows.h"
#include "ui_FileSavedWindowController.h"

namespace tessary {
namespace {

constexpr std::chrono::milliseconds kTick(100);

}  // namespace

FileSavedWindowController::FileSavedWindowController(QWidget* parent)
    : QWidget(parent, noticeFlags()), ui_(std::make_unique<Ui::FileSavedWindowController>()) {
  ui_->setupUi(this);
  setAttribute(Qt::WA_ShowWithoutActivating);
  connect(&timer, &QTimer::timeout, this, &FileSavedWindowController::timerTriggered);
  timer.setTimerType(Qt::PreciseTimer);
}

FileSavedWindowController::~FileSavedWindowController() = default;

void FileSavedWindowController::setParentWindow(const QWidget& parent) {
  parentWnd_ = &parent;
  placeIn(*this, parent, kNoticeBelowTop);
}

void FileSavedWindowController::setFileName(const QString& name) {
  clock_.restart();
  ui_->fileNameFld->setText(name);
  // The name decides how wide the notice is, at once.
  ui_->frameLayout->activate();
  if (parentWnd_) placeIn(*this, *parentWnd_, kNoticeBelowTop);
  if (!timer.isActive()) timer.start(kTick);
}

void FileSavedWindowController::showWindow() {
  show();
  raise();
}

void FileSavedWindowController::timerTriggered() {
  if (clock_.tick()) close();
}

void FileSavedWindowController::windowWillClose() {
  clock_.stop();
  timer.stop();
}

void FileSavedWindowController::closeEvent(QCloseEvent* event) {
  windowWillClose();
  event->accept();
}

void FileSavedWindowController::mousePressEvent(QMouseEvent* /*event*/) { close(); }

}  // namespace tessary
