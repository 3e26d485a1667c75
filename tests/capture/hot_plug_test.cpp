#include "CaptureControllerFixture.h"

namespace tessary {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class HotPlugTest : public test::CaptureControllerFixture {};

TEST_F(HotPlugTest, AFirstLaunchOpensNothing) {
  system.plug("m1");
  launch();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, LaunchOpensTheRememberedMicroscopeAndNoOther) {
  for (const char* id : {"m1", "m2", "m3"}) system.plug(id);
  preferences.uniqueID = "m2";
  *preferences.resolution = {kMediaSubTypeMJPEG, 640, 480};
  launch();
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope, microscopes[1]);
  EXPECT_EQ(*currMicroscope->currResolution, (Resolution{kMediaSubTypeMJPEG, 640, 480}));
}

TEST_F(HotPlugTest, LaunchFallsBackToNoOtherMicroscope) {
  system.plug("m1");
  preferences.uniqueID = "m2";
  launch();
  EXPECT_EQ(state(), State::Idle);
}

TEST_F(HotPlugTest, LaunchLeavesASessionThatIsOpenAlone) {
  launchWith("m1");
  controller->onMicroscopesInitialized();
  EXPECT_EQ(state(), State::Running);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, TheRememberedMicroscopeOpensWhenItIsPluggedIn) {
  preferences.uniqueID = "m1";
  *preferences.resolution = {kMediaSubTypeMJPEG, 1920, 1080};
  launch();
  EXPECT_EQ(state(), State::Idle);
  system.plug("m1");
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->currResolution, preferences.resolution);
}

TEST_F(HotPlugTest, AnotherMicroscopeOnlyJoinsTheList) {
  preferences.uniqueID = "m1";
  launch();
  system.plug("m2");
  system.tellConnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(ids(), ElementsAre("m2"));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, TheRememberedMicroscopeDoesNotInterruptAnother) {
  launchWith("m1");
  preferences.uniqueID = "m2";
  system.plug("m2");
  system.tellConnected();
  EXPECT_EQ(currMicroscope->uniqueID, "m1");
  EXPECT_THAT(ids(), ElementsAre("m1", "m2"));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, TwoMicroscopesThatCameTogetherReportTheLast) {
  preferences.uniqueID = "m1";
  launch();
  system.plug("m1");
  system.plug("m2");
  system.tellConnected();
  // Meant: only the one that is reported, "m2", is compared with the remembered one.
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(ids(), ElementsAre("m1", "m2"));
}

TEST_F(HotPlugTest, APulledMicroscopeEndsItsSessionAndThePicture) {
  launchWith("m1");
  host.calibrationWindowIsUp = true;
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(microscopes, IsEmpty());
  EXPECT_THAT(calls(),
              ElementsAre("closeCalibrationWindow", "stopCalibration", "closeInputTextWindow",
                          "m1.stopStreaming", "m1.close", "stopPreview"));
}

TEST_F(HotPlugTest, AMicroscopeThatReturnsOpensAgain) {
  launchWith("m1");
  const auto before = currMicroscope;
  *preferences.resolution = {kMediaSubTypeMJPEG, 640, 480};
  system.pull("m1");
  system.tellDisconnected();
  system.plug("m1");
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_NE(currMicroscope, before);
  EXPECT_EQ(*currMicroscope->currResolution, (Resolution{kMediaSubTypeMJPEG, 640, 480}));
}

TEST_F(HotPlugTest, AMicroscopePutInAndPulledInOneTurnIsNoNews) {
  preferences.uniqueID = "m1";
  launch();
  system.plug("m1");
  system.pull("m1");
  system.tellConnected();
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(microscopes, IsEmpty());
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, TwoMicroscopesExchangedInOneTurn) {
  launchWith("m1");
  preferences.uniqueID = "m2";
  system.pull("m1");
  system.plug("m2");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->uniqueID, "m2");
}

TEST_F(HotPlugTest, APullOfAnotherMicroscopeTouchesNothing) {
  launchWith("m1");
  system.plug("m2");
  system.tellConnected();
  system.pull("m2");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_THAT(ids(), ElementsAre("m1"));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, APullWithoutACurrentMicroscopeMatchesNothing) {
  system.plug("m1");
  launch();
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(microscopes, IsEmpty());
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, ASecondMicroscopePulledAfterTheCurrentOneWentMatchesNothing) {
  launchWith("m1");
  system.plug("m2");
  system.tellConnected();
  system.pull("m1");
  system.tellDisconnected();
  calls();
  system.pull("m2");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, OfTwoThatVanishTogetherOnlyTheReportedOneIsCompared) {
  system.plug("m0");
  launchWith("m1");
  system.pull("m0");
  system.pull("m1");
  system.tellDisconnected();
  // Meant: "m0" is reported, so the session of "m1" is not stopped by this event.
  EXPECT_THAT(microscopes, IsEmpty());
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->uniqueID, "m1");
  EXPECT_THAT(calls(), Not(Contains("stopPreview")));
}

