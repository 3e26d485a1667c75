#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "preview/FrameRate.h"

namespace tessary::test {
namespace {

float rateAfter(const std::vector<int64_t>& microseconds) {
  FrameRate rate;
  for (const int64_t stamp : microseconds) rate.calculateFramerateAtTimestamp(MediaTime(stamp));
  return rate.videoFrameRate();
}

TEST(FrameRate, IsFramesOverTheSecondsTheySpan) {
  struct Row {
    std::vector<int64_t> stamps;
    float rate;
  };
  const Row table[] = {
      {{}, 0.0F},
      {{5'000'000}, 0.0F},
      {{0, 500'000}, 2.0F},
      {{0, 500'000, 1'000'000}, 2.0F},            // exactly one second old stays
      {{0, 500'000, 1'000'001}, 1e6F / 500'001},  // one microsecond more goes
      {{0, 100'000, 5'000'000}, 10.0F},           // alone in its second: the old rate stands
      {{0, 100'000, 5'000'000, 5'040'000}, 25.0F},
      {{7, 7}, 0.0F},                              // equal stamps say nothing
      {{9'000'000, 9'100'000, 1'000'000}, 10.0F},  // a clock set back begins anew
      {{9'000'000, 9'100'000, 1'000'000, 1'050'000}, 20.0F},
  };
  for (size_t i = 0; i < std::size(table); ++i) {
    EXPECT_EQ(rateAfter(table[i].stamps), table[i].rate) << "row " << i;
  }
}

TEST(FrameRate, AStreamOfExactlyThirtyIsThirty) {
  FrameRate rate;
  for (int64_t second = 0; second < 5; ++second) {
    for (int64_t frame = 0; frame < 30; ++frame) {
      // In whole microseconds a thirtieth is 33333, 33333, 33334.
      rate.calculateFramerateAtTimestamp(MediaTime(second * 1'000'000 + (frame * 1'000'000) / 30));
    }
  }
  rate.calculateFramerateAtTimestamp(MediaTime(5'000'000));  // 31 stamps in the window
  EXPECT_EQ(rate.videoFrameRate(), 30.0F);
}

TEST(FrameRate, IsNotRounded) { EXPECT_EQ(rateAfter({0, 300'000, 700'000}), float(2 / 0.7)); }

TEST(FrameRate, SurvivesStampsAtTheEndsOfTime) {
  FrameRate rate;
  rate.calculateFramerateAtTimestamp(MediaTime(std::numeric_limits<int64_t>::min()));
  rate.calculateFramerateAtTimestamp(MediaTime(std::numeric_limits<int64_t>::max()));
  rate.calculateFramerateAtTimestamp(MediaTime(std::numeric_limits<int64_t>::min()));
  EXPECT_EQ(rate.videoFrameRate(), 0.0F);
}

TEST(FrameRate, AClockThatStandsStillOrJumpsBackKeepsTheWindowSmallAndTheRateSane) {
  FrameRate still;
  for (int i = 0; i < 20'000; ++i) still.calculateFramerateAtTimestamp(MediaTime(42));
  EXPECT_EQ(still.videoFrameRate(), 0.0F);
  // At the cap of the window, not at all 20,000 of them.
  still.calculateFramerateAtTimestamp(MediaTime(42 + 1'000'000));
  EXPECT_EQ(still.videoFrameRate(), 4095.0F);

  FrameRate jumping;
  for (int i = 0; i < 20'000; ++i) {
    jumping.calculateFramerateAtTimestamp(MediaTime((i % 2 == 0 ? 3'600'000'000 : 0) + i));
    ASSERT_TRUE(std::isfinite(jumping.videoFrameRate()));
    ASSERT_GE(jumping.videoFrameRate(), 0.0F);
  }
}

TEST(FrameRate, CanBeReadWhileFramesArrive) {
  FrameRate rate;
  std::atomic<bool> done{false};
  std::thread frames([&] {
    for (int64_t i = 0; i < 50'000; ++i) rate.calculateFramerateAtTimestamp(MediaTime(i * 40'000));
    done = true;
  });
  bool sane = true;
  while (!done) {
    const float seen = rate.videoFrameRate();
    sane = sane && (seen == 0.0F || seen == 25.0F);
  }
  frames.join();
  EXPECT_TRUE(sane);
  EXPECT_EQ(rate.videoFrameRate(), 25.0F);
}

}  // namespace
}  // namespace tessary::test
