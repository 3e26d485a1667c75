#include "CaptureControllerFixture.h"

namespace tessary {
namespace {

using test::format;
using test::frameOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr uint32_t kMJPEG = kMediaSubTypeMJPEG;
constexpr uint32_t kYUYV = kMediaSubTypeYUYV;

class CaptureControllerTest : public test::CaptureControllerFixture {};

// ---- Starting and stopping

TEST_F(CaptureControllerTest, IsIdleAfterSetup) {
  launch();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_EQ(controller->capVideoDataOutputQueue->label(), "com.quorvix.microscope.session");
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(CaptureControllerTest, StartsInItsOrder) {
  system.plug("m1");
  launch();
  start(0, 2);
  EXPECT_EQ(state(), State::Running);
  EXPECT_THAT(calls(),
              ElementsAre("closeCalibrationWindow", "deviceWithUniqueID m1", "m1.open",
                          "m1.startStreaming", "m1.lock", "m1.setActiveFormat 1920x1080 646D6231",
                          "m1.setActiveVideoMinFrameDuration 1/30", "m1.unlock", "changeScale 0",
                          "setCalibration -1 0", "removeAllShapes", "save"));
  EXPECT_THAT(lines(), ElementsAre("matchDeviceFormat OK: 646D6231, 1920x1080",
                                   "Config device OK: dmb1 1920x1080"));
  EXPECT_EQ(currMicroscope, microscopes[0]);
  EXPECT_EQ(currMicroscope->currResolution, microscopes[0]->resolutions[2]);
  EXPECT_EQ(preferences.uniqueID, "m1");
  EXPECT_EQ(remembered(), (Resolution{kMJPEG, 1920, 1080}));
}

TEST_F(CaptureControllerTest, StopsInItsOrder) {
  launchWith("m1");
  controller->stopCaptureSession();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(calls(), ElementsAre("closeCalibrationWindow", "closeInputTextWindow",
                                   "m1.stopStreaming", "m1.close"));
}

TEST_F(CaptureControllerTest, StoppingWhileIdleIsHarmless) {
  launch();
  controller->stopCaptureSession();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(calls(), ElementsAre("closeCalibrationWindow", "closeInputTextWindow"));
}

TEST_F(CaptureControllerTest, ChoosingTheOpenMicroscopeAgainRunsAFullStopAndStart) {
  launchWith("m1");
  const auto output = controller->capVideoDataOutput;
  const auto microscope = currMicroscope;
  // The argument is the very pointer that a stop clears.
  controller->startCaptureSession(currMicroscope, currMicroscope->currResolution);
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope, microscope);
  EXPECT_NE(controller->capVideoDataOutput, output);
  EXPECT_THAT(
      calls(),
      ElementsAre("closeCalibrationWindow", "closeInputTextWindow", "m1.stopStreaming", "m1.close",
                  "deviceWithUniqueID m1", "m1.open", "m1.startStreaming", "m1.lock",
                  "m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30",
                  "m1.unlock", "changeScale 0", "setCalibration -1 0", "removeAllShapes", "save"));
}

TEST_F(CaptureControllerTest, ASessionStartEndsACalibrationThatIsGoingOn) {
  launchWith("m1");
  host.calibrationWindowIsUp = true;
  controller->startCaptureSession(currMicroscope, currMicroscope->currResolution);
  EXPECT_FALSE(host.calibrationWindowIsUp);
  const auto order = calls();
  ASSERT_GE(order.size(), 3u);
  EXPECT_THAT(std::vector(order.begin(), order.begin() + 3),
              ElementsAre("closeCalibrationWindow", "stopCalibration", "closeInputTextWindow"));
}

TEST_F(CaptureControllerTest, AStartEndsACalibrationThatBeganWithoutAMicroscope) {
  preferences.uniqueID = "m1";
  launch();
  host.calibrationWindowIsUp = true;
  system.plug("m1");
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_FALSE(host.calibrationWindowIsUp);
  const auto order = calls();
  ASSERT_GE(order.size(), 3u);
  EXPECT_THAT(std::vector(order.begin(), order.begin() + 3),
              ElementsAre("closeCalibrationWindow", "stopCalibration", "deviceWithUniqueID m1"));
}

TEST_F(CaptureControllerTest, AChangeOfMicroscopeLeavesThePictureAlone) {
  launchWith("m1");
  system.plug("m2");
  system.tellConnected();
  calls();
  start(1, 1);
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->uniqueID, "m2");
  // Only a disconnection forgets the picture: the buffers wait for a frame of another size.
  EXPECT_THAT(calls(), Not(Contains("stopPreview")));
}

TEST_F(CaptureControllerTest, StoresTheResolutionObjectAndNotACopy) {
  system.plug("m1");
  preferences.uniqueID = "m1";
  *preferences.resolution = {kMJPEG, 640, 480};
  launch();
  EXPECT_EQ(currMicroscope->currResolution, preferences.resolution);
  EXPECT_EQ(remembered(), (Resolution{kMJPEG, 640, 480}));
}

TEST_F(CaptureControllerTest, TheRememberedResolutionStaysOneObject) {
  launchWith("m1");
  const auto object = preferences.resolution;
  start(0, 0);
  start(0, 2);
  EXPECT_EQ(preferences.resolution, object);
  EXPECT_EQ(*object, (Resolution{kMJPEG, 1920, 1080}));
  EXPECT_EQ(*microscopes[0]->resolutions[0], (Resolution{kMJPEG, 640, 480}));
}

TEST_F(CaptureControllerTest, AStartForcesTheWindowExposed) {
  launchWith("m1");
  controller->wndExposed = false;  // the window is covered
  start(0, 0);
  EXPECT_TRUE(controller->wndExposed);
  sink()->deliver(frameOf(2, 2, 5));
  controller->capVideoDataOutput->drain();
  EXPECT_THAT(host.frames(), ElementsAre(5));
}

TEST_F(CaptureControllerTest, WithoutAMicroscopeNothingStartsAndNothingStops) {
  launchWith("m1");
  controller->startCaptureSession(nullptr, nullptr);
  EXPECT_EQ(state(), State::Running);
  EXPECT_THAT(calls(), IsEmpty());
}

// ---- The device's format

struct FormatRow {
  const char* what;
  std::vector<CaptureFormat> formats;
  Resolution wanted;
  std::vector<std::string> calls;  // between lock and unlock
  std::vector<std::string> lines;
  Resolution remembered;
};

TEST_F(CaptureControllerTest, ChoosesTheFormat) {
  const std::vector<CaptureFormat> ladder = {format(kMJPEG, 640, 480), format(kMJPEG, 1280, 720),
                                             format(kMJPEG, 1920, 1080)};
  const std::string kMatched720 = "matchDeviceFormat OK: 646D6231, 1280x720";
  const std::string kConfigured720 = "Config device OK: dmb1 1280x720";
  const FormatRow rows[] = {
      {"type 0 goes straight to the default",
       ladder,
       {0, 640, 480},
       {"m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30"},
       {kMatched720, kConfigured720},
       {kMJPEG, 1280, 720}},
      {"so does a width of 0",
       ladder,
       {kMJPEG, 0, 480},
       {"m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30"},
       {kMatched720, kConfigured720},
       {kMJPEG, 1280, 720}},
      {"so does a height of 0",
       ladder,
       {kMJPEG, 640, 0},
       {"m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30"},
       {kMatched720, kConfigured720},
       {kMJPEG, 1280, 720}},
      {"a resolution that is not offered falls back and is not remembered",
       ladder,
       {kMJPEG, 800, 600},
       {"m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30"},
       {kMatched720, kConfigured720},
       {kMJPEG, 1280, 720}},
      {"neither is one of another type",
       ladder,
       {kYUYV, 640, 480},
       {"m1.setActiveFormat 1280x720 646D6231", "m1.setActiveVideoMinFrameDuration 1/30"},
       {kMatched720, kConfigured720},
       {kMJPEG, 1280, 720}},
      {"the first of equal formats wins",
       {format(kMJPEG, 640, 480, {15}), format(kMJPEG, 640, 480, {60})},
       {kMJPEG, 640, 480},
       {"m1.setActiveFormat 640x480 646D6231", "m1.setActiveVideoMinFrameDuration 1/15"},
       {"matchDeviceFormat OK: 646D6231, 640x480", "Config device OK: dmb1 640x480"},
       {kMJPEG, 640, 480}},
      {"only the first range counts",
       {format(kMJPEG, 640, 480, {10, 60, 30})},
       {kMJPEG, 640, 480},
       {"m1.setActiveFormat 640x480 646D6231", "m1.setActiveVideoMinFrameDuration 1/10"},
       {"matchDeviceFormat OK: 646D6231, 640x480", "Config device OK: dmb1 640x480"},
       {kMJPEG, 640, 480}},
      {"a format without a range keeps its rate",
       {format(kMJPEG, 640, 480, {})},
       {kMJPEG, 640, 480},
       {"m1.setActiveFormat 640x480 646D6231"},
       {"matchDeviceFormat OK: 646D6231, 640x480", "Config device OK: dmb1 640x480"},
       {kMJPEG, 640, 480}},
      {"a type that was cleaned out of the list can still be wanted",
       {format(kMJPEG, 640, 480), format(kYUYV, 640, 480, {5})},
       {kYUYV, 640, 480},
       {"m1.setActiveFormat 640x480 79757673", "m1.setActiveVideoMinFrameDuration 1/5"},
       {"matchDeviceFormat OK: 79757673, 640x480", "Config device OK: yuvs 640x480"},
       {kYUYV, 640, 480}},
      {"a subtype that can't be shown is marked",
       {format(0x01FF417E, 640, 480)},
       {0x01FF417E, 640, 480},
       {"m1.setActiveFormat 640x480 1FF417E", "m1.setActiveVideoMinFrameDuration 1/30"},
       {"matchDeviceFormat OK: 1FF417E, 640x480", "Config device OK: ??A~ 640x480"},
       {0x01FF417E, 640, 480}},
      {"without a usable format the device stays as it is",
       {format(kMediaSubTypeNV12, 640, 480, {20}), format(kMediaSubTypeUYVY, 640, 480)},
       {kMJPEG, 640, 480},
       {"m1.setActiveVideoMinFrameDuration 1/20"},
       {"Can not config microscope with resolution: 0x0"},
       {}},
      {"and so without any format at all",
       {},
       {kMJPEG, 640, 480},
       {},
       {"Can not config microscope with resolution: 0x0"},
       {}},
  };
  catalogue.InitializeMicroscopes();
  controller->setupCaptureSession();
  size_t lineCount = 0;
  for (const FormatRow& row : rows) {
    SCOPED_TRACE(row.what);
    system.plug("m1")->formats_ = row.formats;
    catalogue.InitializeMicroscopes();
    *preferences.resolution = row.wanted;
    calls();
    controller->startCaptureSession(microscopes.at(0), preferences.resolution);
    EXPECT_EQ(state(), State::Running);
    const auto all = calls();
    const auto lock = std::ranges::find(all, "m1.lock");
    const auto unlock = std::ranges::find(all, "m1.unlock");
    ASSERT_TRUE(lock < unlock && unlock != all.end());
    EXPECT_EQ(std::vector(lock + 1, unlock), row.calls);
    const auto allLines = lines();
    EXPECT_EQ(std::vector(allLines.begin() + std::ptrdiff_t(lineCount), allLines.end()), row.lines);
    lineCount = allLines.size();
    EXPECT_EQ(remembered(), row.remembered);
    controller->stopCaptureSession();
    system.pull("m1");
  }
}

TEST_F(CaptureControllerTest, ADefaultThatTheDeviceNoLongerOffersIsRememberedNevertheless) {
  const auto device = system.plug("m1");
  launch();
  device->formats_ = {format(kMJPEG, 800, 600, {25})};
  start(0, 0);
  EXPECT_EQ(state(), State::Running);
  EXPECT_THAT(lines(), ElementsAre("Can not config microscope with resolution: 1280x720"));
  EXPECT_EQ(currMicroscope->currResolution, currMicroscope->defResolution);
  EXPECT_EQ(remembered(), (Resolution{kMJPEG, 1280, 720}));
  EXPECT_THAT(calls(), Contains("m1.setActiveVideoMinFrameDuration 1/25"));
}

TEST_F(CaptureControllerTest, WithoutAWantedResolutionTheDefaultIsTaken) {
  system.plug("m1");
  launch();
  controller->startCaptureSession(microscopes[0], nullptr);
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->currResolution, currMicroscope->defResolution);
}

