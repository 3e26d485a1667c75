#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "base/PixelBuffer.h"
#include "platform/CameraControls.h"

namespace tessary {

/// What the simulated microscope's user can adjust, and what that does to its pictures. Any thread,
/// but for the observer.
class Optics {
 public:
  // Identifiers of the controls.
  static constexpr uint32_t kExposureMode = 1;  ///< A menu: 0 automatic, 1 manual.
  static constexpr uint32_t kExposureTime = 2;  ///< Ruled by the mode.
  static constexpr uint32_t kBrightness = 3;
  static constexpr uint32_t kContrast = 4;
  static constexpr uint32_t kAutoFocus = 5;  ///< A switch.
  static constexpr uint32_t kFocus = 6;      ///< Ruled by the switch.
  static constexpr uint32_t kFocusOnce = 7;  ///< A button.

  Optics();

  std::vector<CameraControl> controls() const;
  /// False for a value that the control doesn't take, or doesn't take now.
  bool set(ControlValue wanted);
  /// Told of every set(), on its thread. Main thread.
  void setObserver(std::function<void()> changed) { changed_ = std::move(changed); }

  /// The picture as it is seen with the controls as they are: the same one if they are where they
  /// were at first.
  std::shared_ptr<PixelBuffer> seen(std::shared_ptr<PixelBuffer> picture,
                                    PixelBufferPool& pool) const;

 private:
  CameraControl& control(uint32_t id) { return controls_[id - 1]; }
  const CameraControl& control(uint32_t id) const { return controls_[id - 1]; }
  /// With the mutex held.
  void updateRuled();

  mutable std::mutex mutex_;  // guards controls_
  std::vector<CameraControl> controls_;
  std::function<void()> changed_;
};

}  // namespace tessary
