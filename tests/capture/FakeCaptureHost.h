#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <fmt/format.h>

#include "FakeCaptureSystem.h"
#include "capture/CaptureDialogs.h"
#include "capture/CapturePicture.h"

namespace tessary::test {

/// A picture and its dialogs without a toolkit: it notes what is asked of it, except for the
/// frames.
class FakeCaptureHost final : public CapturePicture, public CaptureDialogs {
 public:
  explicit FakeCaptureHost(std::shared_ptr<CallLog> log) : log_(std::move(log)) {}

  bool calibrationWindowIsUp = false;
  bool microscopeWindowIsUp = false;
  /// Called with every frame, on the frame queue.
  std::function<void(const SampleBuffer&)> onFrame;

  /// Time stamps of the frames, in microseconds. Any thread.
  std::vector<int64_t> frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
  }

  void updateVideoFrame(const SampleBuffer& frame) override {
    if (onFrame) onFrame(frame);
    const std::lock_guard lock(mutex_);
    frames_.push_back(frame.presentationTimeStamp.count());
  }
  void stopPreview() override { log_->note("stopPreview"); }
  void stopCalibration() override { log_->note("stopCalibration"); }
  void changeScale(int32_t type) override { log_->note(fmt::format("changeScale {}", type)); }
  void setCalibration(float pixelsPerUnit, int32_t unit) override {
    log_->note(fmt::format("setCalibration {} {}", pixelsPerUnit, unit));
  }
  void removeAllShapes() override { log_->note("removeAllShapes"); }
  bool closeCalibrationWindow() override {
    log_->note("closeCalibrationWindow");
    return std::exchange(calibrationWindowIsUp, false);
  }
  void closeInputTextWindow() override { log_->note("closeInputTextWindow"); }
  bool isMicroscopeWindowUp() const override { return microscopeWindowIsUp; }
  void refreshMicroscopes() override { log_->note("refreshMicroscopes"); }
  void endMicroscopeSheet(int32_t returnCode) override {
    log_->note(fmt::format("endMicroscopeSheet {}", returnCode));
    microscopeWindowIsUp = false;
  }

 private:
  std::shared_ptr<CallLog> log_;
  mutable std::mutex mutex_;  // guards frames_
  std::vector<int64_t> frames_;
};

}  // namespace tessary::test
