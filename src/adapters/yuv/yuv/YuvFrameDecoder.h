#pragma once

#include <memory>

#include "platform/FrameDecoder.h"

namespace tessary {

/// Converts the uncompressed pictures of cameras: 'yuvs' (Y0 Cb Y1 Cr), '2vuy' (Cb Y0 Cr Y1) and
/// '420v' (a plane of Y, then one of Cb Cr pairs for every two by two pixels). Values are in video
/// range, by BT.601. A `bytesPerRow` of 0 means that there is no gap between rows; it is that of
/// both planes of '420v'. Bytes behind the picture are ignored.
class YuvFrameDecoder final : public FrameDecoder {
 public:
  /// Null for any other subtype.
  static std::unique_ptr<FrameDecoder> make(uint32_t mediaSubType);

  std::shared_ptr<PixelBuffer> decode(std::span<const uint8_t> bytes, TextureSize announced,
                                      size_t bytesPerRow, PixelBufferPool& pool) override;

 private:
  explicit YuvFrameDecoder(uint32_t mediaSubType) : mediaSubType_(mediaSubType) {}

  const uint32_t mediaSubType_;
};

}  // namespace tessary
