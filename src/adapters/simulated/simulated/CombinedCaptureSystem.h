#pragma once

#include <memory>

#include "platform/CaptureSystem.h"

namespace tessary {

/// The cameras of two systems as those of one, the first system's before the second's.
class CombinedCaptureSystem final : public CaptureSystem {
 public:
  CombinedCaptureSystem(std::unique_ptr<CaptureSystem> first,
                        std::unique_ptr<CaptureSystem> second);

  std::vector<std::shared_ptr<CaptureDevice>> devices() override;
  std::shared_ptr<CaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
  Result<std::unique_ptr<CaptureDeviceInput>> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::unique_ptr<CameraControls> makeControls(const std::shared_ptr<CaptureDevice>& device,
                                               CameraControls::Handler handler) override;
  void setHotPlugHandlers(std::function<void()> deviceWasConnected,
                          std::function<void()> deviceWasDisconnected) override;

 private:
  CaptureSystem& ownerOf(const std::shared_ptr<CaptureDevice>& device) const;

  const std::unique_ptr<CaptureSystem> first_;
  const std::unique_ptr<CaptureSystem> second_;
};

}  // namespace tessary
