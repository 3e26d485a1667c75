#include "simulated/CombinedCaptureSystem.h"

#include <utility>

namespace tessary {

CombinedCaptureSystem::CombinedCaptureSystem(std::unique_ptr<CaptureSystem> first,
                                             std::unique_ptr<CaptureSystem> second)
    : first_(std::move(first)), second_(std::move(second)) {}

std::vector<std::shared_ptr<CaptureDevice>> CombinedCaptureSystem::devices() {
  std::vector<std::shared_ptr<CaptureDevice>> all = first_->devices();
  for (std::shared_ptr<CaptureDevice>& device : second_->devices()) {
    all.push_back(std::move(device));
  }
  return all;
}

std::shared_ptr<CaptureDevice> CombinedCaptureSystem::deviceWithUniqueID(
    const std::string& uniqueID) {
  std::shared_ptr<CaptureDevice> device = first_->deviceWithUniqueID(uniqueID);
  return device ? device : second_->deviceWithUniqueID(uniqueID);
}

Result<std::unique_ptr<CaptureDeviceInput>> CombinedCaptureSystem::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  return ownerOf(device).makeDeviceInput(device);
}

std::unique_ptr<CameraControls> CombinedCaptureSystem::makeControls(
    const std::shared_ptr<CaptureDevice>& device, CameraControls::Handler handler) {
  return ownerOf(device).makeControls(device, std::move(handler));
}

CaptureSystem& CombinedCaptureSystem::ownerOf(const std::shared_ptr<CaptureDevice>& device) const {
  // A device that neither knows any more goes to the second, which says so.
  const bool isFirsts = device && first_->deviceWithUniqueID(device->uniqueID()) == device;
  return isFirsts ? *first_ : *second_;
}

void CombinedCaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                               std::function<void()> deviceWasDisconnected) {
  first_->setHotPlugHandlers(deviceWasConnected, deviceWasDisconnected);
  second_->setHotPlugHandlers(std::move(deviceWasConnected), std::move(deviceWasDisconnected));
}

}  // namespace tessary
