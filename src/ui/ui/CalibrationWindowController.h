#pragma once

#include <cstdint>
#include <memory>

#include "settings/Preferences.h"
#include "ui/CalibrationHelpViewController.h"
#include "ui/Dialog.h"

namespace Ui {
class CalibrationWindowController;
}

namespace tessary {

/// Told how long the calibration line is.
class CalibrationDelegate {
 public:
  virtual ~CalibrationDelegate() = default;
  /// `length` in `unit` (one of the unit codes); 0 for Cancel, and negative or 0 for a text that is
  /// no length. The window is still up and closes right after, so it may not be destroyed here.
  virtual void calibrationCompleted(int32_t slot, double length, int32_t unit) = 0;
};

/// The floating window in which the user types the real length of the line laid over the picture.
/// Escape and the title bar are its Cancel. `done` closes it without a word to the delegate.
class CalibrationWindowController final : public Dialog {
  Q_OBJECT
 public:
  /// Stays above `parent`, which can be used meanwhile. Names come from `preferences`, which must
  /// outlive it.
  CalibrationWindowController(QWidget* parent, const Preferences& preferences);
  ~CalibrationWindowController() override;

  void setDelegate(CalibrationDelegate* delegate) { _delegate = delegate; }
  int32_t editingItem() const { return _editingItem; }
  /// The slot to calibrate; its name, if it has one, goes into the title.
  void setEditingItem(int32_t slot);
  /// As of the last OK.
  double length() const { return _length; }
  int32_t unit() const { return _unit; }

  /// Places the window relative to the main window.
  void setParentWindow(const QWidget& parent);
  void showWindow();

  void reject() override { cancelClicked(); }

 private:
  void okClicked();
  void cancelClicked();
  void helpClicked();
  /// Logs the resolution of the window's screen.
  void getScreenPPI() const;

  std::unique_ptr<Ui::CalibrationWindowController> ui_;
  const Preferences& preferences_;
  CalibrationDelegate* _delegate = nullptr;
  int32_t _editingItem = -1;
  int32_t _unit = kUnitMillimetre;
  double _length = 0.0;
  std::unique_ptr<CalibrationHelpViewController> _calibrationHelpController;
};

}  // namespace tessary
