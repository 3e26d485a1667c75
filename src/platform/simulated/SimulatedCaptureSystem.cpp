#include "platform/simulated/SimulatedCaptureSystem.h"

#include <utility>

#include "platform/simulated/SimulatedDeviceInput.h"

namespace tessary {

SimulatedCaptureSystem::SimulatedCaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder)
    : mainQueue_(mainQueue),
      makeDecoder_(std::move(makeDecoder)),
      microscope_(std::make_shared<SimulatedMicroscope>()) {}

SimulatedCaptureSystem::~SimulatedCaptureSystem() = default;

std::vector<std::shared_ptr<CaptureDevice>> SimulatedCaptureSystem::devices() {
  if (!microscope_) return {};
  return {microscope_};
}

std::shared_ptr<CaptureDevice> SimulatedCaptureSystem::deviceWithUniqueID(
    const std::string& uniqueID) {
  if (!microscope_ || microscope_->uniqueID() != uniqueID) return nullptr;
  return microscope_;
}

std::unique_ptr<CaptureDeviceInput> SimulatedCaptureSystem::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device, std::string& error) {
  if (!device || device != microscope_) {
    error = "The microscope is no longer connected. Plug it in again.";
    return nullptr;
  }
  if (!openFailure_.empty()) {
    error = std::exchange(openFailure_, {});
    return nullptr;
  }
  return std::make_unique<SimulatedDeviceInput>(microscope_, makeDecoder_);
}

void SimulatedCaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                                std::function<void()> deviceWasDisconnected) {
  *handlers_ = {std::move(deviceWasConnected), std::move(deviceWasDisconnected)};
}

void SimulatedCaptureSystem::plug() {
  if (microscope_) return;
  microscope_ = std::make_shared<SimulatedMicroscope>();
  post(&HotPlugHandlers::deviceWasConnected);
}

void SimulatedCaptureSystem::unplug() {
  if (!microscope_) return;
  microscope_->disconnect();
  microscope_.reset();
  post(&HotPlugHandlers::deviceWasDisconnected);
}

void SimulatedCaptureSystem::post(std::function<void()> HotPlugHandlers::*handler) {
  mainQueue_.post([handlers = std::weak_ptr(handlers_), handler] {
    const std::shared_ptr<HotPlugHandlers> alive = handlers.lock();
    if (!alive) return;
    // A copy: the handler may set new ones.
    if (const std::function<void()> run = (*alive).*handler) run();
  });
}

void SimulatedCaptureSystem::damageNext(int frames) {
  if (microscope_) microscope_->damageNext(frames);
}

void SimulatedCaptureSystem::freeze(std::chrono::milliseconds time) {
  if (microscope_) microscope_->freeze(time);
}

uint64_t SimulatedCaptureSystem::droppedFrames() const {
  return microscope_ ? microscope_->droppedFrames() : 0;
}

}  // namespace tessary
