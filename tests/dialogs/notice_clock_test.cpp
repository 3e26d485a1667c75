#include <gtest/gtest.h>

#include "ManualTime.h"
#include "dialogs/NoticeClock.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;

int32_t ticksUntilItCloses(NoticeClock& clock) {
  int32_t ticks = 1;
  while (!clock.tick() && ticks < 1000) ++ticks;
  return ticks;
}

TEST(NoticeClock, DoesNothingBeforeTheFirstUseAndAfterAStop) {
  test::ManualTime time;
  NoticeClock clock(time.now());
  EXPECT_EQ(clock.elapsed(), -1);
  EXPECT_FALSE(clock.tick());
  EXPECT_EQ(clock.elapsed(), -1);
  clock.restart();
  clock.stop();
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(clock.tick());
  EXPECT_EQ(clock.elapsed(), 0);
}

TEST(NoticeClock, IsOverAfter38Ticks) {
  test::ManualTime time;
  NoticeClock clock(time.now());
  clock.restart();
  EXPECT_EQ(clock.elapsed(), 1);
  EXPECT_EQ(ticksUntilItCloses(clock), 38);
  EXPECT_EQ(clock.elapsed(), 39);
}

TEST(NoticeClock, ASecondUseHasItsFullTime) {
  test::ManualTime time;
  NoticeClock clock(time.now());
  clock.restart();
  for (int i = 0; i < 37; ++i) ASSERT_FALSE(clock.tick());
  clock.restart();
  EXPECT_EQ(ticksUntilItCloses(clock), 38);
  clock.stop();
  clock.restart();
  EXPECT_EQ(ticksUntilItCloses(clock), 38);
}

TEST(NoticeClock, TicksThatWereMissedAreCountedWithTheNext) {
  test::ManualTime time;
  NoticeClock clock(time.now());
  clock.restart();
  time.passes(3600ms);
  EXPECT_FALSE(clock.tick());
  EXPECT_EQ(clock.elapsed(), 37);
  time.passes(1h);
  EXPECT_TRUE(clock.tick());
}

TEST(NoticeClock, ASecondUseCountsNothingOfTheFirst) {
  test::ManualTime time;
  NoticeClock clock(time.now());
  clock.restart();
  time.passes(3700ms);
  clock.restart();
  EXPECT_EQ(ticksUntilItCloses(clock), 38);
}

}  // namespace
}  // namespace tessary
