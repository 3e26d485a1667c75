#include "simulated/SimulatedCaptureSystem.h"

#include <utility>

#include "simulated/SimulatedControls.h"
#include "simulated/SimulatedDeviceInput.h"

namespace tessary {

SimulatedCaptureSystem::SimulatedCaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder,
                                               std::shared_ptr<ImageEncoder> encoder,
                                               std::vector<uint32_t> mediaSubTypes)
    : mainQueue_(mainQueue),
      makeDecoder_(std::move(makeDecoder)),
      encoder_(std::move(encoder)),
      mediaSubTypes_(std::move(mediaSubTypes)),
      plugged_(std::make_shared<SimulatedMicroscope>(mediaSubTypes_)) {
  listed_ = plugged_;
}

SimulatedCaptureSystem::~SimulatedCaptureSystem() = default;

std::vector<std::shared_ptr<CaptureDevice>> SimulatedCaptureSystem::devices() {
  if (!listed_) return {};
  return {listed_};
}

std::shared_ptr<CaptureDevice> SimulatedCaptureSystem::deviceWithUniqueID(
    const std::string& uniqueID) {
  if (!listed_ || listed_->uniqueID() != uniqueID) return nullptr;
  return listed_;
}

Result<std::unique_ptr<CaptureDeviceInput>> SimulatedCaptureSystem::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  if (!device || device != plugged_)
    return Error{"The microscope is no longer connected. Plug it in again."};
  if (!openFailure_.empty()) return Error{std::exchange(openFailure_, {})};
  return std::make_unique<SimulatedDeviceInput>(plugged_, makeDecoder_, encoder_);
}

std::unique_ptr<CameraControls> SimulatedCaptureSystem::makeControls(
    const std::shared_ptr<CaptureDevice>& device, CameraControls::Handler handler) {
  if (!device || device != plugged_) return nullptr;
  return std::make_unique<SimulatedControls>(plugged_, mainQueue_, std::move(handler));
}

void SimulatedCaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                                std::function<void()> deviceWasDisconnected) {
  deviceWasConnected_ = std::move(deviceWasConnected);
  deviceWasDisconnected_ = std::move(deviceWasDisconnected);
}

void SimulatedCaptureSystem::plug() {
  if (plugged_) return;
  plugged_ = std::make_shared<SimulatedMicroscope>(mediaSubTypes_);
  tell();
}

void SimulatedCaptureSystem::unplug() {
  if (!plugged_) return;
  plugged_->disconnect();
  plugged_.reset();
  tell();
}

void SimulatedCaptureSystem::tell() {
  if (!deviceWasConnected_ && !deviceWasDisconnected_) {
    listed_ = plugged_;
    return;
  }
  mainQueue_.post(lifetime_.guard([this, microscope = plugged_] {
    listed_ = microscope;
    // A copy: the handler may set new ones.
    const auto handler = microscope ? deviceWasConnected_ : deviceWasDisconnected_;
    if (handler) handler();
  }));
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
