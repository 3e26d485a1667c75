#include <gmock/gmock.h>

#include "CaptureControllerFixture.h"
#include "capture/CameraControlBoard.h"

namespace tessary {
namespace {

using testing::IsEmpty;

constexpr uint32_t kMode = 5;  // behind what it rules, as that of the focus is
constexpr uint32_t kTime = 2;
constexpr uint32_t kGain = 3;
constexpr uint32_t kOnce = 4;

/// A camera with a mode, what it rules, a number in steps of 5 from 3 on, and a button.
std::vector<CameraControl> controlsOf(int32_t mode, int32_t time, int32_t gain) {
  return {{.id = kMode,
           .name = "Mode",
           .kind = ControlKind::Menu,
           .minimum = 0,
           .maximum = 3,
           .defaultValue = 3,
           .value = mode,
           .choices = {{1, "Manual"}, {3, "Automatic"}},
           .isMode = true},
          {.id = kTime,
           .name = "Time",
           .minimum = 1,
           .maximum = 100,
           .defaultValue = 50,
           .value = time,
           .canBeSet = mode == 1},
          {.id = kGain,
           .name = "Gain",
           .minimum = 3,
           .maximum = 25,
           .step = 5,
           .defaultValue = 8,
           .value = gain},
          {.id = kOnce, .name = "Once", .kind = ControlKind::Button}};
}

using Requests = std::vector<std::vector<ControlValue>>;

class CameraControlBoardTest : public test::CaptureControllerFixture {
 protected:
  ~CameraControlBoardTest() override { controls.setObserver({}); }

  /// Opens camera "m1" as its first user, who looks at its controls.
  void openAndLook() {
    controls.setObserver([this] { ++changes; });
    controls.cameraDidOpen(system.plug("m1"));
    answer(3, 50, 8);
  }
  void answer(int32_t mode, int32_t time, int32_t gain, std::vector<ControlValue> taken = {}) {
    system.controls.open->report(controlsOf(mode, time, gain), std::move(taken));
  }
  Requests requests() { return std::exchange(system.controls.requests, {}); }
  int32_t value(uint32_t id) const {
    for (const CameraControl& control : controls.controls())
      if (control.id == id) return control.value;
    return -999;
  }
  ControlValues stored() {
    controls.keepChanges();
    return rememberedControls.values("UVC Camera VendorID_1374 ProductID_41312 1");
  }

