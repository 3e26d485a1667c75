#pragma once

#include <memory>
#include <string>

#include "base/Executor.h"
#include "base/SerialQueue.h"
#include "linux/V4l2Calls.h"
#include "platform/CameraControls.h"

namespace tessary {

/// The controls of a camera behind a V4L2 node, on a thread of their own: a camera may take seconds
/// for one, and one that hangs keeps the thread and nobody else.
class V4l2Controls final : public CameraControls {
 public:
  /// Opens the node beside whoever streams from it. `cameraName` is for the log. `mainQueue` must
  /// outlive it.
  V4l2Controls(std::shared_ptr<V4l2Calls> calls, std::string devNode, std::string cameraName,
               Executor& mainQueue, Handler handler);
  ~V4l2Controls() override;

  uint64_t set(std::span<const ControlValue> values) override;

 private:
  class Worker;

  const std::shared_ptr<Worker> worker_;  // shared with the thread, which may outlive this
  SerialQueue thread_;
};

}  // namespace tessary
