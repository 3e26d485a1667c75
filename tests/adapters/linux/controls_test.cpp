#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <thread>

#include <gmock/gmock.h>

#include "FakeControlDriver.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "base/SerialQueue.h"
#include "linux/V4l2Controls.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::FakeControlDriver;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr uint32_t kBrightness = V4L2_CID_BRIGHTNESS;
constexpr uint32_t kAuto = V4L2_CID_EXPOSURE_AUTO;
constexpr uint32_t kTime = V4L2_CID_EXPOSURE_ABSOLUTE;

/// A camera that doesn't come back from setting a control until it is let go.
class Hang {
 public:
  explicit Hang(FakeControlDriver& driver) {
    driver.beforeSetting = [this, gate = gate_](uint32_t) {
      reached_ = true;
      gate.wait();
    };
  }
  void waitUntilReached() const {
    while (!reached_) std::this_thread::sleep_for(1ms);
  }
  void end() { ended_.set_value(); }

 private:
  std::promise<void> ended_;
  const std::shared_future<void> gate_ = ended_.get_future().share();
  std::atomic<bool> reached_ = false;
};

class ControlsTest : public testing::Test {
 protected:
  ControlsTest() {
    driver->controls = {
        FakeControlDriver::control(kBrightness, V4L2_CTRL_TYPE_INTEGER, "Brightness", -10, 10, 2,
                                   0),
        FakeControlDriver::control(kAuto, V4L2_CTRL_TYPE_MENU, "Auto Exposure", 0, 3, 1, 3),
        FakeControlDriver::control(kTime, V4L2_CTRL_TYPE_INTEGER, "Exposure Time, Absolute", 1,
                                   5000, 1, 157, V4L2_CTRL_FLAG_INACTIVE)};
    driver->controls[1].names = {{1, "Manual Mode"}, {3, "Aperture Priority Mode"}};
  }
  void open() {
    controls = std::make_unique<V4l2Controls>(
        driver, "/dev/video0", "Scope", mainQueue,
        [this](const CameraControls::Report& told) { reports.push_back(told); });
  }
  /// Waits for a report that `condition` holds for; the last one.
  template <typename Condition>
  bool waitFor(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + 30s;
    for (;;) {
      mainQueue.runAll();
      if (!reports.empty() && condition(reports.back())) return true;
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(1ms);
    }
  }
  bool waitForRequest(uint64_t number) {
    return waitFor([number](const auto& report) { return report.request >= number; });
  }
  bool openAndWait() {
    open();
    return waitForRequest(0);
  }
  const CameraControl& shown(uint32_t id) const {
    return *std::ranges::find(reports.back().controls, id, &CameraControl::id);
  }
  uint64_t set(std::vector<ControlValue> values) { return controls->set(values); }

  test::LogCapture log;
  test::ManualExecutor mainQueue;
  std::shared_ptr<FakeControlDriver> driver = std::make_shared<FakeControlDriver>();
  std::vector<CameraControls::Report> reports;
  std::unique_ptr<V4l2Controls> controls;
};

TEST_F(ControlsTest, ListsWhatTheCameraOffersInItsOrder) {
  ASSERT_TRUE(openAndWait());
  const std::vector<CameraControl> expected{
      {.id = kBrightness,
       .name = "Brightness",
       .group = ControlGroup::Picture,
       .minimum = -10,
       .maximum = 10,
       .step = 2},
      {.id = kAuto,
       .name = "Auto Exposure",
       .kind = ControlKind::Menu,
       .group = ControlGroup::Exposure,
       .minimum = 0,
       .maximum = 3,
       .defaultValue = 3,
       .value = 3,
       .choices = {{1, "Manual Mode"}, {3, "Aperture Priority Mode"}},
       .isMode = true},
      {.id = kTime,
       .name = "Exposure Time, Absolute",
       .group = ControlGroup::Exposure,
       .minimum = 1,
       .maximum = 5000,
       .defaultValue = 157,
       .value = 157,
       .canBeSet = false}};
  EXPECT_EQ(reports.back().controls, expected);
  EXPECT_THAT(driver->settings(), IsEmpty());
}

