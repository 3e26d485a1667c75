#pragma once
// Frames as cameras send them, made with TurboJPEG, and ways to take them apart.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <vector>

#include <turbojpeg.h>

#include "base/Geometry.h"

namespace tessary::test {

using Bytes = std::vector<uint8_t>;

/// A picture with colour, edges and some texture, BGRA.
inline Bytes sceneOf(TextureSize size) {
  Bytes pixels;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const bool bar = x / 8 % 4 == 0;
      pixels.push_back(uint8_t(bar ? 20 : 120 + 60 * std::sin(x / 9.0)));
      pixels.push_back(uint8_t(bar ? 30 : 130 + 50 * std::cos(y / 7.0)));
      pixels.push_back(uint8_t(150 + (x * 7 + y * 13) % 11));
      pixels.push_back(255);
    }
  }
  return pixels;
}

inline Bytes encode(TextureSize size, int subsampling, int flags = 0) {
  const Bytes pixels = sceneOf(size);
  const std::unique_ptr<void, int (*)(void*)> handle(tjInitCompress(), tjDestroy);
  uint8_t* compressed = nullptr;
  unsigned long length = 0;
  if (tjCompress2(handle.get(), pixels.data(), size.width, 0, size.height, TJPF_BGRA, &compressed,
                  &length, subsampling, 85, flags) != 0) {
    throw std::runtime_error(tjGetErrorStr2(handle.get()));
  }
  Bytes bytes(compressed, compressed + length);
  tjFree(compressed);
  return bytes;
}

struct Found {
  size_t position;  // of the 0xFF
  size_t size;      // with marker and length
};

/// All segments with `marker` before the scan's data, the scan's header among them.
inline std::vector<Found> segments(const Bytes& frame, uint8_t marker) {
  std::vector<Found> found;
  for (size_t at = 2; at + 4 <= frame.size();) {
    const size_t size = 2 + (size_t(frame[at + 2]) << 8 | frame[at + 3]);
    if (frame[at + 1] == marker) found.push_back({at, size});
    if (frame[at + 1] == 0xDA) break;
    at += size;
  }
  return found;
}

inline Bytes without(Bytes frame, uint8_t marker) {
  std::vector<Found> found = segments(frame, marker);
  std::reverse(found.begin(), found.end());
  for (const Found& segment : found) {
    const auto start = frame.begin() + ptrdiff_t(segment.position);
    frame.erase(start, start + ptrdiff_t(segment.size));
  }
  return frame;
}

inline Bytes inserted(Bytes frame, size_t position, const Bytes& bytes) {
  frame.insert(frame.begin() + ptrdiff_t(position), bytes.begin(), bytes.end());
  return frame;
}

/// Where the scan's data begin.
inline size_t scanStart(const Bytes& frame) {
  const Found scan = segments(frame, 0xDA).at(0);
  return scan.position + scan.size;
}

}  // namespace tessary::test
