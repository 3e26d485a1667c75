#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/PixelBuffer.h"

namespace tessary {

/// The compressed rows of a PNG file (a zlib stream of filtered RGB rows) in pieces that several
/// threads make at the same time, a piece for each strip of the picture's rows. One behind the
/// other they are the whole stream.
///
/// Each row is stored as differences from its left neighbours, and these are coded with Huffman
/// tables and runs alone: a camera's grain has next to no repetitions that a search could find, and
/// the search is what takes the time.
class DeflateStrips {
 public:
  explicit DeflateStrips(const PixelBuffer& picture);

  size_t count() const { return strips_.size(); }
  /// Makes piece `index`. Each once, on any thread; `picture` must still be there. False when there
  /// is no memory for it.
  bool compress(size_t index);
  /// The pieces in order, once all are made.
  std::vector<std::span<const uint8_t>> finish();

 private:
  struct Strip {
    std::unique_ptr<uint8_t[]> bytes;
    size_t byteCount = 0;
    size_t rawByteCount = 0;
    unsigned long checksum = 0;  // Adler-32 of the raw bytes
  };

  size_t rawRowBytes() const { return size_t(picture_.size().width) * 3 + 1; }
  void filterRow(int32_t y, uint8_t* target) const;

  const PixelBuffer& picture_;
  std::vector<Strip> strips_;
};

}  // namespace tessary
