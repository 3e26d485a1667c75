// Nodes as udev lists and announces them, on a machine that umockdev plays.
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <umockdev.h>

#include "linux/UdevNodeSource.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// A daemon of the real machine knows nothing of the mocked nodes, and would never call them ready.
constexpr bool kNoDaemon = false;

struct UdevNodes : testing::Test {
  void SetUp() override {
    bed = umockdev_testbed_new();
    // A test bed only looks like a machine to a program with umockdev's library loaded before all.
    if (!umockdev_in_mock_environment()) GTEST_SKIP() << "runs under umockdev-wrapper only";
  }
  void TearDown() override { g_clear_object(&bed); }

  void add(const std::string& description) {
    GError* error = nullptr;
    umockdev_testbed_add_from_string(bed, description.c_str(), &error);
    ASSERT_EQ(error, nullptr) << error->message;
  }

  // A USB device with one interface.
  void addUsbDevice(const std::string& port, const std::string& devnum) {
    add("P: /devices/usb1/" + port +
        "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=055e\\n\nA: idProduct=a160\\n\nA: serial=TS0001\\n\n"
        "A: product=USB Microscope\\n\nA: manufacturer=Optics\\n\nA: devnum=" +
        devnum + "\\n\n");
    add("P: /devices/usb1/" + port + "/" + port +
        ":1.0\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n");
  }
  std::string nodePath(const std::string& port, int number) const {
    return "/devices/usb1/" + port + "/" + port + ":1.0/video4linux/video" + std::to_string(number);
  }
  void addNode(const std::string& port, int number, const std::string& index,
               const std::string& more) {
    add("P: " + nodePath(port, number) + "\nN: video" + std::to_string(number) +
        "\nE: SUBSYSTEM=video4linux\nE: DEVNAME=/dev/video" + std::to_string(number) +
        "\nE: ID_PATH=pci-0000:00:14.0-usb-0:" + port + ":1.0\n" + more + "A: index=" + index +
        "\\n\n");
  }
  void removeAll(const std::string& port, int number) {
    const std::string node = "/sys" + nodePath(port, number);
    umockdev_testbed_uevent(bed, node.c_str(), "remove");
    umockdev_testbed_remove_device(bed, node.c_str());
    umockdev_testbed_remove_device(bed,
                                   ("/sys/devices/usb1/" + port + "/" + port + ":1.0").c_str());
    umockdev_testbed_remove_device(bed, ("/sys/devices/usb1/" + port).c_str());
  }
  void announce(const std::string& port, int number) {
    umockdev_testbed_uevent(bed, ("/sys" + nodePath(port, number)).c_str(), "add");
  }

  UMockdevTestbed* bed = nullptr;
};

/// Counts calls and answers as it is told.
class News {
 public:
  std::function<bool()> handler() {
    return [this] {
      const std::lock_guard lock(mutex_);
      ++count_;
      changed_.notify_all();
      return settled_;
    };
  }
  bool waitFor(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 30s, [&] { return count_ >= count; });
  }
  int count() {
    const std::lock_guard lock(mutex_);
    return count_;
  }
  void setSettled(bool settled) {
    const std::lock_guard lock(mutex_);
    settled_ = settled;
  }

 private:
  std::mutex mutex_;  // guards count_ and settled_
  std::condition_variable changed_;
  int count_ = 0;
  bool settled_ = true;
};

std::vector<std::string> devNodes(UdevNodeSource& source) {
  std::vector<std::string> all;
  for (const auto& node : source.nodes()) all.push_back(node.devNode);
  return all;
}

TEST_F(UdevNodes, AMachineWithoutCamerasHasNone) {
  UdevNodeSource source(kNoDaemon);
  EXPECT_THAT(source.nodes(), IsEmpty());
}

TEST_F(UdevNodes, AUsbNodeTellsAllThatTheCatalogueNeeds) {
  addUsbDevice("1-2", "7");
  addNode("1-2", 0, "0", "E: ID_SERIAL_SHORT=TS0001\nE: ID_V4L_CAPABILITIES=:capture:\n");
  UdevNodeSource source(kNoDaemon);
  const auto nodes = source.nodes();
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].devNode, "/dev/video0");
  EXPECT_EQ(nodes[0].path, "pci-0000:00:14.0-usb-0:1-2:1.0");
  EXPECT_TRUE(nodes[0].isUsb);
  EXPECT_EQ(nodes[0].vendorID, 0x055eu);
  EXPECT_EQ(nodes[0].productID, 0xa160u);
  EXPECT_EQ(nodes[0].serial, "TS0001");
  EXPECT_EQ(nodes[0].product, "USB Microscope");
  EXPECT_EQ(nodes[0].manufacturer, "Optics");
  EXPECT_EQ(nodes[0].index, "0");
  EXPECT_TRUE(nodes[0].saysItCaptures);
}

