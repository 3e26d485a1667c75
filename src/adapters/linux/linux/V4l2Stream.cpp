#include "linux/V4l2Stream.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <utility>

#include <linux/videodev2.h>
#include <pthread.h>

#include "base/Log.h"
#include "linux/DriverError.h"

namespace tessary {
namespace {

using namespace std::chrono;

// A slow camera is not a silent one.
constexpr int kSilentFrames = 4;

int pollTimeout(std::optional<steady_clock::time_point> deadline) {
  if (!deadline) return -1;
  const auto left = ceil<milliseconds>(*deadline - steady_clock::now()).count();
  return int(std::clamp<int64_t>(left, 0, 60'000));
}

MediaTime timeStampOf(const v4l2_buffer& buffer) {
  const MediaTime stamp = seconds(buffer.timestamp.tv_sec) + microseconds(buffer.timestamp.tv_usec);
  if (stamp.count() != 0) return stamp;
  // A driver without time stamps: the moment of arrival, by the clock the others use.
  return duration_cast<MediaTime>(steady_clock::now().time_since_epoch());
}

std::string inSeconds(milliseconds duration) {
  return fmt::format("{:.1f} s", double(duration.count()) / 1000);
}

}  // namespace

V4l2Stream::V4l2Stream(const VideoNode& node, V4l2CaptureDevice& device,
                       const FrameDecoderFactory& makeDecoder, const StreamTiming& timing,
                       FrameSink& sink)
    : node_(node),
      device_(device),
      makeDecoder_(makeDecoder),
      timing_(timing),
      sink_(sink),
      name_(device.localizedName()),
      seenSerial_(device.configurationSerial()),
      buffers_(node),
      silence_(timing.silence),
      silenceAfterFault_(timing.silenceAfterFault),
      retry_(timing.retry) {
  device_.attach(wakeUp_);
  thread_ = std::thread([this] { run(); });
  pthread_setname_np(thread_.native_handle(), "camera-stream");
}

V4l2Stream::~V4l2Stream() { stop(); }

void V4l2Stream::stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  wakeUp_.signal();
  thread_.join();
  device_.detach(wakeUp_);
}

StreamCounters V4l2Stream::counters() const {
  const std::lock_guard lock(mutex_);
  return counters_;
}

void V4l2Stream::run() {
  waitForConfiguration();
  Outcome outcome = stopping_ ? Outcome::Stopped : Outcome::Running;
  while (outcome < Outcome::Stopped) {
    outcome = start();
    if (outcome == Outcome::Running) outcome = pump();
    stopVideo();
    if (outcome == Outcome::Silent) {
      log("{}: no picture for {}, restarting it", name_,
          inSeconds(duration_cast<milliseconds>(Clock::now() - lastGoodBuffer_)));
      silence_ = std::min(silence_ * 2, timing_.longestSilence);
      silenceAfterFault_ = std::min(silenceAfterFault_ * 2, timing_.silence);
      count(&StreamCounters::restarts);
    } else if (outcome == Outcome::Trouble) {
      log("{}: {}, restarting it in {}", name_, errorText(lastError_), inSeconds(retry_));
      count(&StreamCounters::restarts);
      const auto deadline = Clock::now() + retry_;
      retry_ = std::min(retry_ * 2, timing_.longestRetry);
      // Another configuration may be what helps, and is not made to wait.
      while (!stopping_ && device_.configurationSerial() == seenSerial_ && Clock::now() < deadline)
        waitUntil(deadline);
    }
    if (stopping_ && outcome < Outcome::Stopped) outcome = Outcome::Stopped;
  }
  const StreamCounters sum = counters();
  log("{}: stream ended{}, {} frames delivered, {} flagged, {} too short, {} undecodable, {} late, "
      "{} missing, {} restarts",
      name_, outcome == Outcome::Gone ? " by unplugging" : "", sum.delivered, sum.flagged,
      sum.tooShort, sum.undecodable, sum.late, sum.gaps, sum.restarts);
  if (outcome == Outcome::Failed) {
    log("{}", failure_);
    sink_.streamFailed(failure_);
  }
}

void V4l2Stream::waitForConfiguration() {
  const auto deadline = Clock::now() + timing_.configurationGrace;
  while (!stopping_) {
    const auto now = device_.configuration();
    if (!now.locked && (now.serial != seenSerial_ || Clock::now() >= deadline)) return;
    waitUntil(now.locked ? std::nullopt : std::optional(deadline));
  }
}

V4l2Stream::Outcome V4l2Stream::start() {
  const auto configuration = device_.configuration();
  seenSerial_ = configuration.serial;
  if (!configuration.wanted)
    return fail(fmt::format("{} offers no picture format that can be shown.", name_));
  if (configuration.wanted != current_) formatIsSet_ = false;
  current_ = configuration.wanted;
  lastSequence_.reset();

  if (!formatIsSet_) {
    // The format can be set only while there are no buffers. When nothing but the stream is
    // restarted they are kept, as the claim on the camera hangs on them.
    unsigned none = 0;
    if (const int error = node_.requestBuffers(none)) return outcomeOf(error);
    if (const int error = negotiateVideo(node_, *current_, agreed_)) return outcomeOf(error);
    const CaptureFormat& asked = current_->format.format;
    if (agreed_.size != TextureSize{asked.width, asked.height})
      log("{}: asked for {}x{}, it sends {}x{}", name_, asked.width, asked.height,
          agreed_.size.width, agreed_.size.height);
    const uint32_t subType = mediaSubTypeForPixelFormat(agreed_.pixelFormat);
    if (!decoder_ || subType != decoderSubType_)
      decoder_ = subType != 0 ? makeDecoder_(subType) : nullptr;
    decoderSubType_ = subType;
    if (!decoder_)
      return fail(
          fmt::format("{} sends pictures that can't be read. Choose another resolution.", name_));
    formatIsSet_ = true;
  }
  int error = buffers_.allocate();
  if (error == 0) {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    error = node_.ioctl(VIDIOC_STREAMON, &type);
  }
  if (error != 0) {
    formatIsSet_ = false;
    return outcomeOf(error);
  }
  videoIsOn_ = true;
  lastGoodBuffer_ = Clock::now();
  lastFlaggedBuffer_.reset();
  return Outcome::Running;
}

V4l2Stream::Outcome V4l2Stream::pump() {
  for (;;) {
    if (stopping_) return Outcome::Stopped;
    if (wantsReconfiguration()) return Outcome::Reconfigure;
    const auto deadline = silenceDeadline();
    if (Clock::now() >= deadline) return Outcome::Silent;

    pollfd descriptors[] = {{wakeUp_.fd(), POLLIN, 0}, {node_.fd(), POLLIN, 0}};
    if (node_.calls().poll(descriptors, 2, pollTimeout(deadline)) < 0) {
      if (errno == EINTR) continue;
      return outcomeOf(errno);
    }
    if (descriptors[0].revents) wakeUp_.drain();
    if (descriptors[1].revents) {
      bool tookAny = false;
      const Outcome outcome = takeFrames(tookAny);
      reportFaults();
      if (outcome != Outcome::Running) return outcome;
      // An error that no call tells of: without a pause it would be told again at once, for ever.
      if (!tookAny && (descriptors[1].revents & (POLLERR | POLLHUP))) return outcomeOf(EIO);
    }
  }
}

V4l2Stream::Outcome V4l2Stream::takeFrames(bool& tookAny) {
  std::optional<v4l2_buffer> newest;
  int error = 0;
  // Twice round at the most, or a camera faster than this loop would keep us in it.
  for (size_t turn = 0; turn < 2 * buffers_.size() && error == 0; ++turn) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    error = node_.ioctl(VIDIOC_DQBUF, &buffer);
    if (error != 0) break;
    if (buffer.index >= buffers_.size()) {
      error = EIO;
      break;
    }
    tookAny = true;
    noteSequence(buffer.sequence);
    std::optional<uint32_t> toRequeue = buffer.index;
    if (buffer.flags & V4L2_BUF_FLAG_ERROR) {
      count(&StreamCounters::flagged);
      lastFlaggedBuffer_ = Clock::now();
    } else if (buffer.bytesused < agreed_.fewestBytes ||
               buffer.bytesused > buffers_[buffer.index].size()) {
      count(&StreamCounters::tooShort);
    } else {
      noteGoodBuffer();
      toRequeue.reset();
      if (newest) {
        count(&StreamCounters::late);
        toRequeue = newest->index;
      }
      newest = buffer;
    }
    if (toRequeue) error = buffers_.queue(*toRequeue);
  }
  if (newest) {
    handOver(newest->index, *newest);
    if (error == 0 || error == EAGAIN) {
      if (const int queueError = buffers_.queue(newest->index)) error = queueError;
    }
  }
  return error == EAGAIN ? Outcome::Running : outcomeOf(error);
}

void V4l2Stream::handOver(uint32_t index, const v4l2_buffer& buffer) {
  SampleBuffer frame;
  frame.presentationTimeStamp = timeStampOf(buffer);
  try {
    frame.imageBuffer = decoder_->decode(buffers_[index].first(buffer.bytesused), agreed_.size,
                                         agreed_.bytesPerRow, pool_);
  } catch (const std::exception&) {
    // No memory for this picture; there may be for the next.
  }
  if (!frame.imageBuffer) {
    count(&StreamCounters::undecodable);
    return;
  }
  count(&StreamCounters::delivered);
  sink_.deliver(frame);
}

void V4l2Stream::stopVideo() noexcept {
  if (std::exchange(videoIsOn_, false)) {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    // Fails when the camera is gone, and then it is off. After any other failure it may still be
    // on, and would have no part in a new configuration: once more.
    if (node_.ioctl(VIDIOC_STREAMOFF, &type) != 0) node_.ioctl(VIDIOC_STREAMOFF, &type);
  }
  buffers_.unmap();
}

V4l2Stream::Outcome V4l2Stream::outcomeOf(int error) {
  lastError_ = error;
  switch (classify(error)) {
    case DriverError::None: return Outcome::Running;
    case DriverError::Gone: return Outcome::Gone;
    case DriverError::Passing: return Outcome::Trouble;
    case DriverError::Lasting: break;
  }
  return fail(streamFailureText(name_, error));
}

V4l2Stream::Outcome V4l2Stream::fail(std::string reason) {
  failure_ = std::move(reason);
  return Outcome::Failed;
}

void V4l2Stream::noteGoodBuffer() {
  lastGoodBuffer_ = Clock::now();
  lastFlaggedBuffer_.reset();
  silence_ = timing_.silence;
  silenceAfterFault_ = timing_.silenceAfterFault;
  retry_ = timing_.retry;
}

V4l2Stream::Clock::time_point V4l2Stream::silenceDeadline() const {
  const milliseconds slowest = kSilentFrames * agreed_.frameInterval;
  const auto end = lastGoodBuffer_ + std::max(silence_, slowest);
  if (!lastFlaggedBuffer_) return end;
  return std::min(end, *lastFlaggedBuffer_ + std::max(silenceAfterFault_, slowest));
}

void V4l2Stream::noteSequence(uint32_t sequence) {
  if (lastSequence_) {
    // Steps back and drivers that don't count are no gaps.
    const uint32_t step = sequence - *lastSequence_;
    if (step > 1 && step < 0x8000'0000u) count(&StreamCounters::gaps, step - 1);
  }
  lastSequence_ = sequence;
}

bool V4l2Stream::wantsReconfiguration() {
  if (device_.configurationSerial() == seenSerial_) return false;
  const auto now = device_.configuration();
  seenSerial_ = now.serial;
  return now.wanted != current_;
}

void V4l2Stream::waitUntil(std::optional<Clock::time_point> deadline) {
  pollfd descriptor{wakeUp_.fd(), POLLIN, 0};
  node_.calls().poll(&descriptor, 1, pollTimeout(deadline));
  if (descriptor.revents) wakeUp_.drain();
}

void V4l2Stream::count(uint64_t StreamCounters::*what, uint64_t by) {
  const std::lock_guard lock(mutex_);
  counters_.*what += by;
}

void V4l2Stream::reportFaults() {
  const StreamCounters now = counters();
  if (now.faults() == reported_.faults()) return;
  if (lastReport_ && Clock::now() < *lastReport_ + timing_.faultReport) return;
  std::string text;
  const auto tell = [&](uint64_t StreamCounters::*what, std::string_view how) {
    if (now.*what == reported_.*what) return;
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", now.*what - reported_.*what, how);
  };
  tell(&StreamCounters::flagged, "flagged as damaged");
  tell(&StreamCounters::tooShort, "too short");
  tell(&StreamCounters::undecodable, "undecodable");
  tell(&StreamCounters::gaps, "never came");
  log("{}: frames lost: {}", name_, text);
  reported_ = now;
  lastReport_ = Clock::now();
}

}  // namespace tessary
