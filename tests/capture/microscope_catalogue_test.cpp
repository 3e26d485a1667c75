#include <gmock/gmock.h>

#include "FakeCaptureSystem.h"
#include "LogCapture.h"
#include "capture/MicroscopeCatalogue.h"

namespace tessary {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MicroscopeCatalogueTest : public testing::Test {
 protected:
  std::vector<std::string> ids() const {
    std::vector<std::string> all;
    for (const auto& microscope : list) all.push_back(microscope->uniqueID);
    return all;
  }
  /// What a report names, "-" for nothing.
  static std::string idOf(const std::shared_ptr<MicroscopeInfo>& microscope) {
    return microscope ? microscope->uniqueID : "-";
  }

  test::LogCapture log;
  test::FakeCaptureSystem system;
  MicroscopeList list;
  MicroscopeCatalogue catalogue{system, list};
};

TEST_F(MicroscopeCatalogueTest, StartsWithWhatIsPresent) {
  system.plug("b");
  system.plug("a");
  list.push_back(std::make_shared<MicroscopeInfo>());
  catalogue.InitializeMicroscopes();
  EXPECT_THAT(ids(), ElementsAre("b", "a"));
  EXPECT_EQ(&catalogue.microscopes(), &list);
}

TEST_F(MicroscopeCatalogueTest, OfAnyCameraFollowsThoseThatComeAndGo) {
  MicroscopeCatalogue any(system, list, Eligible::AnyCamera);
  const auto plug = [this](const char* id) { system.plug(id)->modelID_ = "Webcam"; };
  plug("w1");
  any.InitializeMicroscopes();
  EXPECT_THAT(ids(), ElementsAre("w1"));
  plug("w2");
  EXPECT_EQ(idOf(any.onMicroscopeConnected()), "w2");
  system.pull("w1");
  EXPECT_EQ(idOf(any.onMicroscopeDisconnected()), "w1");
  EXPECT_THAT(ids(), ElementsAre("w2"));
}

TEST_F(MicroscopeCatalogueTest, IsEmptyWithoutMicroscopes) {
  catalogue.InitializeMicroscopes();
  EXPECT_THAT(ids(), IsEmpty());
  EXPECT_EQ(idOf(catalogue.onMicroscopeConnected()), "-");
  EXPECT_EQ(idOf(catalogue.onMicroscopeDisconnected()), "-");
}

TEST_F(MicroscopeCatalogueTest, ReportsTheLastOfSeveralThatCame) {
  system.plug("b");
  catalogue.InitializeMicroscopes();
  const auto before = list[0];
  system.plug("d");
  system.plug("c");
  EXPECT_EQ(idOf(catalogue.onMicroscopeConnected()), "c");
  EXPECT_THAT(ids(), ElementsAre("b", "d", "c"));
  EXPECT_EQ(list[0], before);
  EXPECT_EQ(idOf(catalogue.onMicroscopeConnected()), "-");
}

TEST_F(MicroscopeCatalogueTest, ReportsTheFirstInTheListOfSeveralThatWent) {
  for (const char* id : {"a", "b", "c", "d"}) system.plug(id);
  catalogue.InitializeMicroscopes();
  system.pull("d");
  system.pull("b");
  EXPECT_EQ(idOf(catalogue.onMicroscopeDisconnected()), "b");
  EXPECT_THAT(ids(), ElementsAre("a", "c"));
  EXPECT_EQ(idOf(catalogue.onMicroscopeDisconnected()), "-");
}

TEST_F(MicroscopeCatalogueTest, ACameraThatIsNoMicroscopeIsNoNews) {
  system.plug("m1");
  catalogue.InitializeMicroscopes();
  const auto webcam = std::make_shared<test::FakeDevice>(system.log, "webcam");
  webcam->modelID_ = "UVC Camera VendorID_1133 ProductID_2093";
  system.plug(webcam);
  EXPECT_EQ(idOf(catalogue.onMicroscopeConnected()), "-");
  system.pull("webcam");
  EXPECT_EQ(idOf(catalogue.onMicroscopeDisconnected()), "-");
  EXPECT_THAT(ids(), ElementsAre("m1"));
}

TEST_F(MicroscopeCatalogueTest, AMicroscopeThatStaysKeepsItsObjectAndItsFields) {
  const auto device = system.plug("m1");
  system.plug("m2");
  catalogue.InitializeMicroscopes();
  const auto entry = list[0];
  entry->currResolution = entry->resolutions[2];
  device->name_ = "Renamed";
  system.pull("m2");
  catalogue.onMicroscopeDisconnected();
  system.plug("m2");
  catalogue.onMicroscopeConnected();
  ASSERT_THAT(ids(), ElementsAre("m1", "m2"));
  EXPECT_EQ(list[0], entry);
  EXPECT_EQ(entry->name, "Microscope");
  EXPECT_EQ(entry->currResolution, entry->resolutions[2]);
}

TEST_F(MicroscopeCatalogueTest, AMicroscopeThatReturnsGetsANewObjectAtTheEnd) {
  system.plug("m1");
  system.plug("m2");
  catalogue.InitializeMicroscopes();
  const auto before = list[0];
  system.pull("m1");
  EXPECT_EQ(catalogue.onMicroscopeDisconnected(), before);
  system.plug("m1");
  const auto after = catalogue.onMicroscopeConnected();
  EXPECT_NE(after, before);
  EXPECT_THAT(ids(), ElementsAre("m2", "m1"));
}

}  // namespace
}  // namespace tessary
