#include "jpeg/JpegImageEncoder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string_view>

namespace tessary {
namespace {

constexpr int kLargestSide = 65500;  // of a JPEG file, as the library sets it

constexpr size_t kMarker = 2;
constexpr size_t kLength = 2;  // counts itself
constexpr uint8_t kApp0 = 0xE0;
constexpr uint8_t kApp1 = 0xE1;
constexpr std::string_view kXmpName("http://ns.adobe.com/xap/1.0/\0", 29);
constexpr size_t kMostXmp = 65502;  // what readers expect at most
static_assert(kLength + kXmpName.size() + kMostXmp <= 0xFFFF);

/// Where the first segment of the file's own begins: behind the start and the JFIF header.
size_t endOfHeader(std::span<const uint8_t> file) {
  if (file.size() < 2 * kMarker + kLength || file[kMarker + 1] != kApp0) return kMarker;
  return 2 * kMarker + size_t(file[4]) * 256 + file[5];
}

/// `file` with the packet in it.
std::vector<uint8_t> withXmp(std::span<const uint8_t> file, const std::string& xmp) {
  const size_t length = kLength + kXmpName.size() + xmp.size();
  const std::array<uint8_t, kMarker + kLength> head{0xFF, kApp1, uint8_t(length >> 8),
                                                    uint8_t(length)};
  const size_t place = std::min(endOfHeader(file), file.size());
  std::vector<uint8_t> result;
  result.reserve(file.size() + kMarker + length);
  const auto append = [&result](const auto& bytes) {
    result.insert(result.end(), bytes.begin(), bytes.end());
  };
  append(file.first(place));
  append(head);
  append(kXmpName);
  append(xmp);
  append(file.subspan(place));
  return result;
}

}  // namespace

JpegImageEncoder::JpegImageEncoder(Settings settings)
    : settings_(settings), compressor_(tjInitCompress()) {}

size_t JpegImageEncoder::xmpRoom() const { return kMostXmp; }

std::vector<uint8_t> JpegImageEncoder::encode(const PixelBuffer& picture, const std::string& xmp) {
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
  if (xmp.empty() || xmp.size() > kMostXmp) return {target, target + byteCount};
  return withXmp({target, byteCount}, xmp);
}

}  // namespace tessary
