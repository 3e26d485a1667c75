#include "jpeg/JpegFrameDecoder.h"

#include <string_view>

#include "base/Number.h"
#include "jpeg/TurboJpegHandle.h"

namespace tessary {
namespace {

/// What some cameras leave between the coded picture and its end marker, at the most. More than
/// that is the rest of a picture whose decoding went astray.
constexpr int32_t kPaddingAllowed = 16;

constexpr std::string_view kDamage = "Corrupt JPEG data: ";
constexpr std::string_view kEarlyEnd = "Premature end";
constexpr std::string_view kBytesBeforeEnd = " extraneous bytes before marker 0xd9";

/// Whether there can be a picture of `size` in so few bytes: each block of 8 by 8 pixels takes at
/// least 2 bits. Keeps a lying header from making us ask for memory.
bool canHold(size_t byteCount, TextureSize size) {
  const uint64_t blocks = (uint64_t(size.width) + 7) / 8 * ((uint64_t(size.height) + 7) / 8);
  return byteCount >= blocks / 4;
}

bool isPaddingBeforeEnd(std::string_view warning) {
  if (!warning.starts_with(kDamage) || !warning.ends_with(kBytesBeforeEnd)) return false;
  return intValue(warning.substr(kDamage.size())) <= kPaddingAllowed;
}

bool isAboutHeader(std::string_view warning) {
  return !warning.starts_with(kDamage) && !warning.starts_with(kEarlyEnd);
}

}  // namespace

std::shared_ptr<PixelBuffer> JpegFrameDecoder::decode(std::span<const uint8_t> bytes,
                                                      TextureSize announced, size_t /*bytesPerRow*/,
                                                      PixelBufferPool& pool) {
  const std::optional<JpegFrameHeader> header = readJpegFrameHeader(bytes);
  if (!header || header->size != announced || announced.width <= 0 || announced.height <= 0 ||
      !canHold(bytes.size(), announced)) {
    return nullptr;
  }
  std::shared_ptr<PixelBuffer> picture = pool.take(announced);
  Outcome outcome = decompress(bytes, *picture);
  if (outcome == Outcome::oddHeader) {
    copyWithPlainHeader(bytes, plain_);
    outcome = decompress(plain_, *picture);
  }
  return outcome == Outcome::good ? picture : nullptr;
}

JpegFrameDecoder::Outcome JpegFrameDecoder::decompress(std::span<const uint8_t> bytes,
                                                       PixelBuffer& picture) {
  // The library makes every alpha byte 255, and the last line comes last. It stops at its first
  // complaint; if this byte has changed by then, all lines were decoded before it.
  uint8_t& lastAlpha = picture.data()[picture.byteCount() - 1];
  lastAlpha = 0;
  const TextureSize size = picture.size();
  // A handle keeps every table that it has read, and a frame that lacks one would take it from
  // there. A new one costs microseconds, and falls back to the standard Huffman tables.
  const TurboJpegHandle handle(tjInitDecompress());
  if (!handle) return Outcome::bad;
  const int result =
      tjDecompress2(handle.get(), bytes.data(), bytes.size(), picture.data(), size.width,
                    int(picture.bytesPerRow()), size.height, TJPF_BGRA, TJFLAG_STOPONWARNING);
  const bool allLines = lastAlpha == 255;
  if (result == 0) return allLines ? Outcome::good : Outcome::bad;
  if (tjGetErrorCode(handle.get()) != TJERR_WARNING) return Outcome::bad;
  const std::string_view warning = tjGetErrorStr2(handle.get());
  if (allLines) return isPaddingBeforeEnd(warning) ? Outcome::good : Outcome::bad;
  return isAboutHeader(warning) ? Outcome::oddHeader : Outcome::bad;
}

}  // namespace tessary
