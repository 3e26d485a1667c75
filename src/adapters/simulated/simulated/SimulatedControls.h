#pragma once

#include <memory>

#include "base/Executor.h"
#include "base/Lifetime.h"
#include "platform/CameraControls.h"
#include "simulated/SimulatedMicroscope.h"

namespace tessary {

/// The controls of a simulated microscope. They answer in the main queue's next turn.
class SimulatedControls final : public CameraControls {
 public:
  /// `mainQueue` must outlive it.
  SimulatedControls(std::shared_ptr<SimulatedMicroscope> microscope, Executor& mainQueue,
                    Handler handler);
  ~SimulatedControls() override;

  uint64_t set(std::span<const ControlValue> values) override;

 private:
  void report(std::vector<ControlValue> taken);

  const std::shared_ptr<SimulatedMicroscope> microscope_;
  Executor& mainQueue_;
  const Handler handler_;
  uint64_t request_ = 0;
  const Lifetime lifetime_;
};

}  // namespace tessary
