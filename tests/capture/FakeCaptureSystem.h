#pragma once
// Cameras that do what a test tells them, and note every call in its order.

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/FourCharCode.h"
#include "platform/CaptureSystem.h"

namespace tessary::test {

/// The calls of all fakes of one test, in their order. Any thread.
class CallLog {
 public:
  void note(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
  }
  std::vector<std::string> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  /// The calls since the last time.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }
  int count(const std::string& call) const {
    const std::lock_guard lock(mutex_);
    return int(std::ranges::count(calls_, call));
  }

 private:
  mutable std::mutex mutex_;  // guards calls_
  std::vector<std::string> calls_;
};

inline CaptureFormat format(uint32_t type, int32_t width, int32_t height,
                            std::vector<uint32_t> framesPerSecond = {30}) {
  CaptureFormat made{type, width, height, {}};
  for (const uint32_t rate : framesPerSecond)
    made.videoSupportedFrameRateRanges.push_back({{1, rate}, {1, 1}});
  return made;
}

inline SampleBuffer frameOf(int32_t width, int32_t height, int64_t microseconds = 0) {
  return {std::make_shared<PixelBuffer>(TextureSize{width, height}), MediaTime(microseconds)};
}

/// A microscope, unless a test makes something else of it. The fields are for before it is used.
class FakeDevice final : public CaptureDevice {
 public:
  FakeDevice(std::shared_ptr<CallLog> log, std::string id) : id_(std::move(id)), log_(log) {}

  std::string modelID_ = "UVC Camera VendorID_1374 ProductID_41312";
  std::string id_;
  std::string name_ = "Microscope";
  std::string serialNumber_ = "1";
  uint32_t transportType_ = kTransportTypeUSB;
  bool hasVideo_ = true;
  std::vector<CaptureFormat> formats_ = {
      format(kMediaSubTypeMJPEG, 640, 480),
      format(kMediaSubTypeMJPEG, 1280, 720),
      format(kMediaSubTypeMJPEG, 1920, 1080),
  };
  bool formatsAreKnown_ = true;
  bool grantsLock_ = true;
  bool canBeOpened_ = true;
  bool streams_ = false;    ///< Delivers frames from a thread of its own.
  int64_t failsAfter_ = 0;  ///< So many frames; 0 for never.
  std::atomic<bool> present_ = true;

  std::string modelID() const override { return modelID_; }
  std::string uniqueID() const override { return id_; }
  std::string localizedName() const override { return name_; }
  std::string manufacturer() const override { return "Works"; }
  std::string serialNumber() const override { return serialNumber_; }
  uint32_t transportType() const override { return transportType_; }
  bool hasVideo() const override { return hasVideo_; }
  const std::vector<CaptureFormat>& formats() const override { return formats_; }
  bool formatsAreKnown() const override { return formatsAreKnown_; }

  bool lockForConfiguration() override {
    log_->note(id_ + ".lock");
    return grantsLock_;
  }
  void unlockForConfiguration() override {
    log_->note(id_ + ".unlock");
    // What was collected comes into force now, whether or not the lock was granted.
    const std::lock_guard lock(mutex_);
    if (collected_) active_ = std::exchange(collected_, nullptr);
  }
  void setActiveFormat(const CaptureFormat& wanted) override {
    log_->note(fmt::format("{}.setActiveFormat {}x{} {:X}", id_, wanted.width, wanted.height,
                           wanted.mediaSubType));
    const std::lock_guard lock(mutex_);
    collected_ = std::make_shared<const CaptureFormat>(wanted);
  }
  CaptureFormat activeFormat() const override {
    const std::lock_guard lock(mutex_);
    if (active_) return *active_;
    return formats_.empty() ? CaptureFormat{} : formats_.front();
  }
  void setActiveVideoMinFrameDuration(Fraction duration) override {
    log_->note(fmt::format("{}.setActiveVideoMinFrameDuration {}/{}", id_, duration.numerator,
                           duration.denominator));
  }

 private:
  std::shared_ptr<CallLog> log_;
  mutable std::mutex mutex_;  // guards active_ and collected_
  std::shared_ptr<const CaptureFormat> active_;
  std::shared_ptr<const CaptureFormat> collected_;
};

class FakeInput final : public CaptureDeviceInput {
 public:
  FakeInput(std::shared_ptr<CallLog> log, std::shared_ptr<FakeDevice> device)
      : log_(std::move(log)), device_(std::move(device)) {
    log_->note(device_->id_ + ".open");
  }
  ~FakeInput() override {
    endThread();
    log_->note(device_->id_ + ".close");
  }

  void startStreaming(FrameSink& sink) override {
    log_->note(device_->id_ + ".startStreaming");
    sink_ = &sink;
    if (device_->streams_) thread_ = std::thread([this, &sink] { stream(sink); });
  }
  void stopStreaming() override {
    log_->note(device_->id_ + ".stopStreaming");
    endThread();
    sink_ = nullptr;
  }

