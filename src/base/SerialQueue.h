#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "base/Executor.h"

namespace tessary {

/// A thread with a name that runs what is posted to it, one piece after the other.
class SerialQueue final : public Executor {
 public:
  explicit SerialQueue(std::string label);
  /// Runs what is still queued, then ends the thread. Not from the queue itself.
  ~SerialQueue() override;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void post(std::function<void()> work) override;
  /// Waits until all that was posted before this call has run. Not from the queue itself.
  void drain();
  const std::string& label() const { return label_; }

 private:
  void run();

  const std::string label_;
  std::mutex mutex_;  // guards queue_ and stopping_
  std::condition_variable wakeUp_;
  std::deque<std::function<void()>> queue_;
  bool stopping_ = false;
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace tessary
