#include "qt/QtMainQueue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessary {
namespace {

/// Runs all that is posted now, and what that posts.
void processEvents() {
  while (QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents)) {
  }
}

TEST(QtMainQueue, PostingReturnsBeforeTheWorkRuns) {
  QtMainQueue queue;
  bool ran = false;
  queue.post([&] { ran = true; });
  EXPECT_FALSE(ran);
  processEvents();
  EXPECT_TRUE(ran);
}

TEST(QtMainQueue, KeepsTheOrderOfPosting) {
  QtMainQueue queue;
  std::vector<int> order;
  for (int i = 0; i < 100; ++i) queue.post([&order, i] { order.push_back(i); });
  processEvents();
  ASSERT_EQ(order.size(), 100U);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[size_t(i)], i);
}

TEST(QtMainQueue, WorkThatPostsComesAfterWhatIsQueued) {
  QtMainQueue queue;
  std::vector<int> order;
  queue.post([&] {
    order.push_back(1);
    queue.post([&] { order.push_back(3); });
  });
  queue.post([&] { order.push_back(2); });
  processEvents();
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(QtMainQueue, WorkOfOtherThreadsRunsOnTheMainThreadInTheirOrder) {
  constexpr int kThreads = 4;
  constexpr int kPieces = 250;
  QtMainQueue queue;
  QEventLoop loop;
  std::vector<std::pair<int, int>> order;
  bool onMainThread = true;
  std::vector<std::jthread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPieces; ++i) {
        queue.post([&, t, i, poster = std::this_thread::get_id()] {
          onMainThread = onMainThread && std::this_thread::get_id() != poster;
          order.emplace_back(t, i);
          if (order.size() == size_t(kThreads * kPieces)) loop.quit();
        });
      }
    });
  }
  loop.exec();
  EXPECT_TRUE(onMainThread);
  std::vector<int> next(kThreads, 0);
  for (const auto& [thread, piece] : order) EXPECT_EQ(piece, next[size_t(thread)]++);
}

TEST(QtMainQueue, WakesAnEventLoopThatSleeps) {
  QtMainQueue queue;
  QEventLoop loop;
  const std::jthread thread([&] { queue.post([&] { loop.quit(); }); });
  EXPECT_EQ(loop.exec(), 0);
}

TEST(QtMainQueue, WorkStillQueuedAtItsEndIsDroppedAndLetGo) {
  auto held = std::make_shared<int>(0);
  std::optional<QtMainQueue> queue(std::in_place);
  queue->post([held] { ++*held; });
  queue.reset();
  EXPECT_EQ(held.use_count(), 1);
  processEvents();
  EXPECT_EQ(*held, 0);
}

TEST(QtMainQueue, WorkMayEndTheQueue) {
  auto queue = std::make_unique<QtMainQueue>();
  bool ran = false;
  queue->post([&] { queue.reset(); });
  queue->post([&] { ran = true; });
  processEvents();
  EXPECT_EQ(queue, nullptr);
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace tessary
