#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "jpeg/JpegFrameHeader.h"
#include "platform/FrameDecoder.h"

namespace tessary {

/// Decodes 'dmb1', the motion JPEG of USB cameras: any chroma subsampling, with or without Huffman
/// tables, with or without padding behind the picture.
///
/// A frame is good when every line of it was decoded without a complaint and its end was found. The
/// few bytes that some cameras leave between the coded picture and its end marker are no damage,
/// nor are odd values in parts of the header that have no say in the picture. A frame is decoded
/// with its own tables alone, or the standard Huffman tables in place of those that it leaves out;
/// nothing of an earlier one is in the picture.
class JpegFrameDecoder final : public FrameDecoder {
 public:
  std::shared_ptr<PixelBuffer> decode(std::span<const uint8_t> bytes, TextureSize announced,
                                      size_t bytesPerRow, PixelBufferPool& pool) override;

 private:
  enum class Outcome { good, oddHeader, bad };

  static Outcome decompress(std::span<const uint8_t> bytes, PixelBuffer& picture);

  std::vector<uint8_t> plain_;  // the last frame that had an odd header
};

}  // namespace tessary
