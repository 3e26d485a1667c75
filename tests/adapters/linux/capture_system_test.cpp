// The list of cameras as they come and go.
#include <cerrno>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeVideoDriver.h"
#include "ManualExecutor.h"
#include "base/FourCharCode.h"
#include "capture/MicroscopeCatalogue.h"
#include "linux/V4l2CaptureSystem.h"

namespace tessary {
namespace {

using test::FakeVideoDriver;
using test::ManualExecutor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Nodes that a test lays out; news goes out on the test's own thread.
class FakeNodes final : public NodeSource {
 public:
  std::vector<NodeRecord> nodes() override { return list; }
  void watch(std::function<bool()> changed) override { changed_ = std::move(changed); }
  void stopWatching() override { changed_ = nullptr; }
  /// What the watcher answered: whether all nodes were usable.
  bool tell() { return changed_(); }

  std::vector<NodeRecord> list;

 private:
  std::function<bool()> changed_;
};

/// Several nodes, each a driver of its own.
class FakeMachine final : public V4l2Calls {
 public:
  FakeVideoDriver& operator[](const std::string& devNode) {
    auto& driver = drivers_[devNode];
    if (!driver) driver = std::make_unique<FakeVideoDriver>();
    return *driver;
  }
  int opened(const std::string& devNode) const {
    const auto found = opened_.find(devNode);
    return found == opened_.end() ? 0 : found->second;
  }
  int open(const char* path, int flags) override {
    ++opened_[path];
    const int fd = (*this)[path].open(path, flags);
    if (fd >= 0) byFd_[fd] = &(*this)[path];
    return fd;
  }
  int close(int fd) override { return byFd_.at(fd)->close(fd); }
  int ioctl(int fd, unsigned long request, void* argument) override {
    return byFd_.at(fd)->ioctl(fd, request, argument);
  }
  void* mmap(size_t length, int fd, off_t offset) override {
    return byFd_.at(fd)->mmap(length, fd, offset);
  }
  int munmap(void*, size_t) override { return 0; }
  int poll(pollfd*, nfds_t, int) override { return 0; }

 private:
  std::map<std::string, std::unique_ptr<FakeVideoDriver>> drivers_;
  std::map<std::string, int> opened_;
  std::map<int, FakeVideoDriver*> byFd_;
};

NodeRecord microscope(int number, const std::string& port, const std::string& connectionID = "1") {
  NodeRecord node;
  node.sysPath = fmt::format("/sys/video{}", number);
  node.connectionID = connectionID;
  node.devNode = fmt::format("/dev/video{}", number);
  node.path = port;
  node.isUsb = true;
  node.vendorID = 0x055e;
  node.productID = 0xa160;
  node.product = "USB Microscope";
  node.manufacturer = "Optics ";
  node.index = "0";
  node.saysItCaptures = true;
  return node;
}

struct CaptureSystemTest : testing::Test {
  ManualExecutor mainQueue;
  std::shared_ptr<FakeMachine> machine = std::make_shared<FakeMachine>();
  FakeNodes* nodes = nullptr;
  std::unique_ptr<V4l2CaptureSystem> system;
  std::vector<std::string> events;

