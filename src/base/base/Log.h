#pragma once
// The program's log: plain lines, without levels, to standard error. Nobody waits for it: a line
// that it can't take at once is lost, and how many were is the next line that it takes.

#include <functional>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace tessary {

/// Writes one line. Any thread.
void logLine(std::string_view line);

/// Formats and writes one line. Any thread.
template <typename... Args>
void log(fmt::format_string<Args...> format, Args&&... args) {
  logLine(fmt::format(format, std::forward<Args>(args)...));
}

/// Sends every line to `sink` instead of standard error until this object ends. Lines come on the
/// thread that logs, one at a time; `sink` must not log itself. For tests; they nest.
class LogRedirection {
 public:
  explicit LogRedirection(std::function<void(std::string_view)> sink);
  ~LogRedirection();
  LogRedirection(const LogRedirection&) = delete;
  LogRedirection& operator=(const LogRedirection&) = delete;

 private:
  std::function<void(std::string_view)> previous_;
};

}  // namespace tessary
