#pragma once

#include <chrono>

#include "base/Clock.h"

namespace tessary::test {

/// A monotonic clock that goes on when told. It must outlive what it is handed to.
class ManualTime {
 public:
  MonotonicNow now() {
    return [this] { return time_; };
  }
  void passes(std::chrono::milliseconds time) { time_ += time; }

 private:
  std::chrono::steady_clock::time_point time_{std::chrono::hours(1)};
};

}  // namespace tessary::test
