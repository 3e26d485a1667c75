#pragma once

#include <functional>
#include <memory>

#include <QtCore/QSocketNotifier>

#include "linux/WakeUp.h"

namespace tessary {

/// What the system may and may not do to the process, and how the process ends. The first object of
/// the program and the last to go; there is one.
class Process {
 public:
  /// A log that closes and a file that may not grow are no reason to end. From now on the toolkit's
  /// messages go to the log too.
  Process();
  /// Where threads are left that wait for a disk for ever, the process ends here, as nothing that
  /// they use may be taken down under them.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Calls `end` from the event loop, also from that of a dialog, when the system asks for the end:
  /// on SIGTERM, SIGINT and SIGHUP, except for a SIGHUP that was to be ignored. Needs the toolkit.
  void setEndHandler(std::function<void()> end);
  /// Calls `end` when a library ends the process by itself, as the toolkit does when the display
  /// has gone. The process then ends at once; the toolkit can't be used any more.
  static void setBrokenOffHandler(std::function<void()> end);

  /// From now on the process is gone within fifteen seconds, whatever hangs.
  void beginEnd(int status);

 private:
  WakeUp asked_;
  std::unique_ptr<QSocketNotifier> notifier_;
  int status_ = 0;
};

}  // namespace tessary
