#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FakeVideoDriver.h"
#include "LogCapture.h"
#include "linux/V4l2DeviceInput.h"

namespace tessary::test {

/// Notes what a stream sends.
class RecordingSink final : public FrameSink {
 public:
  struct Received {
    TextureSize size;
    uint8_t firstByte;
    MediaTime stamp;
    friend bool operator==(const Received&, const Received&) = default;
  };

  void deliver(const SampleBuffer& frame) override {
    const std::lock_guard lock(mutex_);
    frames_.push_back(
        {frame.imageBuffer->size(), frame.imageBuffer->data()[0], frame.presentationTimeStamp});
    changed_.notify_all();
  }
  void streamFailed(const std::string& reason) override {
    const std::lock_guard lock(mutex_);
    failures_.push_back(reason);
    changed_.notify_all();
  }

  std::vector<Received> frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
  }
  std::vector<std::string> failures() const {
    const std::lock_guard lock(mutex_);
    return failures_;
  }
  bool waitForFrames(size_t count) const {
    return wait([&] { return frames_.size() >= count; });
  }
  bool waitForFailure() const {
    return wait([&] { return !failures_.empty(); });
  }

 private:
  bool wait(const std::function<bool()>& condition) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), condition);
  }
  mutable std::mutex mutex_;  // guards all below
  mutable std::condition_variable changed_;
  std::vector<Received> frames_;
  std::vector<std::string> failures_;
};

/// Takes any bytes for a picture whose first byte is theirs, but for those that start with 'X'.
/// While the gate is shut, decoding waits at it.
class Decoding {
 public:
  struct Call {
    size_t bytes;
    TextureSize announced;
    size_t bytesPerRow;
    friend bool operator==(const Call&, const Call&) = default;
  };

  FrameDecoderFactory factory() {
    return [this](uint32_t subType) -> std::unique_ptr<FrameDecoder> {
      const std::lock_guard lock(mutex_);
      subTypes_.push_back(subType);
      if (!knowsFormats_) return nullptr;
      return std::make_unique<Decoder>(*this);
    };
  }

  void shutGate() { setGate(false); }
  void openGate() { setGate(true); }
  bool waitUntilSomethingWaits() const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), [&] { return waiting_; });
  }
  void knowNothing() { knowsFormats_ = false; }
  std::vector<Call> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  std::vector<uint32_t> subTypes() const {
    const std::lock_guard lock(mutex_);
    return subTypes_;
  }

 private:
  class Decoder final : public FrameDecoder {
   public:
    explicit Decoder(Decoding& owner) : owner_(owner) {}
    std::shared_ptr<PixelBuffer> decode(std::span<const uint8_t> bytes, TextureSize announced,
                                        size_t bytesPerRow, PixelBufferPool& pool) override {
      owner_.pass({bytes.size(), announced, bytesPerRow});
      uint8_t sum = 0;
      for (const uint8_t byte : bytes) sum = uint8_t(sum + byte);  // every byte can be read
      if (bytes.front() == 'X') return nullptr;
      if (bytes.front() == 'M') throw std::bad_alloc();
      auto picture = pool.take(announced);
      picture->data()[0] = bytes.front();
      picture->data()[1] = sum;
      return picture;
    }

   private:
    Decoding& owner_;
  };

  void setGate(bool open) {
    const std::lock_guard lock(mutex_);
    gateIsOpen_ = open;
    changed_.notify_all();
  }
  void pass(Call call) {
    std::unique_lock lock(mutex_);
    calls_.push_back(call);
    waiting_ = true;
    changed_.notify_all();
    changed_.wait(lock, [&] { return gateIsOpen_; });
    waiting_ = false;
  }

  mutable std::mutex mutex_;  // guards all below
  mutable std::condition_variable changed_;
  bool gateIsOpen_ = true;
  bool waiting_ = false;
  bool knowsFormats_ = true;
  std::vector<Call> calls_;
  std::vector<uint32_t> subTypes_;
};

/// A fake camera, opened, with all that a stream needs. Its waits are so long that no test runs
/// into one by being slow; a test of a wait shortens that one.
struct StreamRig {
  LogCapture log;
  std::shared_ptr<FakeVideoDriver> driver = std::make_shared<FakeVideoDriver>();
  Decoding decoding;
  StreamTiming timing = {.configurationGrace = std::chrono::milliseconds(0),
                         .silence = std::chrono::minutes(1),
                         .longestSilence = std::chrono::minutes(1),
                         .silenceAfterFault = std::chrono::minutes(1),
                         .retry = std::chrono::milliseconds(1),
                         .longestRetry = std::chrono::milliseconds(4),
                         .faultReport = std::chrono::minutes(1)};
  std::shared_ptr<V4l2CaptureDevice> device;
  std::string error;
  RecordingSink sink;
  std::unique_ptr<V4l2DeviceInput> input;

  /// Asks the camera for its formats, as the catalogue of cameras does.
  void discover() {
    const NodeProbe probe = probeNode(*driver, "/dev/video7");
    V4l2CaptureDevice::Description description;
    description.localizedName = "Scope";
    description.devNode = "/dev/video7";
    description.formats = probe.formats;
    description.defaultFormat = probe.currentFormat;
    device = std::make_shared<V4l2CaptureDevice>(description);
  }
  bool open() {
    if (!device) discover();
    auto opened = V4l2DeviceInput::open(driver, device, decoding.factory(), timing);
    error = opened.error();
    input = opened ? *std::move(opened) : nullptr;
    return input != nullptr;
  }
  /// Opens the camera and waits until it runs.
  bool start() {
    if (!open()) return false;
    input->startStreaming(sink);
    return driver->waitForStreamOn(1);
  }
  bool configure(uint32_t subType, int32_t width, int32_t height, Fraction duration) {
    if (!device->lockForConfiguration()) return false;
    device->setActiveFormat({subType, width, height, {}});
    device->setActiveVideoMinFrameDuration(duration);
    device->unlockForConfiguration();
    return true;
  }
  bool waitForCounters(const std::function<bool(const StreamCounters&)>& condition) const {
    return driver->waitUntil([&] { return condition(input->counters()); });
  }
  size_t linesWith(std::string_view text) const {
    size_t count = 0;
    for (const auto& line : log.lines()) count += line.find(text) != std::string::npos;
    return count;
  }
  bool leakFree() const { return driver->openDescriptors() == 0 && driver->mappings() == 0; }
};

}  // namespace tessary::test
