#pragma once

#include <cstdint>

#include "base/SampleBuffer.h"

namespace tessary {

/// What the capture controller asks of the window around it: the picture, and the dialogs that
/// depend on the microscope. Main thread, except where told.
class CaptureHost {
 public:
  virtual ~CaptureHost() = default;

  // The picture.

  /// The next frame. On the frame queue; it must not wait for the main thread, which waits for it
  /// when a session stops.
  virtual void updateVideoFrame(const SampleBuffer& sampleBuffer) = 0;
  /// Forgets the picture.
  virtual void stopPreview() = 0;
  /// Puts the calibration line away.
  virtual void stopCalibration() = 0;
  /// Chooses a reticle, 0 for none.
  virtual void changeScale(int32_t type) = 0;
  /// Below 0 pixels per unit means uncalibrated.
  virtual void setCalibration(float pixelsPerUnit, int32_t unit) = 0;
  virtual void removeAllShapes() = 0;

  // The dialogs.

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
