#pragma once

#include <chrono>
#include <cstdint>

#include "base/Geometry.h"
#include "linux/V4l2CaptureDevice.h"
#include "linux/VideoNode.h"

namespace tessary {

/// What the driver made of a wish: it may answer with another size or rate.
struct AgreedVideo {
  uint32_t pixelFormat = 0;
  TextureSize size;
  size_t bytesPerRow = 0;
  /// Fewest bytes of a whole frame; 1 for a compressed one.
  size_t fewestBytes = 1;
  /// 0 if the driver doesn't tell.
  std::chrono::milliseconds frameInterval{0};
};

/// Sets size, format and rate. The stream must be off and without buffers. 0, or the errno.
int negotiateVideo(const VideoNode& node, const WantedVideo& wanted, AgreedVideo& agreed);

}  // namespace tessary
