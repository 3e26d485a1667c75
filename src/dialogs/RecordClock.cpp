#include "dialogs/RecordClock.h"

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

void RecordClock::recordStatusDidChange(int64_t status) {
  if (status == kRecordingRunning) elapsed_ = 0;
}

RecordClock::Tick RecordClock::tick(int32_t maxRecord) noexcept {
  if (elapsed_ < 0) return Tick::AtRest;
  const int32_t now = ++elapsed_;
  if (maxRecord >= kShortestLimit && now > int64_t(maxRecord) * kTenths) return Tick::LimitPassed;
  return Tick::Counted;
}

std::string RecordClock::fmtSeconds() const {
  const int32_t e = elapsed_;
  if (e > kTenthsAMinute)
    return fmt::format("{}:{:02}.{}", e / kTenthsAMinute, e % kTenthsAMinute / kTenths,
                       e % kTenths);
  return fmt::format("{}.{}", e / kTenths, e % kTenths);
}

}  // namespace tessary
