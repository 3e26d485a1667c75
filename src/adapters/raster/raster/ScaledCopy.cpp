#include "raster/ScaledCopy.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <libyuv.h>

namespace tessary {
namespace {

constexpr uint32_t kOpaque = 0xFF000000;  // an overlay's alpha must not show what lies behind
const uint32_t kGrey = kOpaque | uint32_t(std::lround(kSurroundingGrey * 255.0F)) * 0x010101;

uint32_t pixelAt(const uint8_t* row, int32_t x) {
  uint32_t pixel = 0;
  std::memcpy(&pixel, row + size_t(x) * 4, 4);
  return pixel;
}

/// Two channels at a time, each in sixteen bits.
uint32_t mix(uint32_t one, uint32_t next, uint32_t nextShare) {
  constexpr uint32_t kChannels = 0x00FF00FF;
  constexpr uint32_t kHalf = 0x00800080;
  const uint32_t share = 256 - nextShare;
  const uint32_t low = (one & kChannels) * share + (next & kChannels) * nextShare + kHalf;
  const uint32_t high =
      ((one >> 8) & kChannels) * share + ((next >> 8) & kChannels) * nextShare + kHalf;
  return ((low >> 8) & kChannels) | (high & ~kChannels);
}

void copyOpaque(uint8_t* target, const uint8_t* source, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, source + size_t(i) * 4, 4);
    pixel |= kOpaque;
    std::memcpy(target + size_t(i) * 4, &pixel, 4);
  }
}

/// Of opaque rows an opaque one.
void mixRows(uint8_t* target, const uint8_t* one, const uint8_t* next, int32_t count,
             uint32_t nextShare) {
  libyuv::ARGBInterpolate(one, 0, next, 0, target, 0, count, 1, int(std::min(nextShare, 255U)));
}

void fill(const Surface& surface, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  if (left >= right) return;
  for (int32_t y = top; y < bottom; ++y) {
    uint8_t* row = surface.pixels + size_t(y) * surface.bytesPerRow;
    for (int32_t x = left; x < right; ++x) std::memcpy(row + size_t(x) * 4, &kGrey, 4);
  }
}

bool isWholeMultiple(double length, int32_t sourceLength) {
  return length >= sourceLength && std::fmod(length, sourceLength) == 0.0;
}

}  // namespace

void ScaledCopy::sampleAxis(std::vector<Sample>& samples, int32_t from, int32_t to, double origin,
                            double length, int32_t sourceLength) {
  samples.clear();
  const double step = sourceLength / length;  // source pixels a pixel
  const bool exact = isWholeMultiple(length, sourceLength);
  for (int32_t i = from; i < to; ++i) {
    const double at = (i + 0.5 - origin) * step;
    double low = std::floor(at);
    uint32_t share = 0;
    if (!exact) {
      // Within its flat part a source pixel is itself; towards its edges it goes over into its
      // neighbour, over as far as a pixel of the surface reaches.
      const double fromCentre = at - low - 0.5;
      const double flatPart = std::max(0.5 - 0.5 * step, 0.0);
      const double inEdge =
          (fromCentre - std::clamp(fromCentre, -flatPart, flatPart)) / std::min(step, 1.0);
      const double position = low + inEdge;
      low = std::floor(position);
      share = uint32_t(std::lround((position - low) * 256.0));
    }
    const auto clamped = [&](double index) {
      return int32_t(std::clamp(index, 0.0, sourceLength - 1.0));
    };
    samples.push_back({clamped(low), clamped(low + 1.0), share});
  }
}

void ScaledCopy::scaleAcross(uint8_t* target, const uint8_t* source) const {
  for (const Sample& sample : columns_) {
    uint32_t pixel = pixelAt(source, sample.index);
    if (sample.nextShare != 0) pixel = mix(pixel, pixelAt(source, sample.next), sample.nextShare);
    pixel |= kOpaque;
    std::memcpy(target, &pixel, 4);
    target += 4;
  }
}