TEST_F(ControlsTest, KnowsEveryKindAndLeavesOutWhatItCannotShow) {
  using enum ControlKind;
  const auto add = [this](uint32_t id, v4l2_ctrl_type type, uint32_t flags = 0) {
    driver->controls.push_back(FakeControlDriver::control(id, type, "x", 0, 1, 0, 0, flags));
  };
  driver->controls.clear();
  add(V4L2_CID_AUTO_WHITE_BALANCE, V4L2_CTRL_TYPE_BOOLEAN);
  add(V4L2_CID_DO_WHITE_BALANCE, V4L2_CTRL_TYPE_BUTTON);
  add(V4L2_CID_POWER_LINE_FREQUENCY, V4L2_CTRL_TYPE_INTEGER_MENU);
  driver->controls.back().numbers = {{0, 50}, {1, 5'000'000'000}};
  add(0x00990000, V4L2_CTRL_TYPE_CTRL_CLASS);
  add(V4L2_CID_FOCUS_ABSOLUTE, V4L2_CTRL_TYPE_INTEGER, V4L2_CTRL_FLAG_READ_ONLY);
  add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_INTEGER, V4L2_CTRL_FLAG_GRABBED);
  add(V4L2_CID_ZOOM_ABSOLUTE, V4L2_CTRL_TYPE_INTEGER, V4L2_CTRL_FLAG_DISABLED);
  add(V4L2_CID_ZOOM_RELATIVE, V4L2_CTRL_TYPE_INTEGER, V4L2_CTRL_FLAG_UPDATE);
  add(0x0098f000, V4L2_CTRL_TYPE_STRING);
  std::ranges::sort(driver->controls, {}, [](const auto& control) { return control.query.id; });
  ASSERT_TRUE(openAndWait());
  struct Row {
    uint32_t id;
    ControlKind kind;
    ControlGroup group;
    bool canBeSet, isMode;
  };
  const Row rows[] = {
      {V4L2_CID_AUTO_WHITE_BALANCE, Switch, ControlGroup::Colour, true, true},
      {V4L2_CID_DO_WHITE_BALANCE, Button, ControlGroup::Colour, true, false},
      {V4L2_CID_POWER_LINE_FREQUENCY, Menu, ControlGroup::Exposure, true, false},
      {V4L2_CID_FOCUS_ABSOLUTE, Number, ControlGroup::Focus, false, false},
      {V4L2_CID_FOCUS_AUTO, Number, ControlGroup::Focus, false, true},
      {V4L2_CID_ZOOM_RELATIVE, Number, ControlGroup::Other, true, true},
  };
  ASSERT_EQ(reports.back().controls.size(), std::size(rows));
  for (const Row& row : rows) {
    const CameraControl& control = shown(row.id);
    EXPECT_EQ(control.kind, row.kind) << row.id;
    EXPECT_EQ(control.group, row.group) << row.id;
    EXPECT_EQ(control.canBeSet, row.canBeSet) << row.id;
    EXPECT_EQ(control.isMode, row.isMode) << row.id;
    EXPECT_GE(control.step, 1) << row.id;
  }
  EXPECT_THAT(shown(V4L2_CID_POWER_LINE_FREQUENCY).choices,
              ElementsAre(ControlChoice{0, "50"}, ControlChoice{1, "5000000000"}));
}

TEST_F(ControlsTest, SetsInOrderAndTellsWhatTheCameraMadeOfIt) {
  ASSERT_TRUE(openAndWait());
  const uint64_t request = set({{kAuto, 1}, {kTime, 200}, {kBrightness, 5}});
  ASSERT_TRUE(waitForRequest(request));
  EXPECT_THAT(reports.back().taken, ElementsAre(ControlValue{kAuto, 1}, ControlValue{kTime, 200},
                                                ControlValue{kBrightness, 4}));
  EXPECT_EQ(shown(kBrightness).value, 4);
  EXPECT_TRUE(shown(kTime).canBeSet);
  ASSERT_TRUE(waitForRequest(set({{kBrightness, 2}})));
  EXPECT_THAT(reports.back().taken, ElementsAre(ControlValue{kBrightness, 2})) << "since the last";
}

TEST_F(ControlsTest, WhatIsRefusedOrRuledByAModeIsSkippedWithALine) {
  driver->controls[0].setError = EIO;
  ASSERT_TRUE(openAndWait());
  ASSERT_TRUE(waitForRequest(set({{kBrightness, 4}, {kTime, 200}, {77, 1}, {kAuto, 1}})));
  EXPECT_THAT(reports.back().taken, ElementsAre(ControlValue{kAuto, 1}));
  EXPECT_EQ(shown(kBrightness).value, 0);
  EXPECT_EQ(shown(kTime).value, 157);
  EXPECT_THAT(log.lines(),
              ElementsAre("Scope: Brightness can't be set to 4: Input/output error",
                          "Scope: Exposure Time, Absolute can't be set to 200: the camera rules it "
                          "itself now",
                          "Scope: control 0x4d can't be set to 1: Invalid argument"));
}

TEST_F(ControlsTest, ChangesFromElsewhereAreReported) {
  ASSERT_TRUE(openAndWait());
  driver->change(kBrightness, 8);
  EXPECT_TRUE(waitFor([this](const auto&) { return shown(kBrightness).value == 8; }));
  driver->change(kTime, 300, V4L2_CTRL_FLAG_GRABBED);
  EXPECT_TRUE(waitFor([this](const auto&) { return shown(kTime).value == 300; }));
  EXPECT_THAT(reports.back().taken, IsEmpty());
}

TEST_F(ControlsTest, ADriverWithoutEventsShowsChangesAtTheNextRequest) {
  driver->hasEvents = false;
  ASSERT_TRUE(openAndWait());
  driver->change(kBrightness, 8);
  ASSERT_TRUE(waitForRequest(set({{kAuto, 1}})));
  EXPECT_EQ(shown(kBrightness).value, 8);
}

TEST_F(ControlsTest, ACameraThatHangsHoldsNobodyUp) {
  Hang hang(*driver);
  ASSERT_TRUE(openAndWait());
  const auto took = [](auto work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - begin;
  };
  set({{kBrightness, 2}});
  hang.waitUntilReached();
  // A slider is dragged on: of what waits only the newest is ever set.
  uint64_t last = 0;
  EXPECT_LT(took([&] {
              for (int32_t value = -10; value <= 10; value += 2) last = set({{kBrightness, value}});
            }),
            100ms);
  const size_t before = reports.size();
  mainQueue.runAll();
  EXPECT_EQ(reports.size(), before);
  hang.end();
  ASSERT_TRUE(waitForRequest(last));
  EXPECT_EQ(driver->settings().size(), 2u);
  EXPECT_EQ(shown(kBrightness).value, 10);
}

TEST_F(ControlsTest, TheEndWaitsForNoCameraAndNothingIsReportedAfterIt) {
  Hang hang(*driver);
  ASSERT_TRUE(openAndWait());
  set({{kBrightness, 2}});
  hang.waitUntilReached();
  const size_t before = reports.size();
  const auto begin = std::chrono::steady_clock::now();
  controls.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
  EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
  hang.end();
  EXPECT_TRUE(driver->waitForNoOpenNode()) << "the thread ends when the camera lets it";
  while (SerialQueue::abandonedThreads() > 0) std::this_thread::sleep_for(1ms);
  mainQueue.runAll();
  EXPECT_EQ(reports.size(), before);
}

TEST_F(ControlsTest, AReportOnItsWayIsNotToldAfterTheEnd) {
  open();
  while (driver->polls() == 0) std::this_thread::sleep_for(1ms);  // then it has been posted
  controls.reset();
  mainQueue.runAll();
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(ControlsTest, ACameraThatIsPulledIsClosedWhenTheProgramHasHeardOfIt) {
  ASSERT_TRUE(openAndWait());
  driver->unplug();
  ASSERT_TRUE(waitForRequest(set({{kBrightness, 2}})));
  EXPECT_THAT(reports.back().taken, IsEmpty());
  EXPECT_EQ(reports.back().controls.size(), 3u);
  EXPECT_EQ(driver->openNodes(), 1);
  const int polls = driver->polls();
  std::this_thread::sleep_for(50ms);
  EXPECT_LE(driver->polls(), polls + 1) << "it waits, and doesn't turn in circles";
  controls.reset();
  EXPECT_TRUE(driver->waitForNoOpenNode());
}

TEST_F(ControlsTest, ANodeThatCantBeOpenedHasNoControls) {
  driver->openError = EACCES;
  ASSERT_TRUE(openAndWait());
  EXPECT_THAT(reports.back().controls, IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("can't be read: Permission denied")));
  EXPECT_TRUE(waitForRequest(set({{kBrightness, 2}})));
}

TEST_F(ControlsTest, WhatBreaksOffTheListLeavesWhatCameBeforeIt) {
  driver->queryError = EIO;
  ASSERT_TRUE(openAndWait());
  EXPECT_EQ(reports.back().controls.size(), 1u);
  EXPECT_THAT(log.lines(), Contains(HasSubstr("not all of its controls can be read")));
}

TEST_F(ControlsTest, AControlThatDoesNotTellItsValueShowsItsDefault) {
  driver->controls[0].value = 6;
  driver->controls[0].getError = EIO;
  ASSERT_TRUE(openAndWait());
  EXPECT_EQ(shown(kBrightness).value, 0);
  EXPECT_EQ(reports.back().controls.size(), 3u);
}

}  // namespace
}  // namespace tessary
