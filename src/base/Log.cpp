#include "base/Log.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <utility>

#include <fmt/chrono.h>

namespace tessary {
namespace {

std::mutex s_mutex;  // guards s_sink and keeps lines whole
std::function<void(std::string_view)> s_sink;

void writeToStandardError(std::string_view line) {
  using namespace std::chrono;
  const auto now = floor<milliseconds>(system_clock::now());
  const auto fraction = int((now - floor<seconds>(now)).count());
  const std::string text = fmt::format(
      "{:%H:%M:%S}.{:03} {}\n", fmt::localtime(system_clock::to_time_t(now)), fraction, line);
  std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace

void logLine(std::string_view line) {
  const std::lock_guard lock(s_mutex);
  if (s_sink)
    s_sink(line);
  else
    writeToStandardError(line);
}

LogRedirection::LogRedirection(std::function<void(std::string_view)> sink) {
  const std::lock_guard lock(s_mutex);
  previous_ = std::exchange(s_sink, std::move(sink));
}

LogRedirection::~LogRedirection() {
  const std::lock_guard lock(s_mutex);
  s_sink = std::move(previous_);
}

}  // namespace tessary
