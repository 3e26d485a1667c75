#pragma once

#include <memory>

#include <QtCore/QTimer>

#include "dialogs/RecordClock.h"
#include "settings/Preferences.h"
#include "ui/Dialog.h"

namespace Ui {
class RecordWindowController;
}

namespace tessary {

class RecordWindowController;

/// Told that Start was pressed, and of another limit.
class RecordWindowDelegate {
 public:
  virtual ~RecordWindowDelegate() = default;
  /// Begins the recording and makes `sender.statusDelegate()` its delegate.
  virtual void startRecord(RecordWindowController& sender) = 0;
  /// The limit in the preferences has changed, maybe during the recording.
  virtual void recordLimitDidChange() = 0;
};

/// The sheet that starts and stops a movie, shows its time and enforces its limit. It ends with 1
/// if a recording was started and has to be finished, with 0 if there is nothing to finish; Escape
/// and the title bar end it like its own button. One sheet is for one recording.
class RecordWindowController final : public Dialog {
  Q_OBJECT
 public:
  /// Stands on `parent`. Reads and stores the limit in `preferences`, which must outlive it.
  RecordWindowController(QWidget* parent, Preferences& preferences);
  ~RecordWindowController() override;

  void setDelegate(RecordWindowDelegate* delegate) { _delegate = delegate; }
  /// What the recording tells its status to. It may outlive the sheet.
  std::shared_ptr<PreviewViewRecordDelegate> statusDelegate() const { return clock_; }

  void reject() override { closeBtnClicked(); }

 private:
  void windowDidLoad();
  void limitBtnClicked();
  void startBtnClicked();
  void closeBtnClicked();
  void timerTriggered();

  std::unique_ptr<Ui::RecordWindowController> ui_;
  Preferences& preferences_;
  RecordWindowDelegate* _delegate = nullptr;
  bool started = false;  // Start has been pressed
  std::shared_ptr<RecordClock> clock_ = std::make_shared<RecordClock>();
  QTimer timer{this};
};

}  // namespace tessary
