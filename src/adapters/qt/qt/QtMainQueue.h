#pragma once

#include <QObject>
#include <deque>
#include <mutex>

#include "base/Executor.h"

namespace tessary {

/// The main queue: work runs in Qt's event loop on the main thread, in the order of posting, also
/// inside the loop of a dialog. Made and destroyed on the main thread; what is still queued then is
/// dropped. Nobody may post during or after that.
class QtMainQueue final : public Executor, private QObject {
 public:
  void post(std::function<void()> work) override;

 private:
  bool event(QEvent* event) override;

  std::mutex mutex_;  // guards queue_
  std::deque<std::function<void()>> queue_;
};

}  // namespace tessary
