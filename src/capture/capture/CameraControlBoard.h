#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/CameraControls.h"
#include "platform/CaptureSystem.h"
#include "settings/RememberedControls.h"

namespace tessary {

/// The controls of the open camera, as the user adjusts them. What was adjusted is remembered by
/// the camera's model and serial number and given back whenever that camera is opened. A camera of
/// which nothing is remembered is not even asked, until somebody looks. Main thread.
class CameraControlBoard {
 public:
  /// Both must outlive it.
  CameraControlBoard(CaptureSystem& system, RememberedControls& remembered)
      : system_(system), remembered_(remembered) {}
  ~CameraControlBoard() { cameraDidClose(); }
  CameraControlBoard(const CameraControlBoard&) = delete;
  CameraControlBoard& operator=(const CameraControlBoard&) = delete;

  // The camera.

  void cameraDidOpen(const std::shared_ptr<CaptureDevice>& camera);
  void cameraDidClose();

  // Who looks.

  /// Called whenever something below has changed. An empty function: nobody looks any more.
  void setObserver(std::function<void()> changed);
  bool hasCamera() const { return camera_ != nullptr; }
  /// Whether the camera has told its controls; until then there are none.
  bool isRead() const { return isRead_; }
  /// In the camera's order, with the values that were last asked for.
  std::span<const CameraControl> controls() const { return controls_; }

  // What the user does. All of it returns at once, and does nothing to a control that is not there
  // or can't be set.

  /// To the nearest value that the control has.
  void set(uint32_t id, int32_t value);
  void press(uint32_t id);
  /// Back to the camera's own value, which is then no longer remembered.
  void setDefault(uint32_t id);
  void setAllDefaults();

  /// Stores what the user has changed since the last time, if anything. While a slider is dragged
  /// that would be too often for each change.
  void keepChanges();

 private:
  void beginReading();
  void controlsDidReport(const CameraControls::Report& report);
  void giveBack();
  CameraControl* find(uint32_t id);
  void ask(std::span<const ControlValue> values);
  void note(const ControlValue& taken);
  void tell() const;

  CaptureSystem& system_;
  RememberedControls& remembered_;
  std::function<void()> changed_;
  std::shared_ptr<CaptureDevice> camera_;  // null for none
  std::unique_ptr<CameraControls> source_;
  bool isRead_ = false;
  std::vector<CameraControl> controls_;
  /// The last request about a control: older reports don't tell its value.
  std::map<uint32_t, uint64_t> asked_;
  /// Those whose last request puts them back: what the camera takes then is forgotten.
  std::set<uint32_t> puttingBack_;
  ControlValues kept_;  // of this camera
  bool isChanged_ = false;
};

}  // namespace tessary
