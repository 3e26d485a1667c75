#pragma once
// What the values of `_recordingStatus` mean.

#include <cstdint>

namespace tessary {

inline constexpr int64_t kRecordingNone = 0;  ///< Nothing has been recorded yet.
inline constexpr int64_t kRecordingStartFailed = 1;
inline constexpr int64_t kRecordingStopping = 2;  ///< The writer is finishing.
inline constexpr int64_t kRecordingFinished = 3;  ///< Without an error.
inline constexpr int64_t kRecordingWaiting = 4;   ///< The writer runs; no frame has come.
inline constexpr int64_t kRecordingRunning = 5;   ///< The first frame has come.

/// Whether frames are passed on to the recording in this state.
constexpr bool recordingTakesFrames(int64_t status) noexcept { return status >= kRecordingWaiting; }

}  // namespace tessary
