#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

#include "base/Executor.h"

namespace tessary {

/// A thread with a name that runs what is posted to it, one piece after the other.
///
/// A queue with an end limit is for calls that may never come back, as on a disk that has stopped
/// answering: a thread that is still busy when the limit has passed is left to itself, and what is
/// queued behind is never run. The work of such a queue owns all that it uses, for it may outlive
/// everything else.
class SerialQueue final : public Executor {
 public:
  explicit SerialQueue(std::string label,
                       std::optional<std::chrono::milliseconds> endLimit = std::nullopt);
  /// Runs what is still queued, within the end limit if there is one, then ends the thread. From
  /// the queue itself only with an end limit.
  ~SerialQueue() override;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void post(std::function<void()> work) override;
  /// Waits until all that was posted before this call has run. Not from the queue itself.
  void drain();
  /// Runs `work` behind what was posted before and returns what it did; nothing if that takes
  /// longer than `limit`. Work that has not begun by then never does; otherwise it goes on
  /// unheeded, so it must own all that it uses. Not from the queue itself.
  template <typename Work>
  auto call(std::chrono::milliseconds limit, Work work)
      -> std::optional<std::invoke_result_t<Work&>>;
  bool isThisThread() const { return thread_.get_id() == std::this_thread::get_id(); }
  const std::string& label() const { return label_; }

  /// How many threads have been left to themselves and still run. While there are any, what they
  /// may use must not be taken down: the process has to end without it.
  static int abandonedThreads();

 private:
  struct State;

  /// Whether `work` has run within `limit`.
  bool runWithin(std::chrono::milliseconds limit, std::function<void()> work);

  const std::string label_;
  const std::optional<std::chrono::milliseconds> endLimit_;
  const std::shared_ptr<State> state_;  // shared with the thread
  std::thread thread_;
};

/// Runs `work` on a thread of its own and returns what it did; nothing if that takes longer than
/// `limit`. It then goes on unheeded, so it must own all that it uses.
template <typename Work>
auto callWithin(std::chrono::milliseconds limit, Work work) {
  SerialQueue queue("com.tessary.bounded", std::chrono::milliseconds(0));
  return queue.call(limit, std::move(work));
}

template <typename Work>
auto SerialQueue::call(std::chrono::milliseconds limit, Work work)
    -> std::optional<std::invoke_result_t<Work&>> {
  const auto result = std::make_shared<std::optional<std::invoke_result_t<Work&>>>();
  if (!runWithin(limit, [result, work = std::move(work)]() mutable { result->emplace(work()); }))
    return std::nullopt;
  return std::move(*result);
}

}  // namespace tessary
