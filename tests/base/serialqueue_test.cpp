#include "base/SerialQueue.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessary {
namespace {

constexpr std::chrono::seconds kLong(60);
constexpr std::chrono::milliseconds kShort(20);

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

/// Work that does not come back until it is let go.
class StuckWork {
 public:
  std::function<void()> function() {
    return [begun = begun_, letGo = letGo_] {
      begun->set_value();
      letGo->get_future().wait();
    };
  }
  void waitUntilBegun() { begun_->get_future().wait(); }
  void letGo() { letGo_->set_value(); }

 private:
  std::shared_ptr<std::promise<void>> begun_ = std::make_shared<std::promise<void>>();
  std::shared_ptr<std::promise<void>> letGo_ = std::make_shared<std::promise<void>>();
};

void waitForNoAbandonedThreads() {
  while (SerialQueue::abandonedThreads() > 0) std::this_thread::yield();
}

TEST(SerialQueue, ACallReturnsWhatItsWorkDid) {
  SerialQueue queue("test");
  std::vector<int> order;
  queue.post([&] { order.push_back(1); });
  const auto answer = queue.call(kLong, [&] {
    order.push_back(2);
    return std::string("answer");
  });
  EXPECT_EQ(answer, "answer");
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(SerialQueue, ACallThatTakesTooLongIsGivenUpAndGoesOn) {
  SerialQueue queue("test");
  StuckWork stuck;
  const auto began = std::make_shared<std::atomic<bool>>(false);
  const auto ended = std::make_shared<std::promise<void>>();
  // One that is given up before it began never does, as on a busy machine: then it is called again.
  do {
    EXPECT_EQ(queue.call(kShort,
                         [work = stuck.function(), began, ended] {
                           *began = true;
                           work();
                           ended->set_value();
                           return 1;
                         }),
              std::nullopt);
  } while (!*began);
  stuck.letGo();
  ended->get_future().wait();
  EXPECT_EQ(queue.call(kLong, [] { return 2; }), 2);
}

TEST(SerialQueue, ACallThatIsGivenUpBeforeItBeganNeverRuns) {
  SerialQueue queue("test");
  StuckWork stuck;
  queue.post(stuck.function());
  bool ran = false;
  EXPECT_EQ(queue.call(kShort, [&ran] { return ran = true; }), std::nullopt);
  stuck.letGo();
  queue.drain();
  EXPECT_FALSE(ran);
}

TEST(SerialQueue, WithAnEndLimitAStuckThreadIsLeftToItself) {
  StuckWork stuck;
  const auto behind = std::make_shared<std::atomic<bool>>(false);
  {
    SerialQueue queue("test", kShort);
    queue.post(stuck.function());
    queue.post([behind] { *behind = true; });
    stuck.waitUntilBegun();
  }
  EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
  EXPECT_EQ(behind.use_count(), 1) << "what is behind is dropped";
  stuck.letGo();
  waitForNoAbandonedThreads();
  EXPECT_FALSE(*behind);
}

TEST(SerialQueue, WithAnEndLimitWhatIsQueuedStillRuns) {
  int ran = 0;
  {
    SerialQueue queue("test", kLong);
    for (int i = 0; i < 100; ++i) queue.post([&] { ++ran; });
  }
  EXPECT_EQ(ran, 100);
  EXPECT_EQ(SerialQueue::abandonedThreads(), 0);
}

TEST(SerialQueue, WithAnEndLimitItMayEndOnItsOwnThread) {
  auto queue = std::make_unique<SerialQueue>("test", kLong);
  std::promise<void> ended;
  SerialQueue& posting = *queue;
  posting.post([&] {
    queue.reset();
    ended.set_value();
  });
  ended.get_future().wait();
  waitForNoAbandonedThreads();
}

TEST(CallWithin, ReturnsWhatTheWorkDid) {
  EXPECT_EQ(callWithin(kLong, [] { return 7; }), 7);
  EXPECT_EQ(SerialQueue::abandonedThreads(), 0) << "its thread has ended with it";
}

TEST(CallWithin, DoesNotWaitForWorkThatIsStuck) {
  StuckWork stuck;
  EXPECT_EQ(callWithin(kShort,
                       [work = stuck.function()] {
                         work();
                         return 7;
                       }),
            std::nullopt);
  EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
  stuck.letGo();
  waitForNoAbandonedThreads();
}

}  // namespace
}  // namespace tessary
