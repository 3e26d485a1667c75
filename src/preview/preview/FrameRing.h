#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

#include "base/PixelBuffer.h"

namespace tessary {

/// The newest three frames of the running stream, all of one size. Written on the frame queue, read
/// on the main thread; only the newest is ever shown.
class FrameRing {
 public:
  static constexpr int32_t kSlots = 3;
  using Frame = std::shared_ptr<const PixelBuffer>;

  struct Newest {
    Frame frame;            ///< Null before the first frame.
    uint64_t sequence = 0;  ///< Differs for any two frames, even if the pool reused the memory.
    uint64_t run = 0;       ///< Differs after every change of size and every clearing.
  };

  /// Fills the slot after the newest, then makes it the newest. A frame of another size than those
  /// that are there empties the ring first. Whether a new run begins: the first frame, and the
  /// first of its size. Any thread.
  bool push(Frame frame);
  /// Empties all slots; the next frame lands in slot 1. Any thread.
  void clear();

  /// Any thread.
  Newest newest() const;
  /// Frame in a slot, 0 to 2. Any thread.
  Frame slot(int32_t index) const;
  /// Any thread.
  int32_t cvLastTexture() const;

 private:
  void startRun(std::array<Frame, kSlots>& dropped);

  // Held only while pointers change hands, never while pixels are touched.
  mutable std::mutex mutex_;  // guards all below
  std::array<Frame, kSlots> _cvTextures;
  int32_t _cvLastTexture = 0;
  uint64_t sequence_ = 0;  // not set back by clear, nor is this
  uint64_t run_ = 0;
};

}  // namespace tessary
