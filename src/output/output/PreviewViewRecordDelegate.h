#pragma once

#include <cstdint>

namespace tessary {

/// Is told how a recording goes (output/RecordingStatus.h).
class PreviewViewRecordDelegate {
 public:
  virtual ~PreviewViewRecordDelegate() = default;
  /// Comes on the thread that wrote the status: the recording queue, for 3 the main thread. For 2,
  /// 4 and 5 the recording's lock is held, so return soon and never wait for the main thread.
  virtual void recordStatusDidChange(int64_t status) = 0;
};

}  // namespace tessary