TEST_F(CaptureControllerTest, ConfiguresWhetherOrNotTheLockIsGranted) {
  system.plug("m1")->grantsLock_ = false;
  launch();
  start(0, 0);
  EXPECT_THAT(calls(), testing::IsSupersetOf({"m1.lock", "m1.setActiveFormat 640x480 646D6231",
                                              "m1.unlock", "save"}));
  EXPECT_EQ(state(), State::Running);
}

TEST_F(CaptureControllerTest, WithoutADeviceNoFormatMatches) {
  launch();
  EXPECT_EQ(controller->matchDeviceFormat(), nullptr);
  controller->configDeviceWithCurrResolution();
  currMicroscope = std::make_shared<MicroscopeInfo>();
  currMicroscope->currResolution = std::make_shared<Resolution>(Resolution{kMJPEG, 640, 480});
  EXPECT_EQ(controller->matchDeviceFormat(), nullptr);
  controller->configDeviceWithCurrResolution();
  EXPECT_THAT(lines(), ElementsAre("Can not config microscope with resolution: 0x0"));
}

// ---- Failures

TEST_F(CaptureControllerTest, FailsWhenTheDeviceHasVanished) {
  system.plug("m1");
  launch();
  system.pull("m1");
  start(0, 0);
  EXPECT_EQ(state(), State::Failed);
  EXPECT_EQ(controller->capDevice, nullptr);
  EXPECT_EQ(currMicroscope, microscopes[0]);
  EXPECT_THAT(lines(), ElementsAre("Could not create video device input: "
                                   "The camera is not connected any more."));
  // Nothing saved, the overlay not reset.
  EXPECT_THAT(calls(), ElementsAre("closeCalibrationWindow", "deviceWithUniqueID m1"));
  EXPECT_EQ(preferences.uniqueID, "");
}

