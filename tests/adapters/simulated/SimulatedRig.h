#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ManualExecutor.h"
#include "base/FourCharCode.h"
#include "jpeg/JpegFrameDecoder.h"
#include "jpeg/JpegImageEncoder.h"
#include "simulated/SimulatedCaptureSystem.h"
#include "yuv/YuvFrameDecoder.h"

namespace tessary::test {

/// What a stream sent, with a way to wait for it.
class CollectingSink final : public FrameSink {
 public:
  struct Arrival {
    SampleBuffer frame;
    std::chrono::steady_clock::time_point time;
  };

  void deliver(const SampleBuffer& frame) override {
    const std::lock_guard lock(mutex_);
    arrivals_.push_back({frame, std::chrono::steady_clock::now()});
    // Old pictures go back to the stream, as they do in the program.
    if (arrivals_.size() > 3) arrivals_[arrivals_.size() - 4].frame.imageBuffer.reset();
    if (sizes_.empty() || sizes_.back() != frame.imageBuffer->size()) {
      sizes_.push_back(frame.imageBuffer->size());
    }
    arrived_.notify_all();
  }
  void streamFailed(const std::string& reason) override {
    const std::lock_guard lock(mutex_);
    failures_.push_back(reason);
    arrived_.notify_all();
  }

  /// False if there are not `count` frames after a long while.
  bool waitForFrames(size_t count) {
    return waitFor([&] { return arrivals_.size() >= count; });
  }
  bool waitForSize(TextureSize size) {
    return waitFor([&] { return !sizes_.empty() && sizes_.back() == size; });
  }
  bool waitForFailure() {
    return waitFor([&] { return !failures_.empty(); });
  }
  size_t frameCount() const {
    const std::lock_guard lock(mutex_);
    return arrivals_.size();
  }
  /// Only the last three still have their pictures.
  std::vector<Arrival> arrivals() const {
    const std::lock_guard lock(mutex_);
    return arrivals_;
  }
  /// The sizes of the frames, where they changed.
  std::vector<TextureSize> sizes() const {
    const std::lock_guard lock(mutex_);
    return sizes_;
  }
  std::vector<std::string> failures() const {
    const std::lock_guard lock(mutex_);
    return failures_;
  }

 private:
  bool waitFor(const std::function<bool()>& condition) {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, std::chrono::seconds(60), condition);
  }

  mutable std::mutex mutex_;  // guards all below
  std::condition_variable arrived_;
  std::vector<Arrival> arrivals_;
  std::vector<TextureSize> sizes_;
  std::vector<std::string> failures_;
};

inline FrameDecoderFactory decoders() {
  return [](uint32_t mediaSubType) -> std::unique_ptr<FrameDecoder> {
    if (mediaSubType == kMediaSubTypeMJPEG) return std::make_unique<JpegFrameDecoder>();
    return YuvFrameDecoder::make(mediaSubType);
  };
}

inline std::shared_ptr<ImageEncoder> cameraEncoder() {
  return std::make_shared<JpegImageEncoder>(JpegImageEncoder::kCameraFrame);
}

/// All that the simulated microscope can send.
inline const std::vector<uint32_t> kAllSubTypes = {kMediaSubTypeMJPEG, kMediaSubTypeYUYV,
                                                   kMediaSubTypeNV12};

/// A simulated microscope, and a stream of it.
class SimulatedRig {
 public:
  explicit SimulatedRig(std::vector<uint32_t> mediaSubTypes = {kMediaSubTypeMJPEG,
                                                               kMediaSubTypeYUYV})
      : system(mainQueue, decoders(), cameraEncoder(), std::move(mediaSubTypes)) {}

  std::shared_ptr<CaptureDevice> microscope() { return system.devices().at(0); }

  void open() {
    auto opened = system.makeDeviceInput(microscope());
    ASSERT_TRUE(opened) << opened.error();
    input = *std::move(opened);
  }
  void configure(const CaptureFormat& format, std::optional<Fraction> duration = {}) {
    const auto device = microscope();
    EXPECT_TRUE(device->lockForConfiguration());
    device->setActiveFormat(format);
    if (duration) device->setActiveVideoMinFrameDuration(*duration);
    device->unlockForConfiguration();
  }
  /// Starts with a format that was chosen before, so that no test depends on how soon it follows.
  void start(const CaptureFormat& format, std::optional<Fraction> duration = {}) {
    open();
    configure(format, duration);
    input->startStreaming(sink);
  }
  CaptureFormat format(uint32_t mediaSubType, int32_t width) {
    for (const CaptureFormat& offered : microscope()->formats()) {
      if (offered.mediaSubType == mediaSubType && offered.width == width) return offered;
    }
    ADD_FAILURE() << "There is no such format";
    return {};
  }

  ManualExecutor mainQueue;
  SimulatedCaptureSystem system;
  CollectingSink sink;
  std::unique_ptr<CaptureDeviceInput> input;
};

}  // namespace tessary::test
