#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace tessary {

/// Local calendar time, month and day from 1.
struct CalendarTime {
  int32_t year = 0;
  int32_t month = 0;
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t utcOffset = 0;  ///< Seconds that it is ahead of UTC.
  friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

/// The time by a clock that is never set: std::chrono::steady_clock::now, or what a test says.
using MonotonicNow = std::function<std::chrono::steady_clock::time_point()>;

/// What the program asks of the clock on the wall, so that tests can set it.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual CalendarTime localTime() = 0;
};

/// The machine's own clock. Any thread.
class SystemClock final : public Clock {
 public:
  CalendarTime localTime() override;
};

}  // namespace tessary
