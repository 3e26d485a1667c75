#pragma once

#include <functional>

namespace tessary {

/// Somewhere that work can be sent to, to run later and in order: the main queue, a serial queue.
class Executor {
 public:
  virtual ~Executor() = default;
  /// Queues `work` and returns at once. Any thread.
  virtual void post(std::function<void()> work) = 0;
};

}  // namespace tessary
