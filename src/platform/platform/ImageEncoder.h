#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/PixelBuffer.h"

namespace tessary {

/// Turns a picture into the bytes of an image file, without alpha. Any thread, one call at a time.
class ImageEncoder {
 public:
  virtual ~ImageEncoder() = default;
  /// Empty when the picture can't be encoded. `xmp` is an XMP packet (UTF-8, without a zero) that
  /// goes into the file, an empty one for none; one that is longer than `xmpRoom` is left out.
  virtual std::vector<uint8_t> encode(const PixelBuffer& picture, const std::string& xmp) = 0;
  std::vector<uint8_t> encode(const PixelBuffer& picture) { return encode(picture, {}); }
  /// How many bytes an XMP packet can have in such a file.
  virtual size_t xmpRoom() const = 0;
};

}  // namespace tessary
