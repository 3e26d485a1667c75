#pragma once

#include "platform/ImageEncoder.h"

namespace tessary {

/// Makes JPEG files of quality 80. Colour is kept at full resolution: with chroma subsampling,
/// coloured lines and text one pixel wide would fade into the picture around them.
class JpegImageEncoder final : public ImageEncoder {
 public:
  JpegImageEncoder();
  ~JpegImageEncoder() override;
  JpegImageEncoder(const JpegImageEncoder&) = delete;
  JpegImageEncoder& operator=(const JpegImageEncoder&) = delete;

  std::vector<uint8_t> encode(const PixelBuffer& picture) override;

 private:
  void* handle_;  // TurboJPEG's
};

}  // namespace tessary
