#pragma once

namespace tessary {

/// Ends another thread's poll(): an eventfd that is readable from signal() until drain().
class WakeUp {
 public:
  /// Throws std::system_error when the process has no descriptor left.
  WakeUp();
  ~WakeUp();
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  int fd() const noexcept { return fd_; }
  /// Any thread.
  void signal() noexcept;
  void drain() noexcept;

 private:
  int fd_;
};

}  // namespace tessary
