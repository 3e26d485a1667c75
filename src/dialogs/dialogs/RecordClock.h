#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "dialogs/MissedTicks.h"
#include "output/PreviewViewRecordDelegate.h"

namespace tessary {

/// The limits that a recording can have: titles, and seconds, 0 for none.
inline constexpr size_t kRecordLimits = 6;
inline constexpr std::array<std::string_view, kRecordLimits> s_limitStrings{
    "No Limit", "30 seconds", "60 seconds", "10 minutes", "30 minutes", "1hour"};
inline constexpr std::array<int32_t, kRecordLimits> s_limitSeconds{0, 30, 60, 600, 1800, 3600};

/// How many seconds a recording may last with `maxRecord`; 0, no limit, for less than 10.
int32_t recordLimit(int32_t maxRecord) noexcept;

/// Index of the limit of `maxRecord` seconds, 0 if it is none of the six.
size_t recordLimitIndex(int32_t maxRecord) noexcept;

/// The clock of the record sheet. It is started by the first frame that is written, on the
/// recording queue, and driven by the sheet's timer on the main thread. It stands apart from the
/// sheet because a recording may hold on to it for a moment longer than the sheet lives. Ticks that
/// were missed are counted with the next one.
class RecordClock final : public PreviewViewRecordDelegate {
 public:
  explicit RecordClock(MonotonicNow now = std::chrono::steady_clock::now)
      : ticks_(std::move(now)) {}

  /// Starts the clock at status 5, the first written frame; every other status is ignored.
  void recordStatusDidChange(int64_t status) override;

  /// What a tick led to.
  enum class Tick { AtRest, Counted, LimitPassed };
  /// One tenth of a second has passed; does nothing before the start. Past the limit of `maxRecord`
  /// seconds no missed ticks are counted.
  Tick tick(int32_t maxRecord);

  /// Tenths of a second since the first written frame; -1 until then.
  int32_t elapsed() const noexcept { return elapsed_; }
  /// "s.t", and from the first tenth past one minute "m:ss.t".
  std::string fmtSeconds() const;

 private:
  std::atomic<int32_t> elapsed_{-1};
  MissedTicks ticks_;
};

}  // namespace tessary
