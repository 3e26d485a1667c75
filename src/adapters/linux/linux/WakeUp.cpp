#include "linux/WakeUp.h"

#include <cerrno>
#include <cstdint>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tessary {

WakeUp::WakeUp() : fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeUp::~WakeUp() { ::close(fd_); }

void WakeUp::signal() noexcept {
  const uint64_t one = 1;
  // It fails only when the counter is full, and then the other side is awake already.
  [[maybe_unused]] const auto written = ::write(fd_, &one, sizeof one);
}

void WakeUp::drain() noexcept {
  uint64_t count;
  [[maybe_unused]] const auto got = ::read(fd_, &count, sizeof count);
}

}  // namespace tessary
