#pragma once

#include <chrono>
#include <cstdint>

namespace tessary {

/// Local calendar time, month and day from 1.
struct CalendarTime {
  int32_t year = 0;
  int32_t month = 0;
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

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
