#include "ffmpeg/Boxes.h"

#include <algorithm>

namespace tessary::box {
namespace {

template <typename Out>
void putBigEndian(Out out, uint64_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) *out++ = uint8_t(value >> (8 * i));
}

uint64_t bigEndian(std::span<const uint8_t> bytes) {
  uint64_t value = 0;
  for (const uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

bool hasType(std::span<const uint8_t> box, std::string_view type) {
  return std::equal(type.begin(), type.end(), box.begin() + 4,
                    [](char a, uint8_t b) { return uint8_t(a) == b; });
}

}  // namespace

std::array<uint8_t, kHeaderSize> header(uint32_t size, std::string_view type) {
  std::array<uint8_t, kHeaderSize> bytes{};
  putBigEndian(bytes.begin(), size, 4);
  std::copy_n(type.begin(), 4, bytes.begin() + 4);
  return bytes;
}

std::array<uint8_t, kLargeHeaderSize> largeHeader(uint64_t size, std::string_view type) {
  std::array<uint8_t, kLargeHeaderSize> bytes{};
  std::ranges::copy(header(1, type), bytes.begin());
  putBigEndian(bytes.begin() + 8, size, 8);
  return bytes;
}

size_t find(std::span<const uint8_t> bytes, std::string_view type) {
  size_t at = 0;
  while (at + kHeaderSize <= bytes.size()) {
    if (hasType(bytes.subspan(at), type)) return at;
    uint64_t size = bigEndian(bytes.subspan(at, 4));
    if (size == 1 && at + kLargeHeaderSize <= bytes.size())
      size = bigEndian(bytes.subspan(at + 8, 8));
    if (size < kHeaderSize || size > bytes.size() - at) break;
    at += size_t(size);
  }
  return bytes.size();
}

size_t payloadOf(std::span<const uint8_t> bytes, std::string_view type) {
  const size_t at = find(bytes, type);
  if (at == bytes.size()) return 0;
  return at + (bigEndian(bytes.subspan(at, 4)) == 1 ? kLargeHeaderSize : kHeaderSize);
}

}  // namespace tessary::box