  /// Null while it doesn't stream.
  FrameSink* sink() const { return sink_; }
  FakeDevice& device() const { return *device_; }

 private:
  void stream(FrameSink& sink) {
    for (int64_t time = 0; !stop_ && device_->present_; ++time) {
      const CaptureFormat active = device_->activeFormat();
      sink.deliver(frameOf(active.width, active.height, time));
      if (time + 1 == device_->failsAfter_) return sink.streamFailed("The camera does not answer.");
      std::this_thread::yield();
    }
  }
  void endThread() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    stop_ = false;
  }

  std::shared_ptr<CallLog> log_;
  std::shared_ptr<FakeDevice> device_;
  FrameSink* sink_ = nullptr;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

/// The controls of a camera that answers when the test says so.
class FakeControls final : public CameraControls {
 public:
  /// What the test sees of the last one that was made.
  struct Seen {
    FakeControls* open = nullptr;
    std::vector<std::vector<ControlValue>> requests;  ///< Of all that were ever made.
  };

  FakeControls(Seen& seen, Handler handler) : seen_(seen), handler_(std::move(handler)) {
    seen_.open = this;
  }
  ~FakeControls() override { seen_.open = nullptr; }

  uint64_t set(std::span<const ControlValue> values) override {
    seen_.requests.emplace_back(values.begin(), values.end());
    return ++request_;
  }
  /// As after request `upTo`, by default the last.
  void report(std::vector<CameraControl> controls, std::vector<ControlValue> taken = {},
              std::optional<uint64_t> upTo = {}) {
    handler_({upTo.value_or(request_), std::move(taken), std::move(controls)});
  }

 private:
  Seen& seen_;
  const Handler handler_;
  uint64_t request_ = 0;
};

/// A machine's cameras. Plugging and pulling changes what is present; the program is told when the
/// test calls tellConnected or tellDisconnected, as by the event loop's next turn.
class FakeCaptureSystem final : public CaptureSystem {
 public:
  std::shared_ptr<CallLog> log = std::make_shared<CallLog>();
  /// Called when a device is about to be opened, as for one that is pulled at that moment.
  std::function<void()> beforeOpening;
  FakeControls::Seen controls;

  std::shared_ptr<FakeDevice> plug(const std::string& id) {
    return plug(std::make_shared<FakeDevice>(log, id));
  }
  std::shared_ptr<FakeDevice> plug(std::shared_ptr<FakeDevice> device) {
    device->present_ = true;
    present_.push_back(device);
    return device;
  }
  void pull(const std::string& id) {
    std::erase_if(present_, [&](const auto& device) {
      if (device->id_ != id) return false;
      device->present_ = false;
      return true;
    });
  }
  void tellConnected() {
    if (const auto handler = deviceWasConnected_) handler();
  }
  void tellDisconnected() {
    if (const auto handler = deviceWasDisconnected_) handler();
  }
  bool isListenedTo() const { return deviceWasConnected_ || deviceWasDisconnected_; }
  /// What was registered last, as an event holds it that is already on its way.
  std::function<void()> deviceWasDisconnectedHandler() const { return deviceWasDisconnected_; }

  std::vector<std::shared_ptr<CaptureDevice>> devices() override {
    return {present_.begin(), present_.end()};
  }
  std::shared_ptr<CaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override {
    log->note("deviceWithUniqueID " + uniqueID);
    for (const auto& device : present_)
      if (device->id_ == uniqueID) return device;
    return nullptr;
  }
  Result<std::unique_ptr<CaptureDeviceInput>> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override {
    if (beforeOpening) beforeOpening();
    const auto fake = std::dynamic_pointer_cast<FakeDevice>(device);
    if (!fake || !fake->present_) return Error{"The camera is not connected any more."};
    if (!fake->canBeOpened_) return Error{"The camera is used by another program."};
    return std::make_unique<FakeInput>(log, fake);
  }
  std::unique_ptr<CameraControls> makeControls(const std::shared_ptr<CaptureDevice>& device,
                                               CameraControls::Handler handler) override {
    log->note(device->uniqueID() + ".makeControls");
    return std::make_unique<FakeControls>(controls, std::move(handler));
  }
  void setHotPlugHandlers(std::function<void()> deviceWasConnected,
                          std::function<void()> deviceWasDisconnected) override {
    deviceWasConnected_ = std::move(deviceWasConnected);
    deviceWasDisconnected_ = std::move(deviceWasDisconnected);
  }

 private:
  std::vector<std::shared_ptr<FakeDevice>> present_;
  std::function<void()> deviceWasConnected_;
  std::function<void()> deviceWasDisconnected_;
};

}  // namespace tessary::test
