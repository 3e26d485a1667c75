#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/Geometry.h"

namespace tessary {

/// One picture: rows from the top, 4 bytes a pixel in the order blue, green, red, alpha, no gap
/// between rows. Cameras' alpha bytes are 255.
class PixelBuffer {
 public:
  explicit PixelBuffer(TextureSize size);

  TextureSize size() const { return size_; }
  size_t bytesPerRow() const { return size_t(size_.width) * 4; }
  size_t byteCount() const { return bytesPerRow() * size_t(size_.height); }
  uint8_t* data() { return data_.get(); }
  const uint8_t* data() const { return data_.get(); }

 private:
  struct Free {
    void operator()(uint8_t* block) const;
  };
  TextureSize size_;
  std::unique_ptr<uint8_t[], Free> data_;  // aligned to 64 bytes, contents undefined at first
};

/// Hands out pixel buffers and takes them back when their last reference goes, so that a running
/// stream allocates nothing. Buffers that a moment's delay made necessary, and that none of some
/// hundred pictures after it needed, are given back. Any thread; buffers may outlive the pool.
class PixelBufferPool {
 public:
  PixelBufferPool();
  /// A buffer of `size`, contents undefined.
  std::shared_ptr<PixelBuffer> take(TextureSize size);
  /// How many it keeps that are not lent out.
  size_t idleBuffers() const;

 private:
  struct Shelf;
  struct Return;
  template <typename T>
  struct CountAllocator;
  std::shared_ptr<Shelf> shelf_;
};

}  // namespace tessary
