#pragma once

#include <cstdint>
#include <vector>

#include "base/PixelBuffer.h"

namespace tessary {

/// Turns a picture into the bytes of an image file, without alpha. Any thread, one call at a time.
class ImageEncoder {
 public:
  virtual ~ImageEncoder() = default;
  /// Empty when the picture can't be encoded.
  virtual std::vector<uint8_t> encode(const PixelBuffer& picture) = 0;
};

}  // namespace tessary
