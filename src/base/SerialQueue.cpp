#include "base/SerialQueue.h"

#include <future>
#include <memory>
#include <utility>

#include <pthread.h>

namespace tessary {

SerialQueue::SerialQueue(std::string label) : label_(std::move(label)), thread_([this] { run(); }) {
  // The kernel keeps 15 characters of a thread's name; the end of a label tells queues apart.
  const std::string name = label_.size() > 15 ? label_.substr(label_.size() - 15) : label_;
  pthread_setname_np(thread_.native_handle(), name.c_str());
}

SerialQueue::~SerialQueue() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wakeUp_.notify_one();
  thread_.join();
}

void SerialQueue::post(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(work));
  }
  wakeUp_.notify_one();
}

void SerialQueue::drain() {
  // Shared, because the wait may be over while the queue is still inside set_value().
  const auto reached = std::make_shared<std::promise<void>>();
  const std::future<void> future = reached->get_future();
  post([reached] { reached->set_value(); });
  future.wait();
}

void SerialQueue::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wakeUp_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (queue_.empty()) return;
    auto work = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    work();
    work = nullptr;  // what it holds is let go before the next wait, and outside the lock
    lock.lock();
  }
}

}  // namespace tessary
