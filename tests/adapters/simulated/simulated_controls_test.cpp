#include <gmock/gmock.h>

#include "LogCapture.h"
#include "SimulatedRig.h"
#include "simulated/CombinedCaptureSystem.h"

namespace tessary {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Contrast and brightness of a grey test picture: left half dark, right half light.
struct Seen {
  int dark, light, atEdge;
};

Seen seen(const Optics& optics) {
  PixelBufferPool pool;
  auto picture = pool.take({640, 16});
  for (size_t i = 0; i < picture->byteCount(); ++i)
    picture->data()[i] = i % 4 == 3 ? 255 : i / 4 % 640 < 320 ? 80 : 180;
  const auto result = optics.seen(std::move(picture), pool);
  const auto at = [&](size_t x) { return int(result->data()[(640 * 8 + x) * 4 + 1]); };
  for (size_t i = 3; i < result->byteCount(); i += 4) EXPECT_EQ(result->data()[i], 255) << i;
  return {at(40), at(600), at(322)};
}

TEST(Optics, EachControlChangesThePicture) {
  Optics optics;
  EXPECT_EQ(seen(optics).dark, 80);
  EXPECT_EQ(seen(optics).light, 180);
  EXPECT_TRUE(optics.set({Optics::kBrightness, 20}));
  EXPECT_EQ(seen(optics).dark, 100);
  EXPECT_TRUE(optics.set({Optics::kBrightness, 0}));
  EXPECT_TRUE(optics.set({Optics::kContrast, 50}));
  EXPECT_EQ(seen(optics).dark, 104);
  EXPECT_EQ(seen(optics).light, 154);
  EXPECT_TRUE(optics.set({Optics::kContrast, 100}));
  EXPECT_FALSE(optics.set({Optics::kExposureTime, 200})) << "ruled by the mode";
  EXPECT_TRUE(optics.set({Optics::kExposureMode, 1}));
  EXPECT_TRUE(optics.set({Optics::kExposureTime, 50}));
  EXPECT_EQ(seen(optics).light, 90);
  EXPECT_TRUE(optics.set({Optics::kExposureMode, 0}));
  EXPECT_EQ(seen(optics).light, 180) << "automatic again";
  EXPECT_EQ(seen(optics).atEdge, 180);
  EXPECT_TRUE(optics.set({Optics::kAutoFocus, 0}));
  EXPECT_EQ(seen(optics).atEdge, 180);
  EXPECT_TRUE(optics.set({Optics::kFocus, 0}));
  EXPECT_LT(seen(optics).atEdge, 150) << "blurred";
  EXPECT_TRUE(optics.set({Optics::kFocusOnce, 1}));
  EXPECT_EQ(seen(optics).atEdge, 180);
  EXPECT_FALSE(optics.set({Optics::kBrightness, 65}));
  EXPECT_FALSE(optics.set({0, 1}));
  EXPECT_FALSE(optics.set({99, 1}));
}

TEST(SimulatedControls, AnswerInTheMainQueuesNextTurn) {
  const test::LogCapture log;
  test::SimulatedRig rig;
  std::vector<CameraControls::Report> reports;
  const auto note = [&](const CameraControls::Report& report) { reports.push_back(report); };
  auto controls = rig.system.makeControls(rig.microscope(), note);
  EXPECT_THAT(reports, IsEmpty());
  rig.mainQueue.runAll();
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_EQ(reports[0].controls.size(), 7u);
  const std::vector<ControlValue> wanted{{Optics::kBrightness, 5}, {Optics::kExposureTime, 10}};
  EXPECT_EQ(controls->set(wanted), 1u);
  rig.mainQueue.runAll();
  EXPECT_EQ(reports.back().request, 1u);
  EXPECT_THAT(reports.back().taken, ElementsAre(ControlValue{Optics::kBrightness, 5}));
  EXPECT_THAT(log.lines(), ElementsAre("Control 2: 10 was not taken"));
  rig.system.changeControl({Optics::kBrightness, 9});
  rig.mainQueue.runAll();
  EXPECT_EQ(reports.back().controls[2].value, 9);
  EXPECT_THAT(reports.back().taken, IsEmpty());
  const size_t count = reports.size();
  rig.system.changeControl({Optics::kBrightness, 10});
  controls.reset();
  rig.mainQueue.runAll();
  EXPECT_EQ(reports.size(), count);
}

TEST(SimulatedControls, AMicroscopeThatWasReplacedStartsWithItsDefaults) {
  test::SimulatedRig rig;
  const auto before = rig.microscope();
  rig.system.changeControl({Optics::kBrightness, 9});
  rig.system.unplug();
  rig.system.plug();
  EXPECT_EQ(rig.system.makeControls(before, {}), nullptr);
  std::vector<CameraControls::Report> reports;
  const auto controls = rig.system.makeControls(
      rig.microscope(), [&](const CameraControls::Report& report) { reports.push_back(report); });
  rig.mainQueue.runAll();
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_EQ(reports[0].controls[2].value, 0);
}

TEST(SimulatedControls, ThoseOfTwoSystemsAreEachTheirOwn) {
  test::ManualExecutor mainQueue;
  const auto make = [&] {
    return std::make_unique<SimulatedCaptureSystem>(mainQueue, test::decoders(),
                                                    test::cameraEncoder());
  };
  auto first = make();
  auto second = make();
  SimulatedCaptureSystem& other = *second;
  const auto others = other.devices().front();
  CombinedCaptureSystem both(std::move(first), std::move(second));
  int reports = 0;
  const auto controls = both.makeControls(others, [&](const auto&) { ++reports; });
  mainQueue.runAll();
  reports = 0;
  other.changeControl({Optics::kBrightness, 9});
  mainQueue.runAll();
  EXPECT_EQ(reports, 1);
}

}  // namespace
}  // namespace tessary
