#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>

#include "platform/CaptureSystem.h"
#include "simulated/FrameLoop.h"
#include "simulated/Optics.h"

namespace tessary {

/// A microscope that is not there: it counts as a real one by its numbers. What a stream needs of
/// it may be called on any thread.
class SimulatedMicroscope final : public CaptureDevice {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// What is in force. Every unlocking makes a new revision, also one that changes nothing.
  struct Setting {
    CaptureFormat format;
    Fraction frameDuration;
    uint64_t revision = 0;
  };

  /// Offers each of `mediaSubTypes`, of 'dmb1', 'yuvs' and '420v', at 640x480, 1280x720 and
  /// 1920x1080 with 5 to 30 frames a second.
  explicit SimulatedMicroscope(std::span<const uint32_t> mediaSubTypes);

  std::string modelID() const override;
  std::string uniqueID() const override;
  std::string localizedName() const override;
  std::string manufacturer() const override;
  std::string serialNumber() const override;
  uint32_t transportType() const override;
  bool hasVideo() const override { return true; }
  const std::vector<CaptureFormat>& formats() const override { return formats_; }
  bool formatsAreKnown() const override { return true; }
  bool lockForConfiguration() override;
  void unlockForConfiguration() override;
  /// A format that is not among formats() is ignored.
  void setActiveFormat(const CaptureFormat& format) override;
  /// The format set last, also before unlocking puts it into force.
  CaptureFormat activeFormat() const override;
  void setActiveVideoMinFrameDuration(Fraction duration) override;

  // For the stream.
  Setting setting() const;
  bool isConnected() const;
  /// Returns at `deadline`, or earlier when `stop` is requested, the microscope is unplugged, or
  /// `revision` is no longer in force.
  void wait(const std::stop_token& stop, uint64_t revision, TimePoint deadline);
  /// The frames of `format` that the last stream left, or null.
  std::unique_ptr<FrameLoop> takeFrames(const CaptureFormat& format);
  void keepFrames(std::unique_ptr<FrameLoop> frames);
  /// Whether the next frame is to be spoilt.
  bool takeDamage();
  /// Has `send` send a frame, unless none is to come now.
  void sendUnlessFrozen(const std::function<void()>& send);
  void countDroppedFrame();

  Optics& optics() { return optics_; }

  // Events, and faults on request.
  void disconnect();
  void damageNext(int frames);
  /// No frame comes for `time` from the return of this, which waits for one that is being sent.
  void freeze(std::chrono::milliseconds time);
  /// Frames that did not decode, over all streams.
  uint64_t droppedFrames() const;

 private:
  const std::vector<CaptureFormat> formats_;
  Optics optics_;
  std::mutex sending_;        // held, before mutex_, while a frame is made and delivered
  mutable std::mutex mutex_;  // guards all below
  std::condition_variable_any changed_;
  Setting inForce_;
  Setting wanted_;
  bool connected_ = true;
  std::unique_ptr<FrameLoop> frames_;
  int framesToDamage_ = 0;
  TimePoint frozenUntil_{};
  uint64_t droppedFrames_ = 0;
};

}  // namespace tessary
