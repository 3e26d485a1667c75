#include "jpeg/JpegImageEncoder.h"

#include <memory>

namespace tessary {
namespace {

constexpr int kLargestSide = 65500;  // of a JPEG file, as the library sets it

}  // namespace

JpegImageEncoder::JpegImageEncoder(Settings settings)
    : settings_(settings), compressor_(tjInitCompress()) {}

std::vector<uint8_t> JpegImageEncoder::encode(const PixelBuffer& picture) {
  const auto [width, height] = picture.size();
  if (!compressor_ || width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) {
    return {};
  }
  // Room for the worst case, so that the library never moves what it has; memory is taken only for
  // what is used of it.
  const int subsampling = settings_.halvesColour ? TJSAMP_422 : TJSAMP_444;
  unsigned long byteCount = tjBufSize(width, height, subsampling);
  const auto bytes = std::make_unique_for_overwrite<uint8_t[]>(byteCount);
  unsigned char* target = bytes.get();
  const int result =
      tjCompress2(compressor_.get(), picture.data(), width, int(picture.bytesPerRow()), height,
                  TJPF_BGRX, &target, &byteCount, subsampling, settings_.quality, TJFLAG_NOREALLOC);
  if (result != 0) return {};
  return {target, target + byteCount};
}

}  // namespace tessary
