#pragma once

#include "base/FileDescriptor.h"

namespace tessary {

/// Ends another thread's poll(): an eventfd that is readable from signal() until drain().
class WakeUp {
 public:
  /// Throws std::system_error when the process has no descriptor left.
  WakeUp();

  int fd() const noexcept { return event_.get(); }
  /// Any thread.
  void signal() noexcept;
  void drain() noexcept;

 private:
  FileDescriptor event_;
};

}  // namespace tessary
