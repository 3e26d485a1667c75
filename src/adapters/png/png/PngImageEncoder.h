#pragma once

#include "platform/ImageEncoder.h"

namespace tessary {

/// Makes PNG files of 8 bit RGB, fast rather than small: a camera's grain does not compress.
/// Several threads share the work; how many makes no difference to the file.
class PngImageEncoder final : public ImageEncoder {
 public:
  /// With a thread for each core, four at the most.
  PngImageEncoder();
  explicit PngImageEncoder(unsigned threads);

  using ImageEncoder::encode;
  std::vector<uint8_t> encode(const PixelBuffer& picture, const std::string& xmp) override;
  size_t xmpRoom() const override;

 private:
  const unsigned threads_;
};

}  // namespace tessary
