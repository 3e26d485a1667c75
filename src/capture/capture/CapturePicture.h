#pragma once

#include <cstdint>

#include "base/SampleBuffer.h"

namespace tessary {

/// The picture, as the capture controller knows it. Main thread, except where told.
class CapturePicture {
 public:
  virtual ~CapturePicture() = default;

  /// The next frame. On the frame queue; it must not wait for the main thread, which waits for it
  /// when a session stops.
  virtual void updateVideoFrame(const SampleBuffer& frame) = 0;
  /// Forgets the picture. No frame may be on its way any more.
  virtual void stopPreview() = 0;
  /// Puts the calibration line away.
  virtual void stopCalibration() = 0;
  /// Chooses a reticle, 0 for none.
  virtual void changeScale(int32_t scaleType) = 0;
  /// Puts a calibration into force; below 0 pixels per unit for none. Returns to 100 percent.
  virtual void setCalibration(float pixelsPerUnit, int32_t unit) = 0;
  virtual void removeAllShapes() = 0;
};

}  // namespace tessary
