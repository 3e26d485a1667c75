#pragma once

#include <cstdint>

namespace tessary {

/// The dialogs that depend on the microscope, as the capture controller knows them. Main thread.
class CaptureDialogs {
 public:
  virtual ~CaptureDialogs() = default;

  /// Closes the calibration window and forgets it. Whether it was up.
  virtual bool closeCalibrationWindow() = 0;
  /// Closes the text input sheet, if it is up, and forgets it.
  virtual void closeInputTextWindow() = 0;
  virtual bool isMicroscopeWindowUp() const = 0;
  /// Reloads the lists of the microscope sheet, which is up.
  virtual void refreshMicroscopes() = 0;
  /// Ends the microscope sheet, which is up.
  virtual void endMicroscopeSheet(int32_t returnCode) = 0;
};

}  // namespace tessary
