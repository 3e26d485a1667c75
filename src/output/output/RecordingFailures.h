#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "base/FailurePost.h"
#include "base/Time.h"

namespace tessary {

/// Decides what the user is told while a movie is recorded. Any thread.
class RecordingFailures {
 public:
  /// Frames that are lost for longer, of the movie's time, mean that the disk does not answer.
  static constexpr MediaTime kNoAnswer{2'000'000};
  /// So long without a loss, and frames are no longer lost.
  static constexpr MediaTime kQuiet{2'000'000};
  /// While frames go on being lost the user is told again this often: a message goes by itself.
  static constexpr MediaTime kAgain{5'000'000};

  RecordingFailures(Executor& mainQueue, FailureListener& listener) : post_(mainQueue, listener) {}

  /// A movie begins: what was told of the last one is over.
  void movieBegan();
  /// The movie has ended before its time, or never begun. `reason` is a sentence or two.
  void movieFailed(const std::string& reason);
  void frameTaken(MediaTime time);
  void frameLost(MediaTime time);

 private:
  /// With the mutex held; nothing within kAgain of the last time.
  void tellAgain(MediaTime time);

  FailurePost post_;

  std::mutex mutex_;          // guards all below
  std::string movieFailure_;  // what was told of the movie's end; empty for nothing
  bool silentTold_ = false;   // that the disk does not answer
  bool lossTold_ = false;
  std::optional<MediaTime> toldAt_;
  std::optional<MediaTime> lastLost_;
  std::optional<MediaTime> losingSince_;  // the first frame lost since one was taken
};

}  // namespace tessary
