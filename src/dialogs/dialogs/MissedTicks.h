#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <utility>

#include "base/Clock.h"

namespace tessary {

/// Makes up for ticks that never came: a busy machine delivers a timer's ticks late, and those that
/// come together only once.
class MissedTicks {
 public:
  static constexpr std::chrono::milliseconds kTick{100};

  explicit MissedTicks(MonotonicNow now) : now_(std::move(now)) {}

  /// Counting begins now. Any thread.
  void restart() { start_ = now_(); }
  /// The count after a tick that finds `counted`: one more, or all that are due by now.
  int32_t afterOneMore(int32_t counted) const {
    return std::max(counted + 1, int32_t((now_() - start_.load()) / kTick));
  }

 private:
  const MonotonicNow now_;
  std::atomic<std::chrono::steady_clock::time_point> start_{};
};

}  // namespace tessary
