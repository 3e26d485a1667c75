#include "ui/CalibrationFlow.h"

#include "base/ScaleType.h"
#include "dialogs/CalibrationTable.h"

namespace tessary {

CalibrationFlow::CalibrationFlow(QWidget& window, PreviewView& previewView,
                                 Preferences& preferences, Clock& clock)
    : window_(window), previewView_(previewView), preferences_(preferences), clock_(clock) {}

void CalibrationFlow::calibrationToolbarItemDidClick() {
  const int32_t slot = preferences_.calibration;
  showCalibrationListWindow(isCalibrationSlot(slot) ? slot : 0);
}

void CalibrationFlow::showCalibrationListWindow(int32_t row) {
  if (calibrationListWndController) return;
  auto* sheet = new CalibrationListWindowController(&window_, preferences_,
                                                    [this] { return previewView_.slotInForce(); });
  sheet->setDelegate(this);
  sheet->setEditingItem(row);
  openSheet(*this, calibrationListWndController, *sheet);
}

void CalibrationFlow::calibrationListCompleted(int32_t slot, bool calibrateOrApply) {
  if (!isCalibrationSlot(slot)) return;
  if (calibrateOrApply) {
    showCalibrationWindow(slot);
    return;
  }
  // An empty slot is meant to set -1: back to no calibration.
  const CalibrationRecord& record = preferences_.calibrations[size_t(slot)];
  previewView_.setCalibration(float(record.ppu), record.unit);
  preferences_.calibration = slot;
  preferences_.save();
}

void CalibrationFlow::showCalibrationWindow(int32_t slot) {
  previewView_.startCalibration();
  if (!calibrationWndController)
    calibrationWndController = new CalibrationWindowController(&window_, preferences_);
  calibrationWndController->setDelegate(this);
  calibrationWndController->setEditingItem(slot);
  calibrationWndController->setParentWindow(window_);
  calibrationWndController->showWindow();
}

void CalibrationFlow::calibrationCompleted(int32_t slot, double length, int32_t unit) {
  previewView_.stopCalibration();
  releaseCalibrationWindow();
  // Not above 0, so that what is no number ends here too.
  if (!(length > 0) || !isCalibrationSlot(slot)) return;
  const int32_t pixels = previewView_.calibrationLineLen();
  const double ppu = pixels / length;
  previewView_.setCalibration(float(ppu), unit);
  previewView_.changeScale(kScaleCrosshair);
  CalibrationRecord& record = preferences_.calibrations[size_t(slot)];
  record.unit = unit;
  record.pixels = pixels;
  record.length = length;
  record.ppu = ppu;
  const CalendarTime today = clock_.localTime();
  record.date = today.year * 10000 + today.month * 100 + today.day;
  record.resolution = int32_t(uint32_t(previewView_.bitmapWidth()) +
                              uint32_t(previewView_.bitmapHeight()) * 65536U);
  preferences_.calibration = slot;
  preferences_.save();
}

bool CalibrationFlow::closeCalibrationWindow() {
  CalibrationWindowController* closing = releaseCalibrationWindow();
  if (closing) closing->done(0);
  return closing != nullptr;
}

CalibrationWindowController* CalibrationFlow::releaseCalibrationWindow() {
  CalibrationWindowController* released = calibrationWndController;
  calibrationWndController.clear();
  if (released) released->deleteLater();
  return released;
}

}  // namespace tessary