TEST_F(CaptureControllerTest, FailsWhenTheDeviceCantBeOpenedAndRecoversByTheNextStart) {
  const auto device = system.plug("m1");
  device->canBeOpened_ = false;
  launch();
  start(0, 0);
  EXPECT_EQ(state(), State::Failed);
  EXPECT_EQ(controller->capDevice, device);
  EXPECT_THAT(lines(), ElementsAre("Could not create video device input: "
                                   "The camera is used by another program."));
  device->canBeOpened_ = true;
  start(0, 0);
  EXPECT_EQ(state(), State::Running);
}

TEST_F(CaptureControllerTest, AFailedStartAfterAGoodOneLeavesNothingOfIt) {
  const auto device = launchWith("m1");
  const auto saved = remembered();
  device->canBeOpened_ = false;
  start(0, 0);
  EXPECT_EQ(state(), State::Failed);
  EXPECT_EQ(controller->capDeviceInput, nullptr);
  EXPECT_EQ(controller->capVideoDataOutput, nullptr);
  EXPECT_EQ(remembered(), saved);
  EXPECT_THAT(calls(), ElementsAre("closeCalibrationWindow", "closeInputTextWindow",
                                   "m1.stopStreaming", "m1.close", "deviceWithUniqueID m1"));
}

TEST_F(CaptureControllerTest, FailsWhenTheSessionRefusesTheInput) {
  system.plug("m1");
  launch();
  const auto inTheWay = std::make_shared<test::FakeInput>(
      callLog, std::make_shared<test::FakeDevice>(callLog, "other"));
  controller->capSession->addInput(inTheWay);
  calls();
  start(0, 0);
  EXPECT_THAT(lines(), ElementsAre("Could not add video device input to the session"));
  EXPECT_EQ(failures.text(Failure::Camera), "The microscope can't be opened. Choose it once more.");
  EXPECT_THAT(calls(), ElementsAre("closeCalibrationWindow", "deviceWithUniqueID m1", "m1.open"));
  EXPECT_NE(controller->capDeviceInput, nullptr);
  EXPECT_EQ(controller->capVideoDataOutput, nullptr);
  EXPECT_FALSE(controller->capSession->isRunning());
  // Open until the next stop.
  controller->stopCaptureSession();
  EXPECT_THAT(calls(), Contains("m1.close"));
  EXPECT_EQ(controller->capSession->input(), inTheWay);
}

