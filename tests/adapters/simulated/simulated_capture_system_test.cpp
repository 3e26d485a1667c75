#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SimulatedRig.h"
#include "simulated/CombinedCaptureSystem.h"
#include "simulated/SimulatedCaptureSystem.h"

namespace tessary {
namespace {

using test::SimulatedRig;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SimulatedCaptureSystem, ItsMicroscopeCountsAsARealOne) {
  SimulatedRig rig;
  const auto microscope = rig.microscope();
  EXPECT_EQ(microscope->modelID(), "UVC Camera VendorID_1374 ProductID_41312");
  EXPECT_EQ(microscope->transportType(), kTransportTypeUSB);
  EXPECT_EQ(microscope->localizedName(), "Simulated Microscope");
  EXPECT_TRUE(microscope->hasVideo());
  EXPECT_EQ(microscope->uniqueID(), SimulatedRig().microscope()->uniqueID());
}

TEST(SimulatedCaptureSystem, OffersTwoKindsOfPicturesInThreeSizes) {
  SimulatedRig rig;
  const std::vector<FrameRateRange> ranges{{{1, 30}, {1, 5}}};
  EXPECT_THAT(rig.microscope()->formats(),
              ElementsAre(CaptureFormat{kMediaSubTypeMJPEG, 640, 480, ranges},
                          CaptureFormat{kMediaSubTypeMJPEG, 1280, 720, ranges},
                          CaptureFormat{kMediaSubTypeMJPEG, 1920, 1080, ranges},
                          CaptureFormat{kMediaSubTypeYUYV, 640, 480, ranges},
                          CaptureFormat{kMediaSubTypeYUYV, 1280, 720, ranges},
                          CaptureFormat{kMediaSubTypeYUYV, 1920, 1080, ranges}));
}

TEST(SimulatedCaptureSystem, AFormatIsInForceOnceItIsUnlocked) {
  SimulatedRig rig;
  SimulatedMicroscope microscope(test::kAllSubTypes);
  const CaptureFormat first = microscope.formats().at(0);
  const CaptureFormat wanted = microscope.formats().at(4);
  ASSERT_TRUE(microscope.lockForConfiguration());
  microscope.setActiveFormat(wanted);
  EXPECT_EQ(microscope.activeFormat(), wanted);
  EXPECT_EQ(microscope.setting().format, first);
  microscope.unlockForConfiguration();
  EXPECT_EQ(microscope.setting().format, wanted);
}

TEST(SimulatedCaptureSystem, AFormatThatIsNotOfferedIsIgnored) {
  SimulatedMicroscope microscope(test::kAllSubTypes);
  CaptureFormat odd = microscope.formats().at(0);
  odd.width = 641;
  microscope.setActiveFormat(odd);
  microscope.unlockForConfiguration();
  EXPECT_EQ(microscope.setting().format, microscope.formats().at(0));
}

TEST(SimulatedCaptureSystem, FrameDurationsStayInTheirRange) {
  struct Row {
    Fraction asked;
    Fraction given;
  };
  const std::vector<Row> rows{
      {{1, 30}, {1, 30}}, {{1, 15}, {1, 15}},      {{1, 5}, {1, 5}}, {{1001, 30000}, {1001, 30000}},
      {{1, 60}, {1, 30}}, {{999, 30000}, {1, 30}}, {{1, 4}, {1, 5}}, {{0, 1}, {1, 30}},
      {{7, 0}, {1, 30}},
  };
  SimulatedMicroscope microscope(test::kAllSubTypes);
  for (const Row& row : rows) {
    microscope.setActiveVideoMinFrameDuration(row.asked);
    microscope.unlockForConfiguration();
    EXPECT_EQ(microscope.setting().frameDuration, row.given)
        << row.asked.numerator << "/" << row.asked.denominator;
  }
}

TEST(SimulatedCaptureSystem, HotPlugIsToldOnTheMainQueue) {
  SimulatedRig rig;
  std::vector<std::string> told;
  rig.system.setHotPlugHandlers([&] { told.emplace_back("connected"); },
                                [&] { told.emplace_back("disconnected"); });
  const auto before = rig.microscope();
  const std::string uniqueID = before->uniqueID();
  EXPECT_EQ(rig.system.deviceWithUniqueID(uniqueID), before);

  rig.system.unplug();
  EXPECT_THAT(told, IsEmpty());
  EXPECT_THAT(rig.system.devices(), ElementsAre(before));
  rig.mainQueue.runAll();
  EXPECT_THAT(told, ElementsAre("disconnected"));
  EXPECT_THAT(rig.system.devices(), IsEmpty());
  EXPECT_FALSE(rig.system.deviceWithUniqueID(uniqueID));

  rig.system.plug();
  rig.mainQueue.runAll();
  EXPECT_THAT(told, ElementsAre("disconnected", "connected"));
  EXPECT_EQ(rig.microscope()->uniqueID(), uniqueID);
  EXPECT_NE(rig.microscope(), before);

  rig.system.plug();  // it is
  rig.system.setHotPlugHandlers({}, {});
  rig.system.unplug();
  rig.system.unplug();  // it is
  rig.mainQueue.runAll();
  EXPECT_EQ(told.size(), 2U);
}

TEST(SimulatedCaptureSystem, AMicroscopePulledAndPutBackInOneTurnIsSeenToBeGone) {
  SimulatedRig rig;
  const auto before = rig.microscope();
  std::vector<size_t> present;
  const auto count = [&] { present.push_back(rig.system.devices().size()); };
  rig.system.setHotPlugHandlers(count, count);
  rig.system.unplug();
  rig.system.plug();
  rig.mainQueue.runAll();
  EXPECT_THAT(present, ElementsAre(0U, 1U));
  EXPECT_NE(rig.microscope(), before);
}

TEST(SimulatedCaptureSystem, ANoticeThatComesAfterItsEndIsHarmless) {
  test::ManualExecutor mainQueue;
  int told = 0;
  {
    SimulatedCaptureSystem system(mainQueue, test::decoders(), test::cameraEncoder());
    system.setHotPlugHandlers({}, [&] { ++told; });
    system.unplug();
  }
  EXPECT_EQ(mainQueue.runAll(), 1);
  EXPECT_EQ(told, 0);
}

TEST(SimulatedCaptureSystem, OpeningFailsInPlainWords) {
  SimulatedRig rig;
  EXPECT_EQ(rig.system.makeDeviceInput(nullptr).error(),
            "The microscope is no longer connected. Plug it in again.");

  rig.system.failNextOpen("Another program uses the microscope. Close that program.");
  EXPECT_EQ(rig.system.makeDeviceInput(rig.microscope()).error(),
            "Another program uses the microscope. Close that program.");
  EXPECT_TRUE(rig.system.makeDeviceInput(rig.microscope()));

  const auto gone = rig.microscope();
  rig.system.unplug();
  rig.system.plug();
  EXPECT_FALSE(rig.system.makeDeviceInput(gone));
}

class CombinedCaptureSystemTest : public testing::Test {
 protected:
  CombinedCaptureSystemTest() {
    auto first = std::make_unique<SimulatedCaptureSystem>(mainQueue_, test::decoders(),
                                                          test::cameraEncoder());
    auto second = std::make_unique<SimulatedCaptureSystem>(mainQueue_, test::decoders(),
                                                           test::cameraEncoder());
    first_ = first.get();
    second_ = second.get();
    combined_ = std::make_unique<CombinedCaptureSystem>(std::move(first), std::move(second));
  }

