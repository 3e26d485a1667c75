#include "simulated/SimulatedControls.h"

#include <utility>

#include "base/Log.h"

namespace tessary {

SimulatedControls::SimulatedControls(std::shared_ptr<SimulatedMicroscope> microscope,
                                     Executor& mainQueue, Handler handler)
    : microscope_(std::move(microscope)), mainQueue_(mainQueue), handler_(std::move(handler)) {
  microscope_->optics().setObserver([this] { report({}); });
  report({});
}

SimulatedControls::~SimulatedControls() { microscope_->optics().setObserver({}); }

uint64_t SimulatedControls::set(std::span<const ControlValue> values) {
  ++request_;
  std::vector<ControlValue> taken;
  for (const ControlValue& wanted : values) {
    if (microscope_->isConnected() && microscope_->optics().set(wanted))
      taken.push_back(wanted);
    else
      log("Control {}: {} was not taken", wanted.id, wanted.value);
  }
  report(std::move(taken));
  return request_;
}

void SimulatedControls::report(std::vector<ControlValue> taken) {
  mainQueue_.post(lifetime_.guard([this, taken = std::move(taken), request = request_] {
    handler_({request, taken, microscope_->optics().controls()});
  }));
}

}  // namespace tessary