TEST_F(CaptureControllerTest, AStreamThatFailsEndsInTheFailedStateWithItsReasonInTheLog) {
  launchWith("m1");
  sink()->streamFailed("No bandwidth is left on the USB bus; unplug another camera.");
  mainQueue.runAll();
  EXPECT_EQ(state(), State::Failed);
  EXPECT_NE(controller->capDevice, nullptr);
  EXPECT_THAT(calls(), ElementsAre("m1.stopStreaming"));
  const auto all = lines();
  ASSERT_GE(all.size(), 2u);
  EXPECT_THAT(std::vector(all.end() - 2, all.end()),
              ElementsAre("!!!AVCaptureSessionRuntimeErrorNotification!!!",
                          "No bandwidth is left on the USB bus; unplug another camera."));
  start(0, 0);
  EXPECT_EQ(state(), State::Running);
}

TEST_F(CaptureControllerTest, AMicroscopePulledAfterItsStreamFailedLeavesItIdle) {
  launchWith("m1");
  sink()->streamFailed("The camera does not answer.");
  mainQueue.runAll();
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
}

// ---- Frames

TEST_F(CaptureControllerTest, AMicroscopeThatCantBeOpenedIsToldUntilOneIs) {
  const auto device = launchWith("m1");
  device->canBeOpened_ = false;
  start(0, 0);
  EXPECT_EQ(failures.text(Failure::Camera), "The camera is used by another program.");
  controller->watchFrames();
  EXPECT_EQ(failures.text(Failure::Camera), "The camera is used by another program.");
  device->canBeOpened_ = true;
  start(0, 0);
  EXPECT_EQ(failures.text(Failure::Camera), "");
}

