#include "base/Lifetime.h"

#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "ManualExecutor.h"

namespace tessary {
namespace {

TEST(Lifetime, WorkThatIsOnItsWayRunsWhileItsObjectLives) {
  test::ManualExecutor queue;
  std::optional<Lifetime> lifetime(std::in_place);
  int ran = 0;
  queue.post(lifetime->guard([&] { ++ran; }));
  queue.runAll();
  EXPECT_EQ(ran, 1);
  queue.post(lifetime->guard([&] { ++ran; }));
  lifetime.reset();
  queue.runAll();
  EXPECT_EQ(ran, 1);
}

TEST(Lifetime, ANewOneDoesNotRunTheWorkOfTheOneBefore) {
  test::ManualExecutor queue;
  std::optional<Lifetime> lifetime(std::in_place);
  std::vector<int> ran;
  queue.post(lifetime->guard([&] { ran.push_back(1); }));
  lifetime.emplace();
  queue.post(lifetime->guard([&] { ran.push_back(2); }));
  queue.runAll();
  EXPECT_EQ(ran, std::vector{2});
}

TEST(Lifetime, GuardedWorkTakesArguments) {
  const Lifetime lifetime;
  int sum = 0;
  const auto add = lifetime.guard([&](int a, int b) { sum += a + b; });
  add(2, 3);
  EXPECT_EQ(sum, 5);
}

}  // namespace
}  // namespace tessary
