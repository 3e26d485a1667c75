#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "settings/UserDefaults.h"

namespace tessary {

/// What the user has set the controls of each camera to: values by the control's number.
using ControlValues = std::map<uint32_t, int32_t>;

/// Keeps them between runs, for the fifty cameras that were last adjusted. Main thread.
class RememberedControls {
 public:
  /// `defaults` must outlive it.
  explicit RememberedControls(UserDefaults& defaults) : defaults_(defaults) {}

  /// Of the camera that is called `camera`, any text. Empty if nothing is remembered; what can't be
  /// read of the stored text counts as not there.
  ControlValues values(std::string_view camera) const;
  /// Stores them in place of what is there for this camera; those of others stay, also what another
  /// run has stored meanwhile. Empty values forget the camera.
  void setValues(std::string_view camera, const ControlValues& values);

 private:
  UserDefaults& defaults_;
};

}  // namespace tessary
