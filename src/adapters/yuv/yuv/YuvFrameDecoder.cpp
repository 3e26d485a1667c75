#include "yuv/YuvFrameDecoder.h"

#include <limits>

#include <libyuv.h>

#include "base/FourCharCode.h"

namespace tessary {
namespace {

/// What drivers can announce at the most; keeps all products below in range.
constexpr int32_t kLargestSide = 32768;

/// Bytes that the pixels of one row take. Two neighbours share their colour, so that an odd row
/// ends with a pair of which only the first is shown.
size_t packedRow(uint32_t mediaSubType, int32_t width) {
  const size_t pairs = (size_t(width) + 1) / 2;
  return mediaSubType == kMediaSubTypeNV12 ? pairs * 2 : pairs * 4;
}

size_t rowCount(uint32_t mediaSubType, int32_t height) {
  const auto rows = size_t(height);
  return mediaSubType == kMediaSubTypeNV12 ? rows + (rows + 1) / 2 : rows;
}

}  // namespace

std::unique_ptr<FrameDecoder> YuvFrameDecoder::make(uint32_t mediaSubType) {
  switch (mediaSubType) {
    case kMediaSubTypeYUYV:
    case kMediaSubTypeUYVY:
    case kMediaSubTypeNV12: return std::unique_ptr<FrameDecoder>(new YuvFrameDecoder(mediaSubType));
    default: return nullptr;
  }
}

std::shared_ptr<PixelBuffer> YuvFrameDecoder::decode(std::span<const uint8_t> bytes,
                                                     TextureSize announced, size_t bytesPerRow,
                                                     PixelBufferPool& pool) {
  const auto [width, height] = announced;
  if (width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) return nullptr;
  const size_t row = packedRow(mediaSubType_, width);
  if (bytesPerRow == 0) bytesPerRow = row;
  if (bytesPerRow < row || bytesPerRow > size_t(std::numeric_limits<int>::max())) return nullptr;
  // The last row may end with its last pixel.
  const size_t needed = bytesPerRow * (rowCount(mediaSubType_, height) - 1) + row;
  if (bytes.size() < needed) return nullptr;

  std::shared_ptr<PixelBuffer> picture = pool.take(announced);
  const uint8_t* source = bytes.data();
  const int stride = int(bytesPerRow);
  uint8_t* target = picture->data();
  const int targetStride = int(picture->bytesPerRow());
  int result = -1;
  // libyuv names a pixel by its value as a little-endian number: its ARGB is our blue, green, red,
  // alpha.
  switch (mediaSubType_) {
    case kMediaSubTypeYUYV:
      result = libyuv::YUY2ToARGB(source, stride, target, targetStride, width, height);
      break;
    case kMediaSubTypeUYVY:
      result = libyuv::UYVYToARGB(source, stride, target, targetStride, width, height);
      break;
    case kMediaSubTypeNV12:
      result = libyuv::NV12ToARGB(source, stride, source + bytesPerRow * size_t(height), stride,
                                  target, targetStride, width, height);
      break;
    default: break;
  }
  return result == 0 ? picture : nullptr;
}

}  // namespace tessary
