#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "common/Numbers.h"

namespace tessary::lab {

/// What a virtual X server shows, read from the file that it keeps its screen in (Xvfb -fbdir): no
/// screenshot program has to run, which takes seconds on an emulated machine. The picture may be in
/// the middle of a change.
class FrameBuffer {
 public:
  /// Throws std::runtime_error unless `path` is a screen of 24 bits a pixel.
  explicit FrameBuffer(const std::string& path);
  ~FrameBuffer();
  FrameBuffer(const FrameBuffer&) = delete;
  FrameBuffer& operator=(const FrameBuffer&) = delete;

  Size size() const { return size_; }
  /// 0xRRGGBB.
  uint32_t pixel(int x, int y) const;
  /// As a PPM file. Throws std::ios_base::failure.
  void save(const std::string& path) const;

 private:
  uint32_t headerField(size_t index) const;

  std::span<const std::byte> file_;
  size_t pixels_ = 0;  // where they begin
  size_t rowBytes_ = 0;
  Size size_;
};

}  // namespace tessary::lab