  void start(std::vector<NodeRecord> present) {
    auto source = std::make_unique<FakeNodes>();
    nodes = source.get();
    nodes->list = std::move(present);
    system = std::make_unique<V4l2CaptureSystem>(mainQueue, nullptr, machine, std::move(source));
    system->setHotPlugHandlers([this] { events.push_back("connected, " + listed()); },
                               [this] { events.push_back("disconnected, " + listed()); });
  }
  // The ports of the cameras that are listed now.
  std::string listed() {
    std::string all;
    for (const auto& device : system->devices())
      all += device->uniqueID().substr(0, device->uniqueID().find('-')) + " ";
    return all;
  }
  bool becomes(std::vector<NodeRecord> present) {
    nodes->list = std::move(present);
    return nodes->tell();
  }
};

TEST_F(CaptureSystemTest, AUsbCameraTellsWhatItIs) {
  start({microscope(0, "port1")});
  ASSERT_EQ(system->devices().size(), 1u);
  const auto device = system->devices()[0];
  EXPECT_EQ(device->modelID(), "UVC Camera VendorID_1374 ProductID_41312");
  EXPECT_EQ(device->uniqueID(), "port1-055e:a160-index0");
  EXPECT_EQ(device->localizedName(), "USB Microscope");
  EXPECT_EQ(device->manufacturer(), "Optics");
  EXPECT_EQ(device->transportType(), kTransportTypeUSB);
  EXPECT_TRUE(device->hasVideo());
  EXPECT_EQ(device->formats().size(), 3u);
  EXPECT_EQ(device->activeFormat().mediaSubType, kMediaSubTypeYUYV);
  EXPECT_EQ(system->deviceWithUniqueID("port1-055e:a160-index0"), device);
  EXPECT_EQ(system->deviceWithUniqueID("port2"), nullptr);
  EXPECT_EQ(system->deviceWithUniqueID(""), nullptr);
}

TEST_F(CaptureSystemTest, ACameraOnNoUsbBusSaysSo) {
  NodeRecord node = microscope(0, "platform");
  node.isUsb = false;
  node.product = "";
  machine->operator[]("/dev/video0").card = "vivid";
  start({node});
  ASSERT_EQ(system->devices().size(), 1u);
  EXPECT_EQ(system->devices()[0]->modelID(), "vivid");
  EXPECT_NE(system->devices()[0]->transportType(), kTransportTypeUSB);
}

TEST_F(CaptureSystemTest, MetadataNodesAreNotListed) {
  (*machine)["/dev/video1"].capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
  start({microscope(0, "port1"), microscope(1, "port1")});
  EXPECT_EQ(system->devices().size(), 1u);
}

TEST_F(CaptureSystemTest, TheOrderDoesNotDependOnTheNumbersOfTheNodes) {
  start({microscope(0, "port2"), microscope(1, "port1"), microscope(2, "port3")});
  EXPECT_EQ(listed(), "port1 port2 port3 ");
}

TEST_F(CaptureSystemTest, ArrivalsAndDeparturesAreToldOnTheMainThread) {
  start({});
  becomes({microscope(0, "port1")});
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(listed(), "");
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 "));
  becomes({});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 ", "disconnected, "));
}

TEST_F(CaptureSystemTest, NewsWithoutChangeIsNotTold) {
  start({microscope(0, "port1")});
  becomes({microscope(0, "port1")});
  mainQueue.runAll();
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(CaptureSystemTest, TwoAtOnceAreToldOneByOne) {
  start({});
  becomes({microscope(0, "port1"), microscope(2, "port2")});
  becomes({microscope(0, "port1"), microscope(2, "port2")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 ", "connected, port1 port2 "));
  becomes({});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 ", "connected, port1 port2 ",
                                  "disconnected, port2 ", "disconnected, "));
}

TEST_F(CaptureSystemTest, AHubPulledAndPutBackBetweenTwoLooksIsToldCameraByCamera) {
  start({microscope(0, "port1"), microscope(2, "port2")});
  becomes({microscope(0, "port1", "2"), microscope(2, "port2", "2")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected, port2 ", "disconnected, ", "connected, port1 ",
                                  "connected, port1 port2 "));
}

TEST_F(CaptureSystemTest, OfAHubPulledAndPutBackTheCatalogueReportsEveryMicroscope) {
  // Both at once, and seen only when they were back.
  for (const bool isMissed : {false, true}) {
    SCOPED_TRACE(isMissed);
    start({microscope(0, "port1"), microscope(2, "port2")});
    MicroscopeList list;
    MicroscopeCatalogue catalogue(*system, list);
    catalogue.InitializeMicroscopes();
    std::vector<std::string> reports;
    const auto report = [&](const char* what, const std::shared_ptr<MicroscopeInfo>& microscope) {
      reports.push_back(what + (microscope ? microscope->uniqueID.substr(0, 5) : "nothing"));
    };
    system->setHotPlugHandlers([&] { report("+", catalogue.onMicroscopeConnected()); },
                               [&] { report("-", catalogue.onMicroscopeDisconnected()); });
    if (!isMissed) becomes({});
    becomes({microscope(0, "port1", "2"), microscope(2, "port2", "2")});
    mainQueue.runAll();
    EXPECT_THAT(reports, UnorderedElementsAre("-port1", "-port2", "+port1", "+port2"));
  }
}

TEST_F(CaptureSystemTest, OneForAnotherIsADepartureAndThenAnArrival) {
  start({microscope(0, "port1")});
  becomes({microscope(0, "port2", "2")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected, ", "connected, port2 "));
}

TEST_F(CaptureSystemTest, ACameraThatStaysKeepsItsObjectAndIsAskedOnce) {
  start({microscope(0, "port1")});
  const auto device = system->devices()[0];
  becomes({microscope(0, "port1"), microscope(1, "port2")});
  becomes({microscope(0, "port1")});
  mainQueue.runAll();
  EXPECT_THAT(system->devices(), ElementsAre(device));
  EXPECT_EQ(machine->opened("/dev/video0"), 1);
}

TEST_F(CaptureSystemTest, ACameraThatCameBackBetweenTwoLooksHasANewObjectAndIsSeenToBeGone) {
  start({microscope(0, "port1", "1")});
  const auto device = system->devices()[0];
  becomes({microscope(0, "port1", "2")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected, ", "connected, port1 "));
  ASSERT_EQ(system->devices().size(), 1u);
  EXPECT_NE(system->devices()[0], device);
  EXPECT_EQ(system->devices()[0]->uniqueID(), device->uniqueID());
  EXPECT_EQ(machine->opened("/dev/video0"), 2);
}

TEST_F(CaptureSystemTest, CamerasThatCantBeToldApartGetNumbersThatTheyKeep) {
  start({microscope(0, "port"), microscope(1, "port"), microscope(2, "port")});
  const auto ids = [&] {
    std::vector<std::string> all;
    for (const auto& device : system->devices()) all.push_back(device->uniqueID());
    return all;
  };
  EXPECT_THAT(ids(), ElementsAre("port-055e:a160-index0", "port-055e:a160-index0#2",
                                 "port-055e:a160-index0#3"));
  becomes({microscope(1, "port"), microscope(2, "port")});
  mainQueue.runAll();
  EXPECT_THAT(ids(), ElementsAre("port-055e:a160-index0#2", "port-055e:a160-index0#3"));
  becomes({microscope(0, "port", "2"), microscope(1, "port"), microscope(2, "port")});
  mainQueue.runAll();
  EXPECT_THAT(ids(), ElementsAre("port-055e:a160-index0", "port-055e:a160-index0#2",
                                 "port-055e:a160-index0#3"));
}

TEST_F(CaptureSystemTest, ACameraThatMayNotBeOpenedIsListedSoThatOpeningItTellsWhatToDo) {
  (*machine)["/dev/video0"].setOpenError(EACCES);
  start({microscope(0, "port1")});
  ASSERT_EQ(system->devices().size(), 1u);
  EXPECT_THAT(system->devices()[0]->formats(), IsEmpty());
  EXPECT_FALSE(system->devices()[0]->formatsAreKnown());
  EXPECT_THAT(system->makeDeviceInput(system->devices()[0]).error(),
              HasSubstr("You have no permission to use /dev/video0"));
}

TEST_F(CaptureSystemTest, PermissionThatComesLaterMakesItANewCamera) {
  (*machine)["/dev/video0"].setOpenError(EACCES);
  start({});
  EXPECT_FALSE(becomes({microscope(0, "port1")}));
  mainQueue.runAll();
  (*machine)["/dev/video0"].setOpenError(0);
  EXPECT_TRUE(nodes->tell());
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 ", "disconnected, ", "connected, port1 "));
  EXPECT_EQ(system->devices()[0]->formats().size(), 3u);
  EXPECT_TRUE(system->devices()[0]->formatsAreKnown());
}

TEST_F(CaptureSystemTest, ANodeThatMayNotBeOpenedAndIsNoCameraIsNotListed) {
  NodeRecord metadata = microscope(1, "port1");
  metadata.saysItCaptures = false;
  (*machine)["/dev/video1"].setOpenError(EACCES);
  start({metadata});
  EXPECT_THAT(system->devices(), IsEmpty());
}

TEST_F(CaptureSystemTest, ACameraThatDoesNotAnswerYetIsLookedAtAgain) {
  (*machine)["/dev/video0"].setOpenError(EIO);
  start({});
  EXPECT_FALSE(becomes({microscope(0, "port1")}));
  mainQueue.runAll();
  EXPECT_THAT(events, IsEmpty());
  (*machine)["/dev/video0"].setOpenError(0);
  EXPECT_TRUE(nodes->tell());
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("connected, port1 "));
}

TEST_F(CaptureSystemTest, NoDeviceCantBeOpened) {
  start({});
  EXPECT_THAT(system->makeDeviceInput(nullptr).error(), HasSubstr("not connected"));
}

TEST_F(CaptureSystemTest, ADeviceThatIsGoneCantBeOpened) {
  start({microscope(0, "port1")});
  const auto device = system->devices()[0];
  (*machine)["/dev/video0"].setOpenError(ENOENT);
  becomes({});
  mainQueue.runAll();
  EXPECT_THAT(system->makeDeviceInput(device).error(), HasSubstr("not connected any more"));
}

TEST_F(CaptureSystemTest, EmptyHandlersEndTheTelling) {
  start({});
  system->setHotPlugHandlers({}, {});
  becomes({microscope(0, "port1")});
  mainQueue.runAll();
  becomes({});
  mainQueue.runAll();
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(CaptureSystemTest, AHandlerMayEndTheTelling) {
  start({microscope(0, "port1")});
  system->setHotPlugHandlers([this] { events.push_back("connected"); },
                             [this] {
                               events.push_back("disconnected");
                               system->setHotPlugHandlers({}, {});
                             });
  becomes({microscope(1, "port2")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected"));
}

TEST_F(CaptureSystemTest, AHandlerThatRunsTheMainQueueLeavesTheNewestListStanding) {
  start({microscope(0, "port1")});
  system->setHotPlugHandlers([this] { events.push_back("connected, " + listed()); },
                             [this] {
                               events.push_back("disconnected, " + listed());
                               mainQueue.runAll();
                             });
  becomes({microscope(1, "port2")});
  becomes({microscope(2, "port3")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected, ", "connected, port3 "));
}

TEST_F(CaptureSystemTest, AHandlerThatRunsTheMainQueueInTheMiddleHasEachChangeToldOnce) {
  start({microscope(0, "port1"), microscope(1, "port2")});
  system->setHotPlugHandlers(
      [this] {
        events.push_back("connected, " + listed());
        mainQueue.runAll();
      },
      [this] {
        events.push_back("disconnected, " + listed());
        mainQueue.runAll();
      });
  becomes({microscope(0, "port1", "2"), microscope(1, "port2", "2")});
  becomes({microscope(1, "port2", "2"), microscope(2, "port3")});
  mainQueue.runAll();
  EXPECT_THAT(events, ElementsAre("disconnected, port2 ", "disconnected, ", "connected, port2 ",
                                  "connected, port2 port3 "));
}

TEST_F(CaptureSystemTest, NewsThatIsStillQueuedWhenItEndsIsForgotten) {
  start({});
  becomes({microscope(0, "port1")});
  system.reset();
  mainQueue.runAll();
  EXPECT_THAT(events, IsEmpty());
}

}  // namespace
}  // namespace tessary