const uint8_t* ScaledCopy::scaledRow(const PixelBuffer& picture, int32_t y) {
  Row& row = scaled_[y % 2];  // two rows that are mixed are neighbours
  if (row.y != y) {
    row.y = y;
    row.bytes.resize(columns_.size() * 4);
    scaleAcross(row.bytes.data(), picture.data() + size_t(y) * picture.bytesPerRow());
  }
  return row.bytes.data();
}

void ScaledCopy::shrink(const PixelBuffer& picture, uint8_t* target, size_t bytesPerRow) {
  // Down before across, where there is less left to do.
  std::vector<uint8_t>& mixed = scaled_[0].bytes;
  mixed.resize(picture.bytesPerRow());
  const int32_t first = columns_.front().index;
  const size_t offset = size_t(first) * 4;
  const int32_t count = columns_.back().next - first + 1;
  for (const Sample& sample : rows_) {
    const uint8_t* row = picture.data() + size_t(sample.index) * picture.bytesPerRow();
    if (sample.nextShare != 0) {
      const uint8_t* next = picture.data() + size_t(sample.next) * picture.bytesPerRow();
      mixRows(mixed.data() + offset, row + offset, next + offset, count, sample.nextShare);
      row = mixed.data();
    }
    scaleAcross(target, row);
    target += bytesPerRow;
  }
}

void ScaledCopy::enlarge(const PixelBuffer& picture, uint8_t* target, size_t bytesPerRow) {
  const auto count = int32_t(columns_.size());
  for (Row& row : scaled_) row.y = -1;
  for (const Sample& sample : rows_) {
    const uint8_t* row = scaledRow(picture, sample.index);
    if (sample.nextShare == 0 || sample.next == sample.index)
      std::memcpy(target, row, size_t(count) * 4);
    else
      mixRows(target, row, scaledRow(picture, sample.next), count, sample.nextShare);
    target += bytesPerRow;
  }
}

void ScaledCopy::draw(const PixelBuffer* picture, const SurfaceRect& part, const Surface& surface) {
  const SurfaceClip clip = surface.clip;
  const auto across = [&](double x) {
    return int32_t(std::clamp(x, double(clip.left), double(clip.right)));
  };
  const auto down = [&](double y) {
    return int32_t(std::clamp(y, double(clip.top), double(clip.bottom)));
  };
  const int32_t left = across(part.origin.x);
  const int32_t right = across(part.origin.x + part.size.width);
  const int32_t top = down(part.origin.y);
  const int32_t bottom = down(part.origin.y + part.size.height);
  if (!picture || left >= right || top >= bottom) {
    fill(surface, clip.left, clip.top, clip.right, clip.bottom);
    return;
  }
  fill(surface, clip.left, clip.top, clip.right, top);
  fill(surface, clip.left, top, left, bottom);
  fill(surface, right, top, clip.right, bottom);
  fill(surface, clip.left, bottom, clip.right, clip.bottom);

  const TextureSize size = picture->size();
  sampleAxis(columns_, left, right, part.origin.x, part.size.width, size.width);
  sampleAxis(rows_, top, bottom, part.origin.y, part.size.height, size.height);
  uint8_t* target = surface.pixels + size_t(top) * surface.bytesPerRow + size_t(left) * 4;
  if (part.size.width == size.width && part.size.height == size.height) {
    for (const Sample& row : rows_) {
      const uint8_t* source = picture->data() + size_t(row.index) * picture->bytesPerRow();
      copyOpaque(target, source + size_t(columns_.front().index) * 4, right - left);
      target += surface.bytesPerRow;
    }
  } else if (part.size.height < size.height) {
    shrink(*picture, target, surface.bytesPerRow);
  } else {
    enlarge(*picture, target, surface.bytesPerRow);
  }
}

}  // namespace tessary
