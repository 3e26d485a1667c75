#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "base/Executor.h"
#include "base/Failures.h"

namespace tessary {

/// Tells failures from any thread, by way of the main queue, until it ends. Copies tell on its
/// behalf: a thread that was left to itself may hold one for ever.
class FailurePost {
 public:
  class Copy {
   public:
    /// Any thread.
    void failed(Failure failure, std::string text) const {
      post([failure, text = std::move(text)](FailureListener& to) { to.failed(failure, text); });
    }
    void recovered(Failure failure) const {
      post([failure](FailureListener& to) { to.recovered(failure); });
    }

   private:
    friend class FailurePost;
    struct Way {
      std::mutex mutex;           // guards mainQueue
      Executor* mainQueue;        // null when the post has ended
      FailureListener* listener;  // main thread only; likewise
    };

    template <typename Tell>
    void post(Tell tell) const {
      const std::lock_guard lock(way_->mutex);
      if (!way_->mainQueue) return;
      way_->mainQueue->post([way = way_, tell = std::move(tell)] {
        if (way->listener) tell(*way->listener);
      });
    }

    std::shared_ptr<Way> way_;
  };

  /// Both must outlive it. Main thread, as its end.
  FailurePost(Executor& mainQueue, FailureListener& listener) {
    copy_.way_ = std::make_shared<Copy::Way>();
    copy_.way_->mainQueue = &mainQueue;
    copy_.way_->listener = &listener;
  }
  ~FailurePost() {
    copy_.way_->listener = nullptr;
    const std::lock_guard lock(copy_.way_->mutex);
    copy_.way_->mainQueue = nullptr;
  }
  FailurePost(const FailurePost&) = delete;
  FailurePost& operator=(const FailurePost&) = delete;

  const Copy& copy() const { return copy_; }

 private:
  Copy copy_;
};

}  // namespace tessary
