#include "simulated/SimulatedDeviceInput.h"

#include <algorithm>
#include <utility>

namespace tessary {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

/// How long a stream that starts waits for its configuration.
constexpr auto kConfigurationWait = 100ms;

/// The clock that cameras stamp with.
MediaTime now() {
  return std::chrono::duration_cast<MediaTime>(SteadyClock::now().time_since_epoch());
}

/// The moments at which frames are due. Counted from the first, so that nothing adds up.
class Pace {
 public:
  Pace(MediaTime first, Fraction frameDuration) : first_(first), duration_(frameDuration) {}

  MediaTime due() const { return dueAt(frame_); }
  /// On to the next frame, or past those that could not be sent in time, as a camera loses them.
  void advance(MediaTime time) {
    const int64_t current = (time - first_).count() * duration_.denominator /
                            (int64_t(1'000'000) * duration_.numerator);
    frame_ = std::max(frame_ + 1, current);
  }

 private:
  MediaTime dueAt(int64_t frame) const {
    return first_ +
           MediaTime(frame * 1'000'000 * duration_.numerator / int64_t(duration_.denominator));
  }

  MediaTime first_;
  Fraction duration_;
  int64_t frame_ = 0;
};

}  // namespace

SimulatedDeviceInput::SimulatedDeviceInput(std::shared_ptr<SimulatedMicroscope> microscope,
                                           FrameDecoderFactory makeDecoder,
                                           std::shared_ptr<ImageEncoder> encoder)
    : microscope_(std::move(microscope)),
      makeDecoder_(std::move(makeDecoder)),
      encoder_(std::move(encoder)) {}

SimulatedDeviceInput::~SimulatedDeviceInput() { stopStreaming(); }

void SimulatedDeviceInput::startStreaming(FrameSink& sink) {
  stopStreaming();
  thread_ = std::jthread([this, &sink, revision = microscope_->setting().revision](
                             const std::stop_token& stop) { run(stop, sink, revision); });
}

void SimulatedDeviceInput::stopStreaming() {
  if (!thread_.joinable()) return;
  thread_.request_stop();
  thread_.join();
}

void SimulatedDeviceInput::run(const std::stop_token& stop, FrameSink& sink,
                               uint64_t revisionAtStart) {
  microscope_->wait(stop, revisionAtStart, SteadyClock::now() + kConfigurationWait);
  while (runSetting(stop, sink)) {
  }
  if (frames_) microscope_->keepFrames(std::move(frames_));
}

bool SimulatedDeviceInput::runSetting(const std::stop_token& stop, FrameSink& sink) {
  const auto isOver = [&] { return stop.stop_requested() || !microscope_->isConnected(); };
  if (isOver()) return false;
  const SimulatedMicroscope::Setting setting = microscope_->setting();
  if (!frames_ || frames_->format() != setting.format) {
    frames_ = microscope_->takeFrames(setting.format);
    if (!frames_) frames_ = std::make_unique<FrameLoop>(setting.format, encoder_);
    decoder_ = makeDecoder_(setting.format.mediaSubType);
    if (!decoder_) {
      sink.streamFailed("This program can't decode the kind of picture that was chosen.");
      return false;
    }
  }
  Pace pace(std::max(now(), earliest_), setting.frameDuration);
  for (;;) {
    microscope_->wait(stop, setting.revision, SteadyClock::time_point(pace.due()));
    if (isOver()) return false;
    if (microscope_->setting().revision != setting.revision) return true;
    const MediaTime stamp = pace.due();
    microscope_->sendUnlessFrozen([&] { sendFrame(sink, stamp); });
    pace.advance(now());
    earliest_ = pace.due();
  }
}

void SimulatedDeviceInput::sendFrame(FrameSink& sink, MediaTime stamp) {
  const CaptureFormat& format = frames_->format();
  std::span<const uint8_t> bytes = frames_->frame(frameIndex_++);
  if (microscope_->takeDamage()) bytes = bytes.first(bytes.size() / 2);
  std::shared_ptr<PixelBuffer> picture =
      decoder_->decode(bytes, {format.width, format.height}, frames_->bytesPerRow(), pool_);
  if (!picture) {
    microscope_->countDroppedFrame();
    return;
  }
  sink.deliver({microscope_->optics().seen(std::move(picture), pool_), stamp});
}

}  // namespace tessary
