#include "output/RecordingFailures.h"

#include <utility>

#include <fmt/format.h>

namespace tessary {
namespace {

constexpr const char* kSilentDisk =
    "Nothing is being recorded: the disk does not answer. Stop, and choose another folder in "
    "Options.";
constexpr const char* kLostFrames =
    "Frames are being lost: the computer or the disk can't keep up. A smaller resolution needs "
    "less.";

}  // namespace

void RecordingFailures::movieBegan() {
  const std::lock_guard lock(mutex_);
  if (!std::exchange(movieFailure_, {}).empty() || std::exchange(silentTold_, false))
    post_.copy().recovered(Failure::MovieNotSaved);
  if (std::exchange(lossTold_, false)) post_.copy().recovered(Failure::FramesLost);
  silentTold_ = false;
  lastLost_.reset();
  losingSince_.reset();
  toldAt_.reset();
}

void RecordingFailures::movieFailed(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  if (!movieFailure_.empty()) return;
  movieFailure_ = fmt::format("{} Choose another folder in Options.", reason);
  if (std::exchange(lossTold_, false)) post_.copy().recovered(Failure::FramesLost);
  toldAt_.reset();
  post_.copy().failed(Failure::MovieNotSaved, movieFailure_);
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
  const bool isSilent = movieFailure_.empty() && time - *losingSince_ >= kNoAnswer;
  const bool isNews = isSilent ? !std::exchange(silentTold_, true)
                               : movieFailure_.empty() && !std::exchange(lossTold_, true);
  if (isNews) toldAt_.reset();
  tellAgain(time);
}

void RecordingFailures::tellAgain(MediaTime time) {
  if (toldAt_ && time - *toldAt_ < kAgain) return;
  const bool isFirst = !toldAt_;
  toldAt_ = time;
  if (!movieFailure_.empty()) {
    if (!isFirst) post_.copy().failed(Failure::MovieNotSaved, movieFailure_);
  } else if (silentTold_) {
    post_.copy().failed(Failure::MovieNotSaved, kSilentDisk);
  } else {
    post_.copy().failed(Failure::FramesLost, kLostFrames);
  }
}

}  // namespace tessary
