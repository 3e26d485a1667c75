#include "jpeg/JpegImageEncoder.h"

#include <memory>

#include <turbojpeg.h>

namespace tessary {
namespace {

constexpr int kQuality = 80;
constexpr int kLargestSide = 65500;  // of a JPEG file, as the library sets it

}  // namespace

JpegImageEncoder::JpegImageEncoder() : handle_(tjInitCompress()) {}

JpegImageEncoder::~JpegImageEncoder() {
  if (handle_) tjDestroy(handle_);
}

std::vector<uint8_t> JpegImageEncoder::encode(const PixelBuffer& picture) {
  const auto [width, height] = picture.size();
  if (!handle_ || width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) {
    return {};
  }
  // Room for the worst case, so that the library never moves what it has; memory is taken only for
  // what is used of it.
  unsigned long byteCount = tjBufSize(width, height, TJSAMP_444);
  const auto bytes = std::make_unique_for_overwrite<uint8_t[]>(byteCount);
  unsigned char* target = bytes.get();
  const int result =
      tjCompress2(handle_, picture.data(), width, int(picture.bytesPerRow()), height, TJPF_BGRX,
                  &target, &byteCount, TJSAMP_444, kQuality, TJFLAG_NOREALLOC);
  if (result != 0) return {};
  return {target, target + byteCount};
}

}  // namespace tessary
