#include "dialogs/RecordClock.h"

#include <algorithm>

#include <fmt/format.h>

#include "output/RecordingStatus.h"

namespace tessary {
namespace {

constexpr int32_t kShortestLimit = 10;
constexpr int32_t kTenths = 10;
constexpr int32_t kTenthsAMinute = 600;

}  // namespace

size_t recordLimitIndex(int32_t maxRecord) noexcept {
  for (size_t i = 0; i < s_limitSeconds.size(); ++i)
    if (s_limitSeconds[i] == maxRecord) return i;
  return 0;
}

int32_t recordLimit(int32_t maxRecord) noexcept {
  return maxRecord >= kShortestLimit ? maxRecord : 0;
}

void RecordClock::recordStatusDidChange(int64_t status) {
  if (status != kRecordingRunning) return;
  ticks_.restart();
  elapsed_ = 0;
}

RecordClock::Tick RecordClock::tick(int32_t maxRecord) {
  const int32_t before = elapsed_;
  if (before < 0) return Tick::AtRest;
  const int32_t now = ticks_.afterOneMore(before);
  const int64_t limit = int64_t(recordLimit(maxRecord)) * kTenths;
  if (limit == 0 || now <= limit) {
    elapsed_ = now;
    return Tick::Counted;
  }
  // The first tick past the limit ends it, be it one that was missed.
  elapsed_ = int32_t(std::max(int64_t(before), limit) + 1);
  return Tick::LimitPassed;
}

std::string RecordClock::fmtSeconds() const {
  const int32_t e = elapsed_;
  if (e > kTenthsAMinute)
    return fmt::format("{}:{:02}.{}", e / kTenthsAMinute, e % kTenthsAMinute / kTenths,
                       e % kTenths);
  return fmt::format("{}.{}", e / kTenths, e % kTenths);
}

}  // namespace tessary
