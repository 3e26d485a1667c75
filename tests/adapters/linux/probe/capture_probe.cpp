// Lists the machine's cameras and streams from one, through the same adapter and decoders as the
// program: to try a camera, or the adapter on a camera.
//
//   capture_probe                         lists cameras and formats
//   capture_probe --stream N [options]    takes N good frames, and says how it went
//     --id TEXT          the camera whose identity contains TEXT; the first one otherwise
//     --format CODE WxH  for instance dmb1 1280x720; the camera's default otherwise
//     --wait SECONDS     gives up after that long (30)
//     --every N          prints a line every N frames (30)
//   capture_probe --watch SECONDS         prints cameras that come and go
//
// With --watch and --stream together it goes on when the camera comes back, as the program does.
// Ends with 0 if what was asked for was seen.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>

#include <fmt/format.h>

#include "base/FourCharCode.h"
#include "base/Number.h"
#include "jpeg/JpegFrameDecoder.h"
#include "linux/V4l2CaptureSystem.h"
#include "linux/V4l2DeviceInput.h"
#include "yuv/YuvFrameDecoder.h"

namespace {

using namespace tessary;
using Clock = std::chrono::steady_clock;

// The program's main queue, run by this program's main().
class MainQueue final : public Executor {
 public:
  void post(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(work));
    changed_.notify_one();
  }
  void runUntil(Clock::time_point end) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, end, [&] { return !queue_.empty(); })) return;
    auto work = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    work();
  }

 private:
  std::mutex mutex_;  // guards queue_
  std::condition_variable changed_;
  std::deque<std::function<void()>> queue_;
};

void say(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

std::string codeText(uint32_t code) {
  return {char(code >> 24), char(code >> 16), char(code >> 8), char(code)};
}

class CountingSink final : public FrameSink {
 public:
  explicit CountingSink(uint64_t every) : every_(every) {}
  void deliver(const SampleBuffer& frame) override {
    const auto size = frame.imageBuffer->size();
    if (++frames % every_ == 0 || frames == 1)
      say(fmt::format("frame {} {}x{} at {} us", frames.load(), size.width, size.height,
                      frame.presentationTimeStamp.count()));
  }
  void streamFailed(const std::string& reason) override {
    say("failed: " + reason);
    failed = true;
  }
  std::atomic<uint64_t> frames = 0;
  std::atomic<bool> failed = false;

 private:
  const uint64_t every_;
};

void list(CaptureSystem& system) {
  for (const auto& device : system.devices()) {
    say(fmt::format("{}\n  {}\n  {}, by \"{}\"{}", device->uniqueID(), device->modelID(),
                    device->localizedName(), device->manufacturer(),
                    device->transportType() == kTransportTypeUSB ? ", on USB" : ""));
    for (const auto& format : device->formats()) {
      std::string rates;
      for (const auto& range : format.videoSupportedFrameRateRanges)
        rates += fmt::format(" {}/{}", range.minFrameDuration.numerator,
                             range.minFrameDuration.denominator);
      say(fmt::format("  {} {}x{}{}", codeText(format.mediaSubType), format.width, format.height,
                      rates));
    }
  }
  say(fmt::format("{} cameras", system.devices().size()));
}

struct Options {
  uint64_t frames = 0;
  double watch = 0;
  double wait = 30;
  uint64_t every = 30;
  std::string id, code, size;
};

void startOn(CaptureSystem& system, const Options& options, CountingSink& sink,
             std::unique_ptr<CaptureDeviceInput>& input, std::string& uniqueID) {
  for (const auto& device : system.devices()) {
    if (device->uniqueID().find(options.id) == std::string::npos) continue;
    auto opened = system.makeDeviceInput(device);
    if (!opened) {
      say("can't open: " + opened.error());
      return;
    }
    input = *std::move(opened);
    uniqueID = device->uniqueID();
    input->startStreaming(sink);
    const bool locked = device->lockForConfiguration();
    for (const auto& format : device->formats()) {
      if (codeText(format.mediaSubType) != options.code ||
          fmt::format("{}x{}", format.width, format.height) != options.size)
        continue;
      device->setActiveFormat(format);
      if (!format.videoSupportedFrameRateRanges.empty())
        device->setActiveVideoMinFrameDuration(
            format.videoSupportedFrameRateRanges[0].minFrameDuration);
      break;
    }
    if (locked) device->unlockForConfiguration();
    return;
  }
  say("no such camera");
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    const auto value = [&]() -> std::string { return i + 1 < argc ? argv[++i] : ""; };
    if (name == "--stream") options.frames = uint64_t(int64Value(value()));
    if (name == "--id") options.id = value();
    if (name == "--wait") options.wait = doubleValue(value());
    if (name == "--watch") options.watch = doubleValue(value());
    if (name == "--every") options.every = uint64_t(std::max<int64_t>(int64Value(value()), 1));
    if (name == "--format") {
      options.code = value();
      options.size = value();
    }
  }

  MainQueue mainQueue;
  V4l2CaptureSystem system(mainQueue, [](uint32_t subType) -> std::unique_ptr<FrameDecoder> {
    if (subType == kMediaSubTypeMJPEG) return std::make_unique<JpegFrameDecoder>();
    return YuvFrameDecoder::make(subType);
  });
  list(system);
  if (options.frames == 0 && options.watch == 0) return system.devices().empty() ? 1 : 0;

  CountingSink sink(options.every);
  std::unique_ptr<CaptureDeviceInput> input;
  std::string uniqueID;
  const auto sayCounters = [&] {
    if (const auto* stream = dynamic_cast<V4l2DeviceInput*>(input.get())) {
      const StreamCounters now = stream->counters();
      say(fmt::format(
          "counted: {} delivered, {} flagged, {} too short, {} undecodable, {} late, {} "
          "missing, {} restarts",
          now.delivered, now.flagged, now.tooShort, now.undecodable, now.late, now.gaps,
          now.restarts));
    }
  };
  system.setHotPlugHandlers(
      [&] {
        say(fmt::format("connected, {} cameras now", system.devices().size()));
        if (options.frames > 0 && !input) startOn(system, options, sink, input, uniqueID);
      },
      [&] {
        say(fmt::format("disconnected, {} cameras now", system.devices().size()));
        if (input && !system.deviceWithUniqueID(uniqueID)) {
          input->stopStreaming();
          sayCounters();
          input.reset();
        }
      });
  if (options.frames > 0) startOn(system, options, sink, input, uniqueID);

  const auto began = Clock::now();
  const auto seconds = [&](double count) {
    return began +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
  };
  const auto end = seconds(options.watch > 0 ? options.watch : options.wait);
  while (Clock::now() < end && !sink.failed) {
    if (options.watch == 0 && (sink.frames >= options.frames || !input)) break;
    mainQueue.runUntil(std::min(end, Clock::now() + std::chrono::milliseconds(20)));
  }
  const double took = std::chrono::duration<double>(Clock::now() - began).count();
  if (input) {
    input->stopStreaming();
    sayCounters();
  }
  if (options.frames > 0) say(fmt::format("{} frames in {:.2f} s", sink.frames.load(), took));
  return sink.failed || sink.frames < options.frames ? 1 : 0;
}
