#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "base/Executor.h"
#include "base/FourCharCode.h"
#include "base/Lifetime.h"
#include "platform/CaptureSystem.h"
#include "platform/FrameDecoder.h"
#include "platform/ImageEncoder.h"
#include "simulated/SimulatedMicroscope.h"

namespace tessary {

/// A machine with one simulated microscope, plugged in at first. Main thread.
class SimulatedCaptureSystem final : public CaptureSystem {
 public:
  /// Hot-plug handlers are posted to `mainQueue`; `encoder` compresses what the microscope sends,
  /// and `makeDecoder` serves the streams of it. The microscope offers `mediaSubTypes`.
  SimulatedCaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder,
                         std::shared_ptr<ImageEncoder> encoder,
                         std::vector<uint32_t> mediaSubTypes = {kMediaSubTypeMJPEG,
                                                                kMediaSubTypeYUYV});
  ~SimulatedCaptureSystem() override;

  std::vector<std::shared_ptr<CaptureDevice>> devices() override;
  std::shared_ptr<CaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
  Result<std::unique_ptr<CaptureDeviceInput>> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::unique_ptr<CameraControls> makeControls(const std::shared_ptr<CaptureDevice>& device,
                                               CameraControls::Handler handler) override;
  void setHotPlugHandlers(std::function<void()> deviceWasConnected,
                          std::function<void()> deviceWasDisconnected) override;

  /// Plugging in makes a new device object with the same uniqueID. Twice the same does nothing. The
  /// list follows when it is told; while nobody is told of it, at once.
  void plug();
  void unplug();

  // Faults of the microscope that is plugged in; nothing without one.
  /// The next `frames` frames arrive cut off in the middle.
  void damageNext(int frames);
  /// No frame comes for `time` from now; waits for one that is being sent.
  void freeze(std::chrono::milliseconds time);
  /// The next opening fails with `reason`.
  void failNextOpen(std::string reason) { openFailure_ = std::move(reason); }
  /// As another program would.
  void changeControl(ControlValue value) {
    if (plugged_) plugged_->optics().set(value);
  }
  /// Frames of the plugged microscope that did not decode.
  uint64_t droppedFrames() const;

 private:
  /// Lists what is plugged in now and tells of it.
  void tell();

  Executor& mainQueue_;
  const FrameDecoderFactory makeDecoder_;
  const std::shared_ptr<ImageEncoder> encoder_;
  const std::vector<uint32_t> mediaSubTypes_;
  std::shared_ptr<SimulatedMicroscope> plugged_;  // null while unplugged
  std::string openFailure_;
  std::shared_ptr<SimulatedMicroscope> listed_;  // what the program has been told of, null for none
  std::function<void()> deviceWasConnected_;
  std::function<void()> deviceWasDisconnected_;
  const Lifetime lifetime_;
};

}  // namespace tessary
