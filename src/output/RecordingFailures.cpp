#include "output/RecordingFailures.h"

#include <utility>

#include <fmt/format.h>

namespace tessary {

void RecordingFailures::movieBegan() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(movieFailed_, false) || std::exchange(silentTold_, false))
    post_.copy().recovered(Failure::MovieNotSaved);
  if (std::exchange(lossTold_, false)) post_.copy().recovered(Failure::FramesLost);
  lastLost_.reset();
  losingSince_.reset();
}

void RecordingFailures::movieFailed(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  if (std::exchange(movieFailed_, true)) return;
  if (std::exchange(lossTold_, false)) post_.copy().recovered(Failure::FramesLost);
  post_.copy().failed(Failure::MovieNotSaved,
                      fmt::format("{} Choose another folder in Options.", reason));
}

void RecordingFailures::frameTaken(MediaTime time) {
  const std::lock_guard lock(mutex_);
  losingSince_.reset();
  if (std::exchange(silentTold_, false)) post_.copy().recovered(Failure::MovieNotSaved);
  if (lossTold_ && time - *lastLost_ >= kQuiet) {
    lossTold_ = false;
    post_.copy().recovered(Failure::FramesLost);
  }
}

void RecordingFailures::frameLost(MediaTime time) {
  const std::lock_guard lock(mutex_);
  lastLost_ = time;
  if (!losingSince_) losingSince_ = time;
  if (movieFailed_ || silentTold_) return;
  if (time - *losingSince_ >= kNoAnswer) {
    silentTold_ = true;
    post_.copy().failed(Failure::MovieNotSaved,
                        "Nothing is being recorded: the disk does not answer. Stop, and choose "
                        "another folder in Options.");
  } else if (!std::exchange(lossTold_, true)) {
    post_.copy().failed(Failure::FramesLost,
                        "Frames are being lost: the computer or the disk can't keep up. A smaller "
                        "resolution needs less.");
  }
}

}  // namespace tessary
