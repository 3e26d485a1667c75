#include "qt/QtMainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace tessary {
namespace {

/// Runs one piece of work. The work itself does not travel in the event: Qt's locks are not seen by
/// the thread sanitizer, and with them everything that is handed to the main thread would go
/// unseen.
constexpr auto kRunOne = QEvent::User;

}  // namespace

void QtMainQueue::post(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(work));
  }
  QCoreApplication::postEvent(this, new QEvent(kRunOne));
}

bool QtMainQueue::event(QEvent* event) {
  if (event->type() != kRunOne) return QObject::event(event);
  std::function<void()> work;
  {
    const std::lock_guard lock(mutex_);
    work = std::move(queue_.front());
    queue_.pop_front();
  }
  work();  // may be the end of this queue
  return true;
}

}  // namespace tessary
