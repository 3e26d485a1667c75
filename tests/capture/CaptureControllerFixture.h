#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "FakeCaptureHost.h"
#include "FakeCaptureSystem.h"
#include "FakeFailureListener.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryKeyValueStore.h"
#include "NoGrants.h"
#include "capture/CaptureController.h"

namespace tessary::test {

/// A controller among fakes. What it does is asked of by its calls in their order, by the state
/// that it is in and by its log lines.
class CaptureControllerFixture : public testing::Test {
 protected:
  enum class State { Idle, Running, Failed, Other };

  CaptureControllerFixture() {
    store.didStore = [this] { callLog->note("save"); };
  }

  /// As at launch: the list is filled, the window put together, the remembered microscope opened.
  void launch() {
    catalogue.InitializeMicroscopes();
    controller->setupCaptureSession();
    controller->addObservers();
    controller->onMicroscopesInitialized();
  }
  /// Launches with the microscope `id` present, remembered and thus opened.
  std::shared_ptr<FakeDevice> launchWith(const std::string& id) {
    auto device = system.plug(id);
    preferences.uniqueID = id;
    launch();
    calls();
    return device;
  }
  void start(size_t microscope, size_t resolution) {
    controller->startCaptureSession(microscopes.at(microscope),
                                    microscopes.at(microscope)->resolutions.at(resolution));
  }

  State state() const {
    const auto& session = controller->capSession;
    const bool fieldsSet = controller->capDevice && controller->capDeviceInput &&
                           controller->capVideoDataOutput && currMicroscope;
    if (fieldsSet && session->isRunning() && session->input() == controller->capDeviceInput &&
        session->output() == controller->capVideoDataOutput)
      return State::Running;
    if (currMicroscope && session && !session->input() && !session->isRunning())
      return State::Failed;
    const bool fieldsClear = !controller->capDevice && !controller->capDeviceInput &&
                             !controller->capVideoDataOutput && !currMicroscope;
    if (fieldsClear && session && !session->isRunning() && !session->input() && !session->output())
      return State::Idle;
    return State::Other;
  }
  /// The fakes' calls since the last time.
  std::vector<std::string> calls() { return callLog->take(); }
  FrameSink* sink() const {
    const auto input = std::dynamic_pointer_cast<FakeInput>(controller->capDeviceInput);
    return input ? input->sink() : nullptr;
  }
  std::vector<std::string> ids() const {
    std::vector<std::string> all;
    for (const auto& microscope : microscopes) all.push_back(microscope->uniqueID);
    return all;
  }
  /// Log lines without those of the catalogue and of the settings.
  std::vector<std::string> lines() const {
    std::vector<std::string> kept;
    for (const std::string& line : log.lines()) {
      bool isOfNeighbour = false;
      for (const char* start : {"modelID:", "uniqueID:", "localizedName:", "manufacturer:",
                                "CalibrationsFromString:", "CalibrationsToString:"})
        isOfNeighbour = isOfNeighbour || line.starts_with(start);
      if (!isOfNeighbour) kept.push_back(line);
    }
    return kept;
  }
  Resolution remembered() const { return *preferences.resolution; }

  LogCapture log;
  FakeCaptureSystem system;
  std::shared_ptr<CallLog> callLog = system.log;
  MemoryKeyValueStore store;
  UserDefaults defaults{store};
  NoGrants grants;
  Preferences preferences{defaults, grants};
  ManualExecutor mainQueue;
  FakeCaptureHost host{callLog};
  FakeFailureListener failures;
  MicroscopeList microscopes;
  std::shared_ptr<MicroscopeInfo> currMicroscope;
  MicroscopeCatalogue catalogue{system, microscopes};
  RememberedControls rememberedControls{defaults};
  CameraControlBoard controls{system, rememberedControls};
  std::unique_ptr<CaptureController> controller = std::make_unique<CaptureController>(
      CaptureController::Dependencies{system, catalogue, currMicroscope, preferences, mainQueue,
                                      host, host, failures, controls});
};

}  // namespace tessary::test
