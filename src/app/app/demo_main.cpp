#include "app/Application.h"
#include "base/FourCharCode.h"
#include "simulated/CombinedCaptureSystem.h"
#include "simulated/SimulatedCaptureSystem.h"

// The same program with a simulated microscope beside the real ones. It keeps its own settings, and
// opens that microscope by itself until another one is chosen.
int main(int argc, char** argv) {
  const tessary::CommandLine commandLine = tessary::readCommandLine({argv, argv + argc});
  if (commandLine.exitStatus) return commandLine.tell();
  tessary::Application application(argc, argv, "tessary-demo", commandLine);
  tessary::Platform& platform = application.platform();
  auto simulated = std::make_unique<tessary::SimulatedCaptureSystem>(
      platform.mainQueue, tessary::frameDecoders(), tessary::cameraEncoder());
  const std::string microscope = simulated->devices().front()->uniqueID();
  platform.captureSystem = std::make_unique<tessary::CombinedCaptureSystem>(
      std::move(simulated), std::move(platform.captureSystem));
  platform.defaults = {{"uniqueID", microscope},
                       {"videoType", int64_t(tessary::kMediaSubTypeMJPEG)},
                       {"width", int64_t(1280)},
                       {"height", int64_t(720)}};
  return application.run();
}
