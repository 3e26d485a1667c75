#include <cstdint>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "ManualTime.h"
#include "dialogs/RecordClock.h"
#include "output/RecordingStatus.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using Tick = RecordClock::Tick;

constexpr int32_t kNoLimit = 0;

/// A clock whose recording began `tenths` ago.
void advance(RecordClock& clock, int32_t tenths) {
  clock.recordStatusDidChange(kRecordingRunning);
  for (int32_t i = 0; i < tenths; ++i) clock.tick(kNoLimit);
}

TEST(RecordLimits, TitlesAndSecondsAreParallel) {
  struct Row {
    std::string_view title;
    int32_t seconds;
  };
  constexpr Row kRows[] = {{"No Limit", 0},     {"30 seconds", 30},   {"60 seconds", 60},
                           {"10 minutes", 600}, {"30 minutes", 1800}, {"1hour", 3600}};
  ASSERT_EQ(std::size(kRows), s_limitStrings.size());
  for (size_t i = 0; i < std::size(kRows); ++i) {
    EXPECT_EQ(s_limitStrings[i], kRows[i].title);
    EXPECT_EQ(s_limitSeconds[i], kRows[i].seconds);
    EXPECT_EQ(recordLimitIndex(kRows[i].seconds), i);
  }
}

TEST(RecordLimits, AValueThatIsNotInTheTableSelectsTheFirst) {
  for (const int32_t seconds : {-1, 1, 9, 10, 29, 31, 599, 3601, 7200})
    EXPECT_EQ(recordLimitIndex(seconds), 0U) << seconds;
}

TEST(RecordClock, StandsStillUntilTheFirstFrameIsWritten) {
  test::ManualTime time;
  RecordClock clock(time.now());
  EXPECT_EQ(clock.elapsed(), -1);
  for (const int64_t status : {kRecordingNone, kRecordingStartFailed, kRecordingStopping,
                               kRecordingFinished, kRecordingWaiting, int64_t(6), int64_t(-5)}) {
    clock.recordStatusDidChange(status);
    EXPECT_EQ(clock.tick(kNoLimit), Tick::AtRest) << status;
    EXPECT_EQ(clock.elapsed(), -1) << status;
  }
  clock.recordStatusDidChange(kRecordingRunning);
  EXPECT_EQ(clock.elapsed(), 0);
}

TEST(RecordClock, TheFirstTimeShownIsATenth) {
  test::ManualTime time;
  RecordClock clock(time.now());
  clock.recordStatusDidChange(kRecordingRunning);
  EXPECT_EQ(clock.tick(kNoLimit), Tick::Counted);
  EXPECT_EQ(clock.fmtSeconds(), "0.1");
}

TEST(RecordClock, ALaterStatusDoesNotStopIt) {
  test::ManualTime time;
  RecordClock clock(time.now());
  advance(clock, 7);
  clock.recordStatusDidChange(kRecordingStopping);
  EXPECT_EQ(clock.tick(kNoLimit), Tick::Counted);
  EXPECT_EQ(clock.elapsed(), 8);
}

TEST(RecordClock, TheFormChangesJustPastOneMinute) {
  struct Row {
    int32_t tenths;
    const char* text;
  };
  constexpr Row kRows[] = {{0, "0.0"},         {1, "0.1"},         {9, "0.9"},
                           {10, "1.0"},        {599, "59.9"},      {600, "60.0"},
                           {601, "1:00.1"},    {610, "1:01.0"},    {1199, "1:59.9"},
                           {1200, "2:00.0"},   {6005, "10:00.5"},  {36000, "60:00.0"},
                           {59999, "99:59.9"}, {60000, "100:00.0"}};
  for (const Row& row : kRows) {
    test::ManualTime time;
    RecordClock clock(time.now());
    advance(clock, row.tenths);
    ASSERT_EQ(clock.elapsed(), row.tenths);
    EXPECT_EQ(clock.fmtSeconds(), row.text) << row.tenths;
  }
}

