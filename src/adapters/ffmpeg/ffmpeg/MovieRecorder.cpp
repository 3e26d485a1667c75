#include "ffmpeg/MovieRecorder.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "base/Log.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;

// Of the movie's time and of the clock's. Half a second may be lost with the process: this, the
// queue, the frame at the encoder and the newest one, whose length is not known, make less. When
// frames wait for the encoder, what is encoded is written at once. A fragment costs 100 bytes and
// two short writes.
constexpr std::chrono::microseconds kFragmentSpan = 150ms;

// The container can't tell two frames apart in time by more than 35 minutes; a picture that stands
// for longer is written again.
constexpr int64_t kLongestInterval = std::chrono::microseconds(30min).count();

// What a frame is said to last in a fragment while nobody knows: no longer than any may.
constexpr int64_t kUnknownDuration = 1;

// A movie's last picture is shown for as long as the one before it, but no longer than this: that
// may have been a gap.
constexpr int64_t kLongestLastInterval = std::chrono::microseconds(1s).count();

std::string now() {
  using namespace std::chrono;
  return fmt::format("{:%FT%TZ}", fmt::gmtime(system_clock::to_time_t(system_clock::now())));
}

}  // namespace

Result<std::shared_ptr<MovieRecorder>> MovieRecorder::make(std::unique_ptr<MovieEncoder> encoder,
                                                           std::unique_ptr<MovieFile> file) {
  auto muxer = MovieMuxer::make(encoder->parameters(), MovieFile::kGap, now());
  if (!muxer) return Error{muxer.error()};
  return std::shared_ptr<MovieRecorder>(
      new MovieRecorder(std::move(encoder), *std::move(muxer), std::move(file)));
}

MovieRecorder::MovieRecorder(std::unique_ptr<MovieEncoder> encoder,
                             std::unique_ptr<MovieMuxer> muxer, std::unique_ptr<MovieFile> file)
    : encoder_(std::move(encoder)),
      muxer_(std::move(muxer)),
      file_(std::move(file)),
      lastInterval_(std::chrono::microseconds(1s).count() / 30) {}

bool MovieRecorder::hasRoom() const {
  const std::lock_guard lock(mutex_);
  return hasRoomLocked();
}

bool MovieRecorder::hasRoomLocked() const {
  if (!error_.empty()) return true;
  if (!unwritten_.empty() && SteadyClock::now() - unwritten_.front().since >= kLongestUnwritten)
    return false;
  if (queue_.empty() && !isAtWork_) return true;
  if (int64_t(queue_.size() + 1) * lastFrameTook_.count() > kQueueSpan) return false;
  if (queue_.empty()) return true;
  return queue_.size() < kQueueCapacity && queue_.back().time - timeAtEncoder_ < kQueueSpan;
}

bool MovieRecorder::push(std::shared_ptr<const PixelBuffer> picture, int64_t time) {
  const std::lock_guard lock(mutex_);
  if (!hasRoomLocked() || stopping_ || !error_.empty()) return false;
  queue_.push_back({std::move(picture), time});
  unwritten_.push_back({time, SteadyClock::now()});
  changed_.notify_one();
  return true;
}

void MovieRecorder::stop(std::function<void()> completed) {
  const std::lock_guard lock(mutex_);
  if (stopping_) return;
  stopping_ = true;
  completed_ = std::move(completed);
  changed_.notify_one();
}

bool MovieRecorder::forgetCompletion() {
  const std::lock_guard lock(mutex_);
  completed_ = {};
  return !completionHandedOut_;
}

std::string MovieRecorder::error() const {
  const std::lock_guard lock(mutex_);
  return error_;
}

int64_t MovieRecorder::framesWritten() const {
  const std::lock_guard lock(mutex_);
  return framesWritten_;
}

std::function<void()> MovieRecorder::run() {
  const auto guarded = [this](void (MovieRecorder::*part)()) {
    try {
      (this->*part)();
    } catch (const std::bad_alloc&) {
      fail("There is not enough memory to record.");
    }
  };
  guarded(&MovieRecorder::openFile);
  guarded(&MovieRecorder::work);
  guarded(&MovieRecorder::finish);
  file_.reset();

  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopping_; });
  completionHandedOut_ = true;
  return std::exchange(completed_, {});
}

void MovieRecorder::openFile() {
  if (const auto opened = file_->open(); !opened)
    fail(fmt::format("The movie can't be made: {}.", opened.error()));
}

void MovieRecorder::work() {
  while (goesOn()) {
    const auto frame = nextFrame();
    const auto began = SteadyClock::now();
    if (frame) encode(*frame);
    writeDueFragment();
    if (frame) frameIsDone(began);
  }
  if (error().empty()) {
    MovieEncoder::Packets rest;
    if (const auto drained = encoder_->drain(rest); !drained) fail(drained.error());
    collect(std::move(rest));
  }
  if (!pending_.empty()) writeFragment(pending_.size(), lastInterval_);
}

bool MovieRecorder::goesOn() const {
  const std::lock_guard lock(mutex_);
  return error_.empty() && !(stopping_ && queue_.empty());
}

