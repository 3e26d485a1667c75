#pragma once
// A camera's controls as its driver tells them. Any thread; each call may take as long as the
// camera needs to answer.

#include <cstdint>
#include <vector>

#include "linux/VideoNode.h"
#include "platform/CameraControls.h"

namespace tessary {

/// Fills `controls` with those that have a value of 32 bits or are a button, each with its value
/// now. 0, or the errno of what broke the list off: it then holds what came before. A control that
/// doesn't tell its value has its default for one.
int queryControls(const VideoNode& node, std::vector<CameraControl>& controls);

/// Sets `value`, and leaves there what the driver made of it. 0 or the errno; EACCES for a control
/// that can't be set now.
int setControl(const VideoNode& node, ControlValue& value);

}  // namespace tessary
