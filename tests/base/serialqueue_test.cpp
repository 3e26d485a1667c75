#include "base/SerialQueue.h"

#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessary {
namespace {

TEST(SerialQueue, RunsWorkInTheOrderOfPosting) {
  std::vector<int> order;
  SerialQueue queue("test");
  for (int i = 0; i < 1000; ++i) queue.post([&order, i] { order.push_back(i); });
  queue.drain();
  ASSERT_EQ(order.size(), 1000U);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(order[size_t(i)], i);
}

TEST(SerialQueue, RunsOnOneThreadOfItsOwn) {
  std::thread::id first;
  std::thread::id second;
  SerialQueue queue("test");
  queue.post([&] { first = std::this_thread::get_id(); });
  queue.post([&] { second = std::this_thread::get_id(); });
  queue.drain();
  EXPECT_EQ(first, second);
  EXPECT_NE(first, std::this_thread::get_id());
}

TEST(SerialQueue, PostingReturnsBeforeTheWorkIsDone) {
  std::promise<void> go;
  bool ran = false;
  SerialQueue queue("test");
  queue.post([&] {
    go.get_future().wait();
    ran = true;
  });
  go.set_value();  // reached only because post() did not wait
  queue.drain();
  EXPECT_TRUE(ran);
}

TEST(SerialQueue, EachPostingThreadKeepsItsOwnOrder) {
  constexpr int kThreads = 4;
  constexpr int kPieces = 500;
  std::vector<std::pair<int, int>> order;  // used on the queue, and after draining it
  SerialQueue queue("test");
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < kPieces; ++i) queue.post([&order, t, i] { order.emplace_back(t, i); });
      });
    }
  }
  queue.drain();
  ASSERT_EQ(order.size(), size_t(kThreads * kPieces));
  std::vector<int> next(kThreads, 0);
  for (const auto& [thread, piece] : order) EXPECT_EQ(piece, next[size_t(thread)]++);
}

TEST(SerialQueue, TheDestructorRunsWhatIsQueuedAndWhatThatQueues) {
  int ran = 0;
  {
    std::promise<void> go;
    auto started = go.get_future();
    SerialQueue queue("test");
    queue.post([&] {
      started.wait();
      ++ran;
      queue.post([&] { ++ran; });
    });
    queue.post([&] { ++ran; });
    go.set_value();
  }
  EXPECT_EQ(ran, 3);
}

TEST(SerialQueue, WorkLetsGoOfWhatItHoldsAsSoonAsItHasRun) {
  auto held = std::make_shared<int>(1);
  SerialQueue queue("test");
  queue.post([copy = held] { EXPECT_EQ(*copy, 1); });
  queue.drain();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(SerialQueue, KeepsItsWholeLabel) {
  SerialQueue queue("com.quorvix.microscope.session");
  EXPECT_EQ(queue.label(), "com.quorvix.microscope.session");
}

TEST(SerialQueue, DrainingOverAndOverIsSafe) {
  int ran = 0;
  SerialQueue queue("test");
  for (int i = 0; i < 2000; ++i) {
    queue.post([&] { ++ran; });
    queue.drain();
    ASSERT_EQ(ran, i + 1);
  }
}

}  // namespace
}  // namespace tessary
