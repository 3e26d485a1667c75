#pragma once

#include <cstdint>

#include "dialogs/MissedTicks.h"

namespace tessary {

/// How long a notice stays up: 38 ticks, counted anew whenever it is shown. Ticks that were missed
/// are counted with the next one.
class NoticeClock {
 public:
  explicit NoticeClock(MonotonicNow now = std::chrono::steady_clock::now)
      : ticks_(std::move(now)) {}

  void restart() {
    elapsed_ = kFirst;
    ticks_.restart();
  }
  void stop() noexcept { elapsed_ = 0; }
  /// One tenth of a second has passed. True once the time is over.
  bool tick() {
    if (elapsed_ <= 0) return false;
    elapsed_ = ticks_.afterOneMore(elapsed_ - kFirst) + kFirst;
    return elapsed_ > kLast;
  }
  /// Ticks so far; -1 before the first use, 0 after a stop.
  int32_t elapsed() const noexcept { return elapsed_; }

 private:
  static constexpr int32_t kFirst = 1;
  static constexpr int32_t kLast = 38;
  int32_t elapsed_ = -1;
  MissedTicks ticks_;
};

}  // namespace tessary
