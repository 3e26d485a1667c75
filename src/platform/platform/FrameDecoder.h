#pragma once

#include <functional>
#include <memory>
#include <span>

#include "base/PixelBuffer.h"

namespace tessary {

/// Turns the bytes that a camera sent for one frame into a picture. One decoder serves one stream,
/// on that stream's thread.
class FrameDecoder {
 public:
  virtual ~FrameDecoder() = default;
  /// Decodes into a buffer of `pool`. Null for a frame that is damaged, too short, or of another
  /// size than `announced`; never a half picture.
  virtual std::shared_ptr<PixelBuffer> decode(std::span<const uint8_t> bytes, TextureSize announced,
                                              size_t bytesPerRow, PixelBufferPool& pool) = 0;
};

/// Makes a decoder for a media subtype, or null for one that can't be decoded.
using FrameDecoderFactory = std::function<std::unique_ptr<FrameDecoder>(uint32_t mediaSubType)>;

}  // namespace tessary
