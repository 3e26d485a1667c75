#include "base/Clock.h"

#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

namespace tessary {
namespace {

/// Sets the time zone while it lives.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~TimeZone() {
    if (before_.empty())
      unsetenv("TZ");
    else
      setenv("TZ", before_.c_str(), 1);
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  std::string before_;
};

std::time_t secondsAsIfUtc(const CalendarTime& time) {
  std::tm parts{};
  parts.tm_year = time.year - 1900;
  parts.tm_mon = time.month - 1;
  parts.tm_mday = time.day;
  parts.tm_hour = time.hour;
  parts.tm_min = time.minute;
  parts.tm_sec = time.second;
  return timegm(&parts);
}

TEST(SystemClock, TellsTheLocalTimeOfNow) {
  struct Row {
    const char* zone;
    std::time_t offset;
  };
  for (const Row& row : {Row{"UTC0", 0}, Row{"XXX-9", 9 * 3600}, Row{"YYY8", -8 * 3600},
                         Row{"ZZZ-5:45", 5 * 3600 + 45 * 60}}) {
    const TimeZone zone(row.zone);
    const std::time_t before = std::time(nullptr);
    const std::time_t told = secondsAsIfUtc(SystemClock().localTime()) - row.offset;
    const std::time_t after = std::time(nullptr);
    EXPECT_GE(told, before) << row.zone;
    EXPECT_EQ(SystemClock().localTime().utcOffset, row.offset) << row.zone;
    EXPECT_LE(told, after + 1) << row.zone;  // time() may lag the finer clock by a tick
  }
}

TEST(SystemClock, CountsMonthsAndDaysFromOne) {
  const CalendarTime now = SystemClock().localTime();
  EXPECT_GE(now.year, 2024);
  EXPECT_TRUE(now.month >= 1 && now.month <= 12) << now.month;
  EXPECT_TRUE(now.day >= 1 && now.day <= 31) << now.day;
}

}  // namespace
}  // namespace tessary
