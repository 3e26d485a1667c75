#include "linux/WakeUp.h"

#include <cerrno>
#include <cstdint>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tessary {

WakeUp::WakeUp() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_.isOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void WakeUp::signal() noexcept {
  const uint64_t one = 1;
  // It fails only when the counter is full, and then the other side is awake already.
  [[maybe_unused]] const auto written = ::write(fd(), &one, sizeof one);
}

void WakeUp::drain() noexcept {
  uint64_t count;
  [[maybe_unused]] const auto got = ::read(fd(), &count, sizeof count);
}

}  // namespace tessary
