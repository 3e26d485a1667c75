#pragma once

#include "jpeg/TurboJpegHandle.h"
#include "platform/ImageEncoder.h"

namespace tessary {

/// Makes JPEG files.
class JpegImageEncoder final : public ImageEncoder {
 public:
  struct Settings {
    int quality;        ///< 1 to 100.
    bool halvesColour;  ///< Whether two neighbours in a row share their colour.
  };
  /// Colour is kept at full resolution: otherwise coloured lines and text one pixel wide would fade
  /// into the picture around them.
  static constexpr Settings kStill{80, false};
  /// What USB cameras send.
  static constexpr Settings kCameraFrame{85, true};

  explicit JpegImageEncoder(Settings settings = kStill);

  using ImageEncoder::encode;
  std::vector<uint8_t> encode(const PixelBuffer& picture, const std::string& xmp) override;
  size_t xmpRoom() const override;

 private:
  const Settings settings_;
  TurboJpegHandle compressor_;
};

}  // namespace tessary