TEST(RecordClock, TheLimitIsPassedAtTheFirstTickBeyondIt) {
  struct Row {
    int32_t maxRecord;
    int32_t elapsed;  // before the tick
    Tick expected;
  };
  constexpr Row kRows[] = {{30, 298, Tick::Counted},
                           {30, 299, Tick::Counted},
                           {30, 300, Tick::LimitPassed},
                           {30, 900, Tick::LimitPassed},
                           {10, 99, Tick::Counted},
                           {10, 100, Tick::LimitPassed},
                           // A stored value that the table does not have is a limit all the same.
                           {45, 449, Tick::Counted},
                           {45, 450, Tick::LimitPassed},
                           // Below ten seconds there is no limit.
                           {9, 5000, Tick::Counted},
                           {0, 5000, Tick::Counted},
                           {-30, 5000, Tick::Counted},
                           // Ten times this is more than 32 bits hold.
                           {std::numeric_limits<int32_t>::max(), 5000, Tick::Counted}};
  for (const Row& row : kRows) {
    test::ManualTime time;
    RecordClock clock(time.now());
    advance(clock, row.elapsed);
    EXPECT_EQ(clock.tick(row.maxRecord), row.expected) << row.maxRecord << " " << row.elapsed;
    EXPECT_EQ(clock.elapsed(), row.elapsed + 1);
  }
}

TEST(RecordClock, ThirtySecondsEndAtTheTickNumbered301) {
  test::ManualTime time;
  RecordClock clock(time.now());
  clock.recordStatusDidChange(kRecordingRunning);
  int32_t ticks = 1;
  while (clock.tick(30) == Tick::Counted) ++ticks;
  EXPECT_EQ(ticks, 301);
  EXPECT_EQ(clock.elapsed(), 301);
}

TEST(RecordClock, ALimitShortenedBelowTheTimePassedEndsAtTheNextTick) {
  test::ManualTime time;
  RecordClock clock(time.now());
  advance(clock, 400);
  EXPECT_EQ(clock.tick(60), Tick::Counted);
  EXPECT_EQ(clock.tick(30), Tick::LimitPassed);
}

TEST(RecordClock, MayBeStartedByAnotherThreadWhileItTicks) {
  test::ManualTime time;
  RecordClock clock(time.now());
  std::thread recordingQueue([&] {
    clock.recordStatusDidChange(kRecordingWaiting);
    clock.recordStatusDidChange(kRecordingRunning);
  });
  while (clock.tick(kNoLimit) == Tick::AtRest) std::this_thread::yield();
  recordingQueue.join();
  EXPECT_GE(clock.elapsed(), 0);
  EXPECT_EQ(clock.tick(kNoLimit), Tick::Counted);
}

TEST(RecordClock, TicksThatWereMissedAreCountedWithTheNext) {
  test::ManualTime time;
  RecordClock clock(time.now());
  clock.recordStatusDidChange(kRecordingRunning);
  time.passes(199ms);
  clock.tick(kNoLimit);
  EXPECT_EQ(clock.elapsed(), 1) << "the second tenth is not over";
  time.passes(2101ms);
  clock.tick(kNoLimit);
  EXPECT_EQ(clock.elapsed(), 23);
  clock.tick(kNoLimit);
  EXPECT_EQ(clock.elapsed(), 24) << "a tick counts, however soon it comes";
}

TEST(RecordClock, TheTimeBeforeTheFirstFrameIsNotMissed) {
  test::ManualTime time;
  RecordClock clock(time.now());
  time.passes(5s);
  clock.tick(kNoLimit);
  clock.recordStatusDidChange(kRecordingRunning);
  clock.tick(kNoLimit);
  EXPECT_EQ(clock.elapsed(), 1);
}

TEST(RecordClock, AMissedTickPastTheLimitEndsIt) {
  test::ManualTime time;
  RecordClock clock(time.now());
  clock.recordStatusDidChange(kRecordingRunning);
  time.passes(30s);
  EXPECT_EQ(clock.tick(30), Tick::Counted);
  EXPECT_EQ(clock.elapsed(), 300);
  time.passes(15s);
  EXPECT_EQ(clock.tick(30), Tick::LimitPassed);
  EXPECT_EQ(clock.elapsed(), 301);
  EXPECT_EQ(clock.tick(30), Tick::LimitPassed);
  EXPECT_EQ(clock.elapsed(), 302);
}

TEST(RecordLimits, LessThanTenSecondsIsNoLimit) {
  constexpr std::pair<int32_t, int32_t> kRows[] = {{-1, 0}, {0, 0}, {9, 0}, {10, 10}, {3600, 3600}};
  for (const auto& [maxRecord, limit] : kRows) EXPECT_EQ(recordLimit(maxRecord), limit);
}

}  // namespace
}  // namespace tessary
