#include "simulated/SimulatedCaptureSystem.h"

#include <utility>

#include "simulated/SimulatedDeviceInput.h"

namespace tessary {

SimulatedCaptureSystem::SimulatedCaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder,
                                               std::shared_ptr<ImageEncoder> encoder)
    : mainQueue_(mainQueue),
      makeDecoder_(std::move(makeDecoder)),
      encoder_(std::move(encoder)),
      plugged_(std::make_shared<SimulatedMicroscope>()) {
  seen_->microscope = plugged_;
}

SimulatedCaptureSystem::~SimulatedCaptureSystem() = default;

std::vector<std::shared_ptr<CaptureDevice>> SimulatedCaptureSystem::devices() {
  if (!seen_->microscope) return {};
  return {seen_->microscope};
}

std::shared_ptr<CaptureDevice> SimulatedCaptureSystem::deviceWithUniqueID(
    const std::string& uniqueID) {
  if (!seen_->microscope || seen_->microscope->uniqueID() != uniqueID) return nullptr;
  return seen_->microscope;
}

Result<std::unique_ptr<CaptureDeviceInput>> SimulatedCaptureSystem::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  if (!device || device != plugged_)
    return Error{"The microscope is no longer connected. Plug it in again."};
  if (!openFailure_.empty()) return Error{std::exchange(openFailure_, {})};
  return std::make_unique<SimulatedDeviceInput>(plugged_, makeDecoder_, encoder_);
}

void SimulatedCaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                                std::function<void()> deviceWasDisconnected) {
  seen_->deviceWasConnected = std::move(deviceWasConnected);
  seen_->deviceWasDisconnected = std::move(deviceWasDisconnected);
}

void SimulatedCaptureSystem::plug() {
  if (plugged_) return;
  plugged_ = std::make_shared<SimulatedMicroscope>();
  tell();
}

void SimulatedCaptureSystem::unplug() {
  if (!plugged_) return;
  plugged_->disconnect();
  plugged_.reset();
  tell();
}

void SimulatedCaptureSystem::tell() {
  if (!seen_->deviceWasConnected && !seen_->deviceWasDisconnected) {
    seen_->microscope = plugged_;
    return;
  }
  mainQueue_.post([weak = std::weak_ptr(seen_), microscope = plugged_] {
    const std::shared_ptr<Seen> seen = weak.lock();
    if (!seen) return;
    seen->microscope = microscope;
    // A copy: the handler may set new ones.
    const auto handler = microscope ? seen->deviceWasConnected : seen->deviceWasDisconnected;
    if (handler) handler();
  });
}

void SimulatedCaptureSystem::damageNext(int frames) {
  if (plugged_) plugged_->damageNext(frames);
}

void SimulatedCaptureSystem::freeze(std::chrono::milliseconds time) {
  if (plugged_) plugged_->freeze(time);
}

uint64_t SimulatedCaptureSystem::droppedFrames() const {
  return plugged_ ? plugged_->droppedFrames() : 0;
}

}  // namespace tessary
