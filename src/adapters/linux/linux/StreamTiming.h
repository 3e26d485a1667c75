#pragma once

#include <chrono>

namespace tessary {

/// How long a stream waits for what. Tests shorten it.
struct StreamTiming {
  /// For the configuration that may follow the start.
  std::chrono::milliseconds configurationGrace{100};
  /// Without a good buffer before the stream is restarted; doubles up to the second at each restart
  /// in a row. The driver gives up on a USB transfer that failed, so that only this brings it back.
  std::chrono::milliseconds silence{2000};
  std::chrono::milliseconds longestSilence{8000};
  /// The same after a flagged buffer, the mark of such a transfer; doubles no further than
  /// `silence`.
  std::chrono::milliseconds silenceAfterFault{500};
  /// Before a start that failed is tried again; doubles likewise.
  std::chrono::milliseconds retry{100};
  std::chrono::milliseconds longestRetry{8000};
  /// Between two lines about damaged frames.
  std::chrono::milliseconds faultReport{5000};
};

}  // namespace tessary
