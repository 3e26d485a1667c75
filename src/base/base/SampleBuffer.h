#pragma once

#include <memory>

#include "base/PixelBuffer.h"
#include "base/Time.h"

namespace tessary {

/// One frame of a camera: its picture and the time at which the camera took it. Wherever frames
/// wait to be shown, the newest wins: the user is focusing, so a late one misleads.
struct SampleBuffer {
  std::shared_ptr<const PixelBuffer> imageBuffer;
  MediaTime presentationTimeStamp{0};
};

}  // namespace tessary
