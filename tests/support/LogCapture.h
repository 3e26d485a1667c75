#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "base/Log.h"

namespace tessary::test {

/// Collects the program's log lines while it lives.
class LogCapture {
 public:
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;  // guards lines_
  std::vector<std::string> lines_;
  LogRedirection redirection_{[this](std::string_view line) {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
  }};
};

}  // namespace tessary::test
