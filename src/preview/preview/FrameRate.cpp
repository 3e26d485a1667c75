#include "preview/FrameRate.h"

#include <algorithm>
#include <cstdint>

namespace tessary {
namespace {

/// More than any camera sends in a second; keeps a stream of equal stamps from growing for ever.
constexpr size_t kMostTimestamps = 4096;

/// Microseconds from `earlier` to `later`; exact for any two stamps.
uint64_t microsecondsBetween(MediaTime earlier, MediaTime later) {
  return uint64_t(later.count()) - uint64_t(earlier.count());
}

}  // namespace

void FrameRate::calculateFramerateAtTimestamp(MediaTime timestamp) {
  auto& stamps = _previousSecondTimestamps;
  // A clock that was set back: nothing before it can be compared with what comes.
  if (!stamps.empty() && timestamp < stamps.back()) stamps.clear();
  stamps.push_back(timestamp);
  // Strictly: a stamp that is exactly one second old still counts.
  const auto within = std::ranges::find_if(stamps, [timestamp](MediaTime stamp) {
    return microsecondsBetween(stamp, timestamp) <= 1'000'000;
  });
  stamps.erase(stamps.begin(), within);
  if (stamps.size() > kMostTimestamps) stamps.erase(stamps.begin());

  const uint64_t elapsed = microsecondsBetween(stamps.front(), stamps.back());
  if (elapsed == 0) return;  // one frame, or equal stamps: the old value stands
  const double seconds = double(elapsed) / 1e6;
  _videoFrameRate.store(float(double(stamps.size() - 1) / seconds), std::memory_order_relaxed);
}

}  // namespace tessary