TEST_F(CaptureControllerTest, AStreamThatFailsIsToldUntilTheSessionStops) {
  launchWith("m1");
  sink()->streamFailed("No bandwidth is left on the USB bus; unplug another camera.");
  mainQueue.runAll();
  for (int look = 0; look < 5; ++look) controller->watchFrames();
  EXPECT_EQ(failures.text(Failure::Camera),
            "No bandwidth is left on the USB bus; unplug another camera.");
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_EQ(failures.text(Failure::Camera), "");
}

TEST_F(CaptureControllerTest, AMicroscopeThatFallsSilentIsToldUntilItSendsAgain) {
  launchWith("m1");
  for (int round = 0; round < 2; ++round) {
    controller->wndExposed = round == 0;  // frames that are not shown count too
    sink()->deliver(test::frameOf(640, 480));
    controller->capVideoDataOutput->drain();
    for (int look = 0; look < 3; ++look) {
      controller->watchFrames();
      EXPECT_EQ(failures.text(Failure::Camera), "") << look;
    }
    controller->watchFrames();
    EXPECT_EQ(failures.text(Failure::Camera),
              "Microscope sends no pictures. Unplug it and plug it in again.");
    EXPECT_EQ(failures.told(), round + 1);
  }
  controller->watchFrames();
  EXPECT_EQ(failures.told(), 2);  // once is enough
  start(0, 0);
  EXPECT_EQ(failures.text(Failure::Camera), "");
  controller->watchFrames();
  controller->watchFrames();
  EXPECT_EQ(failures.text(Failure::Camera), "");
  controller->watchFrames();
  EXPECT_NE(failures.text(Failure::Camera), "");
  controller->stopCaptureSession();
  EXPECT_EQ(failures.text(Failure::Camera), "");
  for (int look = 0; look < 5; ++look) controller->watchFrames();
  EXPECT_EQ(failures.text(Failure::Camera), "");
}