TEST_F(UdevNodes, WithoutParentsThePropertiesAnswer) {
  add("P: /devices/virtual/video4linux/video3\nN: video3\nE: SUBSYSTEM=video4linux\n"
      "E: DEVNAME=/dev/video3\nE: ID_BUS=usb\nE: ID_VENDOR_ID=055e\nE: ID_MODEL_ID=a19b\n"
      "E: ID_MODEL_ENC=USB\\x20Microscope\nE: ID_VENDOR_ENC=Optics\\x20Ltd\n");
  UdevNodeSource source(kNoDaemon);
  const auto nodes = source.nodes();
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_TRUE(nodes[0].isUsb);
  EXPECT_EQ(nodes[0].vendorID, 0x055eu);
  EXPECT_EQ(nodes[0].productID, 0xa19bu);
  EXPECT_EQ(nodes[0].product, "USB Microscope");
  EXPECT_EQ(nodes[0].manufacturer, "Optics Ltd");
  EXPECT_FALSE(nodes[0].path.empty());
  EXPECT_FALSE(nodes[0].saysItCaptures);
}

TEST_F(UdevNodes, ACardThatIsNotOnUsbHasNoUsbNumbers) {
  add("P: /devices/platform/vivid.0/video4linux/video3\nN: video3\nE: SUBSYSTEM=video4linux\n"
      "E: DEVNAME=/dev/video3\nE: ID_VENDOR_ID=8086\nE: ID_MODEL_ID=1234\n");
  UdevNodeSource source(kNoDaemon);
  const auto nodes = source.nodes();
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_FALSE(nodes[0].isUsb);
  EXPECT_EQ(nodes[0].vendorID, 0u);
}

TEST_F(UdevNodes, NodesStandInTheOrderOfTheirNumbers) {
  addUsbDevice("1-2", "7");
  for (const int number : {10, 2, 0}) addNode("1-2", number, "0", "");
  UdevNodeSource source(kNoDaemon);
  EXPECT_THAT(devNodes(source), ElementsAre("/dev/video0", "/dev/video2", "/dev/video10"));
}

TEST_F(UdevNodes, OtherSubsystemsAreNotListed) {
  addUsbDevice("1-2", "7");
  UdevNodeSource source(kNoDaemon);
  EXPECT_THAT(source.nodes(), IsEmpty());
}

TEST_F(UdevNodes, AReplugAtTheSamePortIsAnotherIncarnation) {
  addUsbDevice("1-2", "7");
  addNode("1-2", 0, "0", "");
  UdevNodeSource source(kNoDaemon);
  const auto before = source.nodes();
  ASSERT_EQ(source.nodes(), before);
  // A test bed does not take a node twice; to the source, another one is the same machine later.
  g_clear_object(&bed);
  bed = umockdev_testbed_new();
  ASSERT_THAT(source.nodes(), IsEmpty());
  addUsbDevice("1-2", "8");
  addNode("1-2", 0, "0", "");
  const auto after = source.nodes();
  ASSERT_EQ(after.size(), 1u);
  EXPECT_EQ(after[0].sysPath, before[0].sysPath);
  EXPECT_NE(after[0].connectionID, before[0].connectionID);
}

TEST_F(UdevNodes, ComingAndGoingIsNews) {
  UdevNodeSource source(kNoDaemon, 1h);
  News news;
  source.watch(news.handler());
  addUsbDevice("1-2", "7");
  addNode("1-2", 0, "0", "");
  announce("1-2", 0);
  ASSERT_TRUE(news.waitFor(1));
  EXPECT_THAT(devNodes(source), ElementsAre("/dev/video0"));
  removeAll("1-2", 0);
  ASSERT_TRUE(news.waitFor(2));
  EXPECT_THAT(source.nodes(), IsEmpty());
}

TEST_F(UdevNodes, ANodeThatIsNotUsableYetIsLookedAtAFewTimes) {
  UdevNodeSource source(kNoDaemon, 1ms);
  News news;
  news.setSettled(false);
  source.watch(news.handler());
  ASSERT_TRUE(news.waitFor(5));
  news.setSettled(true);
  addUsbDevice("1-2", "7");
  addNode("1-2", 0, "0", "");
  const int before = news.count();
  announce("1-2", 0);
  ASSERT_TRUE(news.waitFor(before + 1));
}

TEST_F(UdevNodes, AfterStoppingThereIsNoNews) {
  UdevNodeSource source(kNoDaemon, 1h);
  News news;
  source.watch(news.handler());
  source.stopWatching();
  addUsbDevice("1-2", "7");
  addNode("1-2", 0, "0", "");
  announce("1-2", 0);
  source.stopWatching();
  EXPECT_EQ(news.count(), 0);
}

}  // namespace
}  // namespace tessary
