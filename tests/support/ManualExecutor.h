#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "base/Executor.h"

namespace tessary::test {

/// Keeps what is posted until the test runs it, on the test's own thread.
class ManualExecutor final : public Executor {
 public:
  void post(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(work));
  }

  /// Runs what is queued, and what that queues; how many pieces ran.
  int runAll() {
    int ran = 0;
    for (;; ++ran) {
      std::function<void()> work;
      {
        const std::lock_guard lock(mutex_);
        if (queue_.empty()) return ran;
        work = std::move(queue_.front());
        queue_.pop_front();
      }
      work();
    }
  }

 private:
  std::mutex mutex_;  // guards queue_
  std::deque<std::function<void()>> queue_;
};

}  // namespace tessary::test
