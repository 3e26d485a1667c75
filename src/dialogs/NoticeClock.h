#pragma once

#include <cstdint>

namespace tessary {

/// How long a notice stays up: 38 ticks, counted anew whenever it is shown.
class NoticeClock {
 public:
  void restart() noexcept { elapsed_ = 1; }
  void stop() noexcept { elapsed_ = 0; }
  /// One tenth of a second has passed. True once the time is over.
  bool tick() noexcept {
    if (elapsed_ <= 0) return false;
    return ++elapsed_ > kLast;
  }
  /// Ticks so far; -1 before the first use, 0 after a stop.
  int32_t elapsed() const noexcept { return elapsed_; }

 private:
  static constexpr int32_t kLast = 38;
  int32_t elapsed_ = -1;
};

}  // namespace tessary