TEST_F(HotPlugTest, OfTwoThatVanishTogetherTheReportedOneMayBeTheCurrent) {
  launchWith("m1");
  system.plug("m2");
  system.tellConnected();
  system.pull("m1");
  system.pull("m2");
  system.tellDisconnected();
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  EXPECT_EQ(callLog->count("stopPreview"), 1);
}

TEST_F(HotPlugTest, AMicroscopePulledJustBeforeItIsOpenedEndsIdle) {
  system.plug("m1");
  launch();
  system.beforeOpening = [this] { system.pull("m1"); };
  start(0, 0);
  EXPECT_EQ(state(), State::Failed);
  EXPECT_NE(controller->capDevice, nullptr);
  EXPECT_THAT(lines(), ElementsAre("Could not create video device input: "
                                   "The camera is not connected any more."));
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
}

TEST_F(HotPlugTest, AMicroscopePulledAndPutBackWhileItIsOpenedOpensAgain) {
  system.plug("m1");
  preferences.uniqueID = "m1";
  system.beforeOpening = [this] {
    system.beforeOpening = nullptr;
    system.pull("m1");
  };
  launch();
  EXPECT_EQ(state(), State::Failed);
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
  system.plug("m1");
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
}

TEST_F(HotPlugTest, AMicroscopePulledAfterItWasOpenedEndsIdle) {
  const auto device = launchWith("m1");
  device->grantsLock_ = false;
  system.pull("m1");
  // The device object is still there, the stream falls silent and nothing tells of it.
  controller->configDeviceWithCurrResolution();
  EXPECT_EQ(state(), State::Running);
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
}

TEST_F(HotPlugTest, TheMicroscopeSheetFollowsTheList) {
  launch();
  host.microscopeWindowIsUp = true;
  system.plug("m1");
  system.tellConnected();
  EXPECT_THAT(calls(), ElementsAre("refreshMicroscopes"));
  system.plug("m2");
  system.tellConnected();
  EXPECT_THAT(calls(), ElementsAre("refreshMicroscopes"));
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_THAT(calls(), ElementsAre("refreshMicroscopes"));
  EXPECT_TRUE(host.microscopeWindowIsUp);
  system.pull("m2");
  system.tellDisconnected();
  EXPECT_THAT(calls(), ElementsAre("endMicroscopeSheet 0"));
  EXPECT_FALSE(host.microscopeWindowIsUp);
}

TEST_F(HotPlugTest, TheSheetIsRefreshedBeforeTheRememberedMicroscopeOpens) {
  preferences.uniqueID = "m1";
  launch();
  host.microscopeWindowIsUp = true;
  system.plug("m1");
  system.tellConnected();
  const auto order = calls();
  ASSERT_GE(order.size(), 3u);
  EXPECT_THAT(std::vector(order.begin(), order.begin() + 3),
              ElementsAre("refreshMicroscopes", "closeCalibrationWindow", "deviceWithUniqueID m1"));
}

TEST_F(HotPlugTest, TheSheetEndsBeforeTheSession) {
  launchWith("m1");
  host.microscopeWindowIsUp = true;
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_THAT(calls(),
              ElementsAre("endMicroscopeSheet 0", "closeCalibrationWindow", "closeInputTextWindow",
                          "m1.stopStreaming", "m1.close", "stopPreview"));
}

TEST_F(HotPlugTest, ACameraThatIsNoMicroscopeDoesNotTouchTheSheet) {
  launch();
  host.microscopeWindowIsUp = true;
  const auto webcam = std::make_shared<test::FakeDevice>(callLog, "webcam");
  webcam->modelID_ = "UVC Camera VendorID_1133 ProductID_2093";
  system.plug(webcam);
  system.tellConnected();
  system.pull("webcam");
  system.tellDisconnected();
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HotPlugTest, AMicroscopeWithoutAnyFormatOpensAndGoes) {
  const auto device = std::make_shared<test::FakeDevice>(callLog, "m1");
  device->formats_ = {};
  preferences.uniqueID = "m1";
  launch();
  system.plug(device);
  system.tellConnected();
  EXPECT_EQ(state(), State::Running);
  EXPECT_EQ(currMicroscope->currResolution, nullptr);
  EXPECT_EQ(remembered(), Resolution{});
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_EQ(state(), State::Idle);
}

}  // namespace
}  // namespace tessary