/// The next frame; nothing when there is none at the end, or when what is pending is due first.
std::optional<MovieRecorder::Frame> MovieRecorder::nextFrame() {
  std::unique_lock lock(mutex_);
  const auto somethingToDo = [this] { return !queue_.empty() || stopping_; };
  if (pending_.empty())
    changed_.wait(lock, somethingToDo);
  else
    changed_.wait_until(lock, dueAt_, somethingToDo);
  if (queue_.empty()) return {};
  Frame frame = std::move(queue_.front());
  queue_.pop_front();
  timeAtEncoder_ = frame.time;
  isAtWork_ = true;
  return frame;
}

void MovieRecorder::frameIsDone(SteadyClock::time_point began) {
  const std::lock_guard lock(mutex_);
  isAtWork_ = false;
  lastFrameTook_ =
      std::chrono::duration_cast<std::chrono::microseconds>(SteadyClock::now() - began);
}

void MovieRecorder::encode(const Frame& frame) {
  MovieEncoder::Packets packets;
  Result<void> encoded;
  while (encoded && lastTime_ && frame.time - *lastTime_ > kLongestInterval) {
    *lastTime_ += kLongestInterval;
    encoded = encoder_->repeat(*lastTime_, packets);
  }
  if (encoded) encoded = encoder_->encode(*frame.picture, frame.time, packets);
  if (!encoded) return fail(encoded.error());
  if (lastTime_) lastInterval_ = std::min(frame.time - *lastTime_, kLongestLastInterval);
  lastTime_ = frame.time;
  collect(std::move(packets));
}

void MovieRecorder::collect(MovieEncoder::Packets packets) {
  for (auto& packet : packets) {
    if (pending_.empty()) dueAt_ = SteadyClock::now() + kFragmentSpan;
    pending_.push_back(std::move(packet));
  }
}

std::optional<int64_t> MovieRecorder::timeOfNextFrame() const {
  const std::lock_guard lock(mutex_);
  if (queue_.empty()) return {};
  return queue_.front().time;
}

/// The first frame is written at once: from then on there is a movie. So is what is encoded while
/// others wait, for who knows how long they take.
bool MovieRecorder::isFragmentDue(bool framesWait) const {
  return framesWait || !file_->hasFragments() || SteadyClock::now() >= dueAt_ ||
         pending_.back()->pts - pending_.front()->pts >= kFragmentSpan.count();
}

/// Writes what is pending if it is time to. How long the newest frame lasts is known if another
/// waits; otherwise it is left for later, unless it has waited alone.
void MovieRecorder::writeDueFragment() {
  const auto next = timeOfNextFrame();
  if (pending_.empty() || !isFragmentDue(next.has_value())) return;
  const size_t count = pending_.size();
  if (next)
    writeFragment(count, std::min(*next - pending_.back()->pts, kLongestInterval));
  else if (count == 1)
    writeFragment(1, kUnknownDuration);
  else
    writeFragment(count - 1, pending_[count - 1]->pts - pending_[count - 2]->pts);
  dueAt_ = SteadyClock::now() + kFragmentSpan;
}

void MovieRecorder::writeFragment(size_t frames, int64_t lastDuration) {
  const MovieMuxer::Packets packets = MovieMuxer::Packets(pending_).first(frames);
  const auto giveUp = [this](const std::string& reason) {
    pending_.clear();
    fail(reason);
  };
  auto fragment = muxer_->fragment(packets, lastDuration);
  if (!fragment) return giveUp(fragment.error());
  if (const auto appended = file_->appendFragment(muxer_->head(), *fragment); !appended) {
    const std::chrono::duration<double> length = std::chrono::microseconds(packets.front()->pts);
    return giveUp(
        file_->hasFragments()
            ? fmt::format("Recording ended: {}. The movie's first {:.1f} seconds are kept.",
                          appended.error(), length.count())
            : fmt::format("Nothing was recorded: {}.", appended.error()));
  }
  if (const auto placed = muxer_->place(packets); !placed) return giveUp(placed.error());
  const int64_t last = packets.back()->pts;
  pending_.erase(pending_.begin(), pending_.begin() + std::ptrdiff_t(frames));
  const std::lock_guard lock(mutex_);
  framesWritten_ += int64_t(frames);
  while (!unwritten_.empty() && unwritten_.front().time <= last) unwritten_.pop_front();
}

/// Also after a failure: the room that the last fragment did not find is room for the contents.
void MovieRecorder::finish() {
  encoder_.reset();
  if (!file_->hasFragments()) return;
  auto contents = muxer_->contents(lastInterval_);
  if (!contents) return fail(contents.error());
  if (const auto finished = file_->finish(*contents); !finished)
    fail(fmt::format("The movie could not be finished: {}.", finished.error()));
}

void MovieRecorder::fail(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  queue_.clear();
  if (!error_.empty()) return;  // what came first tells more
  error_ = reason;
  log("Movie: {}", reason);
}

}  // namespace tessary
