#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include "base/Clock.h"
#include "settings/Preferences.h"
#include "ui/CalibrationListWindowController.h"
#include "ui/CalibrationWindowController.h"
#include "view/PreviewView.h"

namespace tessary {

/// How a calibration comes into force: from the list of ten it is applied, or taken anew with the
/// calibration line over the picture and the window that asks for the line's real length.
class CalibrationFlow final : public QObject,
                              private CalibrationListDelegate,
                              private CalibrationDelegate {
 public:
  /// All must outlive it; `window` carries the sheet.
  CalibrationFlow(QWidget& window, PreviewView& previewView, Preferences& preferences,
                  Clock& clock);

  /// Shows the list, opened at the slot last used.
  void calibrationToolbarItemDidClick();
  bool isCalibrationWindowUp() const { return bool(calibrationWndController); }
  /// Closes the calibration window without a word to anyone. Whether it was up.
  bool closeCalibrationWindow();

 private:
  void showCalibrationListWindow(int32_t row);
  void showCalibrationWindow(int32_t slot);
  void calibrationListCompleted(int32_t slot, bool calibrateOrApply) override;
  void calibrationCompleted(int32_t slot, double length, int32_t unit) override;
  /// Lets the calibration window go; it closes by itself or is closed by the caller.
  CalibrationWindowController* releaseCalibrationWindow();

  QWidget& window_;
  PreviewView& previewView_;
  Preferences& preferences_;
  Clock& clock_;
  // A dialog is up while its pointer is set.
  QPointer<CalibrationListWindowController> calibrationListWndController;
  QPointer<CalibrationWindowController> calibrationWndController;
};

}  // namespace tessary