  test::ManualExecutor mainQueue_;
  SimulatedCaptureSystem* first_;
  SimulatedCaptureSystem* second_;
  std::unique_ptr<CombinedCaptureSystem> combined_;
};

TEST_F(CombinedCaptureSystemTest, ListsTheFirstSystemsDevicesFirst) {
  EXPECT_THAT(combined_->devices(), ElementsAre(first_->devices().at(0), second_->devices().at(0)));
  first_->unplug();
  EXPECT_THAT(combined_->devices(), ElementsAre(second_->devices().at(0)));
  EXPECT_EQ(combined_->deviceWithUniqueID(second_->devices().at(0)->uniqueID()),
            second_->devices().at(0));
  second_->unplug();
  EXPECT_THAT(combined_->devices(), IsEmpty());
  EXPECT_FALSE(combined_->deviceWithUniqueID("simulated-microscope"));
}

TEST_F(CombinedCaptureSystemTest, EachSystemOpensItsOwnDevices) {
  for (SimulatedCaptureSystem* system : {first_, second_}) {
    const auto device = system->devices().at(0);
    system->failNextOpen("in use");
    EXPECT_EQ(combined_->makeDeviceInput(device).error(), "in use");
    EXPECT_TRUE(combined_->makeDeviceInput(device));
    system->unplug();
    EXPECT_FALSE(combined_->makeDeviceInput(device));
  }
  EXPECT_FALSE(combined_->makeDeviceInput(nullptr));
}

TEST_F(CombinedCaptureSystemTest, TellsOfBothSystemsHotPlug) {
  int connected = 0;
  int disconnected = 0;
  combined_->setHotPlugHandlers([&] { ++connected; }, [&] { ++disconnected; });
  first_->unplug();
  second_->unplug();
  second_->plug();
  mainQueue_.runAll();
  EXPECT_EQ(connected, 1);
  EXPECT_EQ(disconnected, 2);
}

}  // namespace
}  // namespace tessary
