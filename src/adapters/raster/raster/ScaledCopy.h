#pragma once

#include <cstdint>
#include <vector>

#include "base/PixelBuffer.h"
#include "platform/Surface.h"

namespace tessary {

/// Copies a picture into a part of a surface in memory, as large as that part is.
///
/// At whole multiples of its size every pixel is one of the picture's. Enlarged otherwise, pixels
/// keep hard edges: only a pixel that an edge runs through mixes the two sides. Shrunk, to one half
/// at the least, each mixes the two by two around its centre, so that no thin line is lost.
class ScaledCopy {
 public:
  /// `picture` goes into `part` of the surface, which may reach beyond it and is whole in all four
  /// numbers; the rest of the surface's clip becomes grey. Null for no picture.
  void draw(const PixelBuffer* picture, const SurfaceRect& part, const Surface& surface);

 private:
  /// What lies under one pixel of the surface along an axis: a source pixel and the next, and how
  /// much there is of the next, of 256.
  struct Sample {
    int32_t index;
    int32_t next;
    uint32_t nextShare;
  };

  static void sampleAxis(std::vector<Sample>& samples, int32_t from, int32_t to, double origin,
                         double length, int32_t sourceLength);
  /// One row of the picture, scaled across and opaque.
  void scaleAcross(uint8_t* target, const uint8_t* source) const;
  /// Row `y` of the picture scaled across; computed once for as long as it and its neighbours are
  /// asked for.
  const uint8_t* scaledRow(const PixelBuffer& picture, int32_t y);
  void shrink(const PixelBuffer& picture, uint8_t* target, size_t bytesPerRow);
  void enlarge(const PixelBuffer& picture, uint8_t* target, size_t bytesPerRow);

  // Under the part of the surface that is drawn.
  std::vector<Sample> columns_;
  std::vector<Sample> rows_;

  struct Row {
    int32_t y = -1;
    std::vector<uint8_t> bytes;
  };
  Row scaled_[2];
};

}  // namespace tessary