TEST_F(CaptureControllerTest, HoldsNoFrameBackAtTheStartOfASession) {
  launchWith("m1");
  EXPECT_EQ(controller->framesCaptured, 10u);
  for (int64_t time = 1; time <= 3; ++time) {
    sink()->deliver(frameOf(2, 2, time));
    controller->capVideoDataOutput->drain();
  }
  EXPECT_THAT(host.frames(), ElementsAre(1, 2, 3));
  EXPECT_EQ(controller->framesCaptured, 13u);
  start(0, 0);
  EXPECT_EQ(controller->framesCaptured, 10u);
}

TEST_F(CaptureControllerTest, CountsFramesOfACoveredWindowButKeepsThemFromThePicture) {
  launchWith("m1");
  for (const bool exposed : {true, false, false, true}) {
    controller->wndExposed = exposed;
    sink()->deliver(frameOf(2, 2, controller->framesCaptured));
    controller->capVideoDataOutput->drain();
  }
  EXPECT_THAT(host.frames(), ElementsAre(10, 13));
  EXPECT_EQ(controller->framesCaptured, 14u);
}

TEST_F(CaptureControllerTest, HoldsTwoFramesBackWhenTheCounterWraps) {
  launchWith("m1");
  controller->framesCaptured = 0xFFFFFFFE;
  for (int64_t time = 1; time <= 4; ++time) {
    sink()->deliver(frameOf(2, 2, time));
    controller->capVideoDataOutput->drain();
  }
  //  1: 0xFFFFFFFF, 2: 0, 3: 1, 4: 2
  EXPECT_THAT(host.frames(), ElementsAre(1, 4));
  EXPECT_EQ(controller->framesCaptured, 2u);
}

// ---- The window's end

TEST_F(CaptureControllerTest, ClosingLetsEverythingGoButTheCurrentMicroscope) {
  launchWith("m1");
  controller->windowWillClose();
  EXPECT_THAT(calls(), ElementsAre("m1.stopStreaming", "m1.close"));
  EXPECT_EQ(controller->capSession, nullptr);
  EXPECT_EQ(controller->capDevice, nullptr);
  EXPECT_EQ(controller->capDeviceInput, nullptr);
  EXPECT_EQ(controller->capVideoDataOutput, nullptr);
  EXPECT_EQ(controller->capVideoDataOutputQueue, nullptr);
  EXPECT_EQ(controller->sessionRuntimeErrorObserver, nullptr);
  EXPECT_EQ(controller->deviceWasConnectedObserver, nullptr);
  EXPECT_EQ(controller->deviceWasDisconnectedObserver, nullptr);
  EXPECT_EQ(currMicroscope, microscopes[0]);
  EXPECT_FALSE(system.isListenedTo());
  controller->windowWillClose();
  controller->stopCaptureSession();
  start(0, 0);
  EXPECT_EQ(controller->capSession, nullptr);
}

TEST_F(CaptureControllerTest, AnEventThatIsAlreadyOnItsWayFindsNobody) {
  launchWith("m1");
  const auto onItsWay = system.deviceWasDisconnectedHandler();
  sink()->streamFailed("gone");
  controller = nullptr;
  calls();
  const auto before = lines();
  system.pull("m1");
  onItsWay();
  mainQueue.runAll();
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_EQ(lines(), before);
  EXPECT_THAT(ids(), ElementsAre("m1"));
}

TEST_F(CaptureControllerTest, EndsWithoutEverHavingBeenSetUp) {
  controller->windowWillClose();
  controller = nullptr;
  EXPECT_THAT(calls(), IsEmpty());
}

}  // namespace
}  // namespace tessary
