#include "base/SerialQueue.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>

#include <pthread.h>

namespace tessary {
namespace {

std::atomic<int> s_abandonedThreads{0};

constexpr size_t kSpareKept = 8;

}  // namespace

/// What the queue and its thread share; the thread may outlive the queue.
struct SerialQueue::State {
  struct Piece {
    uint64_t number = 0;
    std::function<void()> work;
  };

  std::mutex mutex;  // guards all below
  std::condition_variable changed;
  std::list<Piece> queue;
  std::list<Piece> spare;  // used again: in its steady state a queue allocates nothing
  uint64_t lastPosted = 0;
  uint64_t running = 0;  // 0 for none
  bool stopping = false;
  bool abandoned = false;

  void run() {
    std::list<Piece> current;
    std::unique_lock lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return stopping || !queue.empty(); });
      if (queue.empty()) break;
      current.splice(current.end(), queue, queue.begin());
      Piece& piece = current.front();
      running = piece.number;
      lock.unlock();
      piece.work();
      piece.work = nullptr;  // what it holds is let go before the next wait, and outside the lock
      lock.lock();
      if (spare.size() < kSpareKept) spare.splice(spare.end(), current);
      current.clear();
      running = 0;
      changed.notify_all();
    }
    if (abandoned) --s_abandonedThreads;
  }

  /// With the mutex held. Its number.
  uint64_t add(std::function<void()> work) {
    if (spare.empty()) spare.emplace_back();
    queue.splice(queue.end(), spare, spare.begin());
    queue.back() = {++lastPosted, std::move(work)};
    changed.notify_all();
    return lastPosted;
  }
  bool isIdle() const { return running == 0 && queue.empty(); }
  /// Whether all up to this one have run or were given up.
  bool isDone(uint64_t number) const {
    return (running == 0 || running > number) && (queue.empty() || queue.front().number > number);
  }
};

SerialQueue::SerialQueue(std::string label, std::optional<std::chrono::milliseconds> endLimit)
    : label_(std::move(label)), endLimit_(endLimit), state_(std::make_shared<State>()) {
  thread_ = std::thread([state = state_] { state->run(); });
  // The kernel keeps 15 characters of a thread's name; the end of a label tells queues apart.
  const std::string name = label_.size() > 15 ? label_.substr(label_.size() - 15) : label_;
  pthread_setname_np(thread_.native_handle(), name.c_str());
}

SerialQueue::~SerialQueue() {
  std::list<State::Piece> dropped;  // ends outside the lock
  std::unique_lock lock(state_->mutex);
  state_->stopping = true;
  state_->changed.notify_all();
  const bool ends =
      !endLimit_ || (!isThisThread() && state_->changed.wait_for(
                                            lock, *endLimit_, [this] { return state_->isIdle(); }));
  if (!ends) {
    dropped.swap(state_->queue);
    state_->abandoned = true;
    ++s_abandonedThreads;
  }
  lock.unlock();
  if (ends)
    thread_.join();
  else
    thread_.detach();
}

void SerialQueue::post(std::function<void()> work) {
  const std::lock_guard lock(state_->mutex);
  state_->add(std::move(work));
}

void SerialQueue::drain() {
  std::unique_lock lock(state_->mutex);
  const uint64_t last = state_->lastPosted;
  state_->changed.wait(lock, [&] { return state_->isDone(last); });
}

bool SerialQueue::runWithin(std::chrono::milliseconds limit, std::function<void()> work) {
  std::list<State::Piece> givenUp;  // ends outside the lock
  std::unique_lock lock(state_->mutex);
  const uint64_t number = state_->add(std::move(work));
  const auto done = [&] { return state_->isDone(number); };
  if (state_->changed.wait_for(lock, limit, done)) return true;
  const auto waiting = std::ranges::find(state_->queue, number, &State::Piece::number);
  if (waiting != state_->queue.end()) givenUp.splice(givenUp.end(), state_->queue, waiting);
  return false;
}

int SerialQueue::abandonedThreads() { return s_abandonedThreads; }

}  // namespace tessary