  int changes = 0;
};

TEST_F(CameraControlBoardTest, ACameraOfWhichNothingIsRememberedIsNotAskedBeforeSomebodyLooks) {
  controls.cameraDidOpen(system.plug("m1"));
  EXPECT_EQ(system.controls.open, nullptr);
  EXPECT_TRUE(controls.hasCamera());
  controls.setObserver([this] { ++changes; });
  ASSERT_NE(system.controls.open, nullptr);
  EXPECT_FALSE(controls.isRead());
  answer(3, 50, 8);
  EXPECT_TRUE(controls.isRead());
  EXPECT_EQ(changes, 1);
  EXPECT_THAT(controls.controls(), testing::ElementsAreArray(controlsOf(3, 50, 8)));
  controls.cameraDidClose();
  EXPECT_EQ(changes, 2);
  EXPECT_THAT(requests(), IsEmpty()) << "and it is never touched";
  EXPECT_THAT(store.values, IsEmpty());
}

TEST_F(CameraControlBoardTest, WhatIsSetIsTheNearestThatThereIs) {
  openAndLook();
  controls.set(kMode, 1);
  answer(1, 50, 8);
  requests();
  const struct {
    uint32_t id;
    int32_t wanted, asked;
  } rows[] = {{kGain, 15, 13}, {kGain, 16, 18}, {kGain, 99, 23},
              {kGain, -99, 3}, {kTime, 0, 1},   {kTime, 101, 100}};
  for (const auto& row : rows) {
    controls.set(row.id, row.wanted);
    EXPECT_EQ(requests(), (Requests{{{row.id, row.asked}}})) << row.wanted;
    EXPECT_EQ(value(row.id), row.asked) << "shown at once";
  }
  controls.set(kTime, 100);  // as it is
  controls.set(kMode, 2);    // a gap in the menu
  controls.set(kOnce, 1);    // a button
  controls.set(77, 1);       // no such thing
  controls.press(kTime);     // no button
  EXPECT_THAT(requests(), IsEmpty());
  controls.press(kOnce);
  EXPECT_EQ(requests(), (Requests{{{kOnce, 1}}}));
}

TEST_F(CameraControlBoardTest, WhatTheCameraRulesItselfIsLeftAlone) {
  openAndLook();
  controls.set(kTime, 20);
  controls.setDefault(kTime);
  EXPECT_THAT(requests(), IsEmpty());
  EXPECT_EQ(value(kTime), 50);
}

TEST_F(CameraControlBoardTest, ASliderThatIsDraggedIsNotPulledBackByTheCamera) {
  openAndLook();
  for (const int32_t gain : {13, 18, 23}) controls.set(kGain, gain);
  system.controls.open->report(controlsOf(3, 50, 13), {{kGain, 13}}, 1);
  EXPECT_EQ(value(kGain), 23);
  system.controls.open->report(controlsOf(1, 50, 18), {{kGain, 18}}, 2);
  EXPECT_EQ(value(kGain), 23);
  EXPECT_EQ(value(kMode), 1) << "what was not asked for follows";
  system.controls.open->report(controlsOf(1, 50, 18), {}, 3);
  EXPECT_EQ(value(kGain), 18) << "the camera has refused the last one";
  EXPECT_EQ(stored(), (ControlValues{{kGain, 18}}));
}

TEST_F(CameraControlBoardTest, ChangesFromElsewhereShowAndAreNotRemembered) {
  openAndLook();
  changes = 0;
  answer(1, 30, 23);
  EXPECT_EQ(value(kTime), 30);
  EXPECT_EQ(changes, 1);
  answer(1, 30, 23);
  EXPECT_EQ(changes, 1) << "no news";
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(CameraControlBoardTest, WhatTheCameraTookIsRememberedAndNoMore) {
  openAndLook();
  controls.set(kMode, 1);
  controls.set(kGain, 13);
  controls.press(kOnce);
  answer(1, 50, 8, {{kMode, 1}, {kOnce, 1}});
  EXPECT_EQ(stored(), (ControlValues{{kMode, 1}}));
  const int calls = store.storeCalls;
  controls.keepChanges();
  EXPECT_EQ(store.storeCalls, calls) << "nothing has changed since";
}

TEST_F(CameraControlBoardTest, ClosingKeepsWhatWasChanged) {
  openAndLook();
  controls.set(kGain, 13);
  answer(3, 50, 13, {{kGain, 13}});
  controls.cameraDidClose();
  EXPECT_EQ(stored(), (ControlValues{{kGain, 13}}));
  EXPECT_FALSE(controls.hasCamera());
  EXPECT_THAT(controls.controls(), IsEmpty());
}

TEST_F(CameraControlBoardTest, GivesBackModesFirstWhenTheCameraComesAgain) {
  rememberedControls.setValues("UVC Camera VendorID_1374 ProductID_41312 1",
                               {{kMode, 1}, {kTime, 20}, {kGain, 23}});
  const auto other = std::make_shared<test::FakeDevice>(system.log, "m2");
  other->serialNumber_ = "2";
  controls.cameraDidOpen(other);
  EXPECT_EQ(system.controls.open, nullptr) << "another of the same model";
  for (int turn = 0; turn < 2; ++turn) {
    controls.cameraDidOpen(system.plug("m1"));
    EXPECT_THAT(requests(), IsEmpty()) << "it has not told yet what it has";
    answer(3, 50, 8);
    EXPECT_EQ(requests(), (Requests{{{kMode, 1}, {kTime, 20}, {kGain, 23}}}));
    answer(1, 20, 23, {{kMode, 1}, {kTime, 20}, {kGain, 23}});
    EXPECT_THAT(requests(), IsEmpty()) << "once";
    controls.cameraDidClose();
  }
  EXPECT_EQ(stored().size(), 3u);
}

TEST_F(CameraControlBoardTest, WhatIsOutOfRangeNowIsSkippedWithALineAndStaysRemembered) {
  rememberedControls.setValues("UVC Camera VendorID_1374 ProductID_41312 1",
                               {{kMode, 2}, {kTime, 101}, {kGain, 23}, {kOnce, 1}, {99, 1}});
  controls.cameraDidOpen(system.plug("m1"));
  answer(1, 50, 8);
  EXPECT_EQ(requests(), (Requests{{{kGain, 23}}}));
  const auto lines = log.lines();
  EXPECT_EQ(std::ranges::count_if(
                lines, [](const auto& line) { return line.starts_with("Remembered control "); }),
            4);
  EXPECT_EQ(stored().size(), 5u);
}

TEST_F(CameraControlBoardTest, ADefaultIsSetAndNoLongerRemembered) {
  openAndLook();
  controls.set(kGain, 13);
  answer(3, 50, 13, {{kGain, 13}});
  EXPECT_EQ(stored(), (ControlValues{{kGain, 13}}));
  requests();
  controls.setDefault(kGain);
  EXPECT_EQ(requests(), (Requests{{{kGain, 8}}}));
  EXPECT_EQ(stored(), (ControlValues{{kGain, 13}})) << "the camera has not taken it yet";
  answer(3, 50, 8, {{kGain, 8}});
  EXPECT_THAT(stored(), IsEmpty());
  controls.set(kGain, 18);
  answer(3, 50, 18, {{kGain, 18}});
  EXPECT_EQ(stored(), (ControlValues{{kGain, 18}})) << "changed once more";
}

TEST_F(CameraControlBoardTest, AllDefaultsSetWhatModesRuleBeforeAndAfterThem) {
  openAndLook();
  controls.set(kMode, 1);
  answer(1, 20, 13, {{kMode, 1}});
  requests();
  controls.setAllDefaults();
  EXPECT_EQ(requests(), (Requests{{{kTime, 50}, {kGain, 8}, {kMode, 3}}}));
  EXPECT_THAT(stored(), IsEmpty());
  answer(3, 50, 8, {{kTime, 50}, {kGain, 8}, {kMode, 3}});
  EXPECT_THAT(stored(), IsEmpty());
  controls.setAllDefaults();
  EXPECT_EQ(requests(), (Requests{{{kGain, 8}, {kMode, 3}}})) << "the time stays ruled";
  std::vector<CameraControl> manualByDefault = controlsOf(3, 20, 8);
  manualByDefault[0].defaultValue = 1;
  system.controls.open->report(manualByDefault);
  controls.setAllDefaults();
  EXPECT_EQ(requests(), (Requests{{{kGain, 8}, {kMode, 1}, {kTime, 50}}}));
}

TEST_F(CameraControlBoardTest, ASessionBringsTheControlsAndTakesThemAway) {
  controls.setObserver([this] { ++changes; });
  launchWith("m1");
  EXPECT_TRUE(controls.hasCamera());
  ASSERT_NE(system.controls.open, nullptr);
  start(0, 0);  // another resolution
  ASSERT_NE(system.controls.open, nullptr);
  EXPECT_EQ(std::ranges::count(calls(), "m1.makeControls"), 1) << "once more";
  system.pull("m1");
  system.tellDisconnected();
  EXPECT_FALSE(controls.hasCamera());
  EXPECT_EQ(system.controls.open, nullptr);
  system.plug("m1");
  system.tellConnected();
  EXPECT_TRUE(controls.hasCamera());
  controller->windowWillClose();
  EXPECT_FALSE(controls.hasCamera());
}

TEST_F(CameraControlBoardTest, ACameraThatCantBeOpenedHasNone) {
  system.plug("m1")->canBeOpened_ = false;
  preferences.uniqueID = "m1";
  launch();
  EXPECT_FALSE(controls.hasCamera());
}

}  // namespace
}  // namespace tessary
