#pragma once

#include <atomic>
#include <vector>

#include "base/Time.h"

namespace tessary {

/// Frames per second over the last second of a stream, by the frames' own time stamps.
class FrameRate {
 public:
  /// Counts a frame. One thread at a time: the frame queue.
  void calculateFramerateAtTimestamp(MediaTime timestamp);

  /// Not rounded; 0 before the second frame. Any thread.
  float videoFrameRate() const { return _videoFrameRate.load(std::memory_order_relaxed); }

 private:
  std::vector<MediaTime> _previousSecondTimestamps;  // never descending
  // A single value that stands for itself: relaxed order is enough.
  std::atomic<float> _videoFrameRate{0.0F};
};

}  // namespace tessary
