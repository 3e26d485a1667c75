// One to three cameras that come and go, stumble, fall silent and are asked for other sizes, while
// sessions start and stop and frames flow: the capture half of the program on the adapter for
// Linux, with drivers that are simulated. Whatever happens, the controller is in one of its three
// states, no session outlives its camera, and in the end nothing is open.

#include <cerrno>
#include <map>
#include <random>
#include <thread>

#include "FakeCaptureHost.h"
#include "FakeFailureListener.h"
#include "FakeVideoDriver.h"
#include "ManualExecutor.h"
#include "MemoryKeyValueStore.h"
#include "Trial.h"
#include "base/FourCharCode.h"
#include "base/Log.h"
#include "capture/CaptureController.h"
#include "linux/V4l2CaptureSystem.h"
#include "settings/PathGrants.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::FakeVideoDriver;

constexpr int kPorts = 3;
const std::vector<uint8_t> kFrame(256, 'a');

/// The drivers of all cameras that are plugged in, and of those that still have something open. Any
/// thread.
class Machine final : public V4l2Calls {
 public:
  std::shared_ptr<FakeVideoDriver> plug(const std::string& devNode) {
    auto driver = std::make_shared<FakeVideoDriver>();
    const std::lock_guard lock(mutex_);
    std::erase_if(all_,
                  [](const auto& old) { return old->unplugged() && old->openDescriptors() == 0; });
    all_.push_back(driver);
    return nodes_[devNode] = driver;
  }
  void pull(const std::string& devNode) {
    const std::lock_guard lock(mutex_);
    nodes_[devNode]->unplug();
    nodes_.erase(devNode);
  }
  int open() const {
    const std::lock_guard lock(mutex_);
    int descriptors = 0;
    for (const auto& driver : all_) descriptors += driver->openDescriptors();
    return descriptors;
  }
  std::vector<std::string> violations() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> all;
    for (const auto& driver : all_)
      for (const std::string& violation : driver->violations()) all.push_back(violation);
    return all;
  }

  int open(const char* path, int flags) override {
    const std::lock_guard lock(mutex_);
    const auto node = nodes_.find(path);
    if (node == nodes_.end()) {
      errno = ENOENT;
      return -1;
    }
    const int fd = node->second->open(path, flags);
    if (fd >= 0) byFd_[fd] = node->second;
    return fd;
  }
  int close(int fd) override { return of(fd)->close(fd); }
  int ioctl(int fd, unsigned long request, void* argument) override {
    return of(fd)->ioctl(fd, request, argument);
  }
  void* mmap(size_t length, int fd, off_t offset) override {
    void* const address = of(fd)->mmap(length, fd, offset);
    const std::lock_guard lock(mutex_);
    byAddress_[address] = byFd_[fd];
    return address;
  }
  int munmap(void* address, size_t length) override {
    std::shared_ptr<FakeVideoDriver> driver;
    {
      const std::lock_guard lock(mutex_);
      driver = byAddress_.at(address);
    }
    return driver->munmap(address, length);
  }
  int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) override {
    std::shared_ptr<FakeVideoDriver> driver;
    {
      const std::lock_guard lock(mutex_);
      for (nfds_t i = 0; i < count && !driver; ++i) {
        if (const auto found = byFd_.find(descriptors[i].fd); found != byFd_.end())
          driver = found->second;
      }
    }
    return driver ? driver->poll(descriptors, count, timeoutMilliseconds)
                  : ::poll(descriptors, count, timeoutMilliseconds);
  }

 private:
  std::shared_ptr<FakeVideoDriver> of(int fd) const {
    const std::lock_guard lock(mutex_);
    return byFd_.at(fd);
  }

  mutable std::mutex mutex_;  // guards all below
  std::map<std::string, std::shared_ptr<FakeVideoDriver>> nodes_;
  std::vector<std::shared_ptr<FakeVideoDriver>> all_;
  std::map<int, std::shared_ptr<FakeVideoDriver>> byFd_;
  std::map<void*, std::shared_ptr<FakeVideoDriver>> byAddress_;
};

/// The device manager: tells what has changed on a thread of its own, some time later.
class Nodes final : public NodeSource {
 public:
  std::vector<NodeRecord> nodes() override {
    const std::lock_guard lock(mutex_);
    return list_;
  }
  void watch(std::function<bool()> changed) override {
    thread_ = std::jthread([this, changed = std::move(changed)](const std::stop_token& stop) {
      while (!stop.stop_requested()) {
        if (news_.exchange(false)) changed();
        std::this_thread::sleep_for(200us);
      }
    });
  }
  void stopWatching() override { thread_ = {}; }

  void set(std::vector<NodeRecord> list) {
    {
      const std::lock_guard lock(mutex_);
      list_ = std::move(list);
    }
    news_ = true;
  }

 private:
  std::mutex mutex_;  // guards list_
  std::vector<NodeRecord> list_;
  std::atomic<bool> news_{false};
  std::jthread thread_;
};

/// Any bytes are a picture.
class Decoder final : public FrameDecoder {
  std::shared_ptr<PixelBuffer> decode(std::span<const uint8_t> bytes, TextureSize announced, size_t,
                                      PixelBufferPool& pool) override {
    auto picture = pool.take(announced);
    picture->data()[0] = bytes.front();
    return picture;
  }
};

class Storm {
 public:
  explicit Storm(uint64_t seed) : random_(seed) {
    host_.onFrame = [this](const SampleBuffer& frame) {
      if (frame.imageBuffer->data()[0] != 'a') ++failures_;
      ++frames_;
    };
    controller_->setupCaptureSession();
    controller_->addObservers();
    controller_->wndExposed = true;
  }

  void step() {
    const int port = int(below(kPorts));
    switch (below(15)) {
      case 0:
      case 1: plug(port); break;
      case 2: pull(port); break;
      case 3:  // a hub
        for (int each = 0; each < kPorts; ++each) below(2) ? plug(each) : pull(each);
        break;
      case 4:  // so fast that nobody saw it gone
        pull(port);
        plug(port);
        break;
      case 5:
      case 6: choose(); break;
      case 7: controller_->stopCaptureSession(); break;
      case 8: stumble(port); break;
      case 9: controller_->wndExposed = !controller_->wndExposed; break;
      case 10: host_.microscopeWindowIsUp = !host_.microscopeWindowIsUp; break;
      default: std::this_thread::sleep_for(std::chrono::microseconds(below(4000)));
    }
    if (below(3) != 0) mainQueue_.runAll();
    check();
  }

  /// Everything is pulled and plugged in so fast that nobody sees it gone: no session hangs on a
  /// camera that was pulled. Then slowly: the remembered microscope is opened by itself, or by
  /// hand, and shows a picture.
  void calm() {
    controller_->wndExposed = true;
    for (int port = 0; port < kPorts; ++port) {
      pull(port);
      plug(port);
    }
    const int64_t earlier = frames_;
    await("a picture of the session that runs",
          [&] { return frames_ > earlier || !controller_->capSession->isRunning(); });
    for (int port = 0; port < kPorts; ++port) pull(port);
    await("an empty list", [this] { return microscopes_.empty(); });
    for (int port = 0; port < kPorts; ++port) plug(port);
    await("three microscopes", [this] { return microscopes_.size() == kPorts; });
    choose();
    const int64_t before = frames_;
    await("a picture", [&] { return frames_ > before; });
    ++calms;
  }

  /// Closes, and looks for what was left open.
  void end() {
    controller_ = nullptr;
    system_ = nullptr;
    if (machine_->open() != 0) complain(fmt::format("{} cameras left open", machine_->open()));
    for (const std::string& violation : machine_->violations()) complain(violation);
  }

  int64_t frames() const { return frames_; }
  int64_t failures() const { return failures_; }
  int64_t plugged = 0;
  int64_t sessions = 0;
  int64_t calms = 0;

 private:
  size_t below(size_t end) { return size_t(random_() % end); }
  static std::string nodeOf(int port) { return fmt::format("/dev/video{}", port); }

  void complain(const std::string& wrong) {
    fmt::print("{}\n", wrong);
    ++failures_;
  }
  void await(const char* what, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end)
        return complain(fmt::format("{} never came", what));
      mainQueue_.runAll();
      std::this_thread::sleep_for(200us);
    }
  }

  void plug(int port) {
    if (drivers_.contains(port)) return;
    drivers_[port] = machine_->plug(nodeOf(port));
    drivers_[port]->runFreely(kFrame);
    connections_[port] = fmt::format("{}", ++plugged);
    nodes_->set(present());
  }
  void pull(int port) {
    if (!drivers_.contains(port)) return;
    machine_->pull(nodeOf(port));
    drivers_.erase(port);
    nodes_->set(present());
  }
  void stumble(int port) {
    if (!drivers_.contains(port)) return;
    static constexpr int kErrors[] = {EIO, EBUSY, ENODEV, ENOSPC, EINTR};
    switch (below(3)) {
      case 0: drivers_[port]->failCall(int(1 + below(10)), kErrors[below(5)], false); break;
      case 1: drivers_[port]->beSilent(); break;
      default: drivers_[port]->runFreely(kFrame);
    }
  }
  std::vector<NodeRecord> present() const {
    std::vector<NodeRecord> list;
    for (const auto& [port, driver] : drivers_) {
      NodeRecord node;
      node.sysPath = fmt::format("/sys/video{}", port);
      node.connectionID = connections_.at(port);
      node.devNode = nodeOf(port);
      node.path = fmt::format("port{}", port);
      node.isUsb = true;
      node.vendorID = 0x055e;
      node.productID = 0xa160;
      node.index = "0";
      node.saysItCaptures = true;
      list.push_back(node);
    }
    return list;
  }
  void choose() {
    if (microscopes_.empty()) return;
    const auto microscope = microscopes_[below(microscopes_.size())];
    const auto& sizes = microscope->resolutions;
    controller_->startCaptureSession(microscope,
                                     sizes.empty() ? nullptr : sizes[below(sizes.size())]);
    ++sessions;
  }
  void check() {
    const auto& session = controller_->capSession;
    if (!session) return complain("there is no session");
    const bool fieldsSet = controller_->capDevice && controller_->capDeviceInput &&
                           controller_->capVideoDataOutput && currMicroscope_;
    const bool running = fieldsSet && session->isRunning() && session->input() && session->output();
    const bool failed = currMicroscope_ && !session->input() && !session->isRunning();
    const bool idle = !controller_->capDevice && !controller_->capDeviceInput && !currMicroscope_ &&
                      !session->isRunning() && !session->input();
    if (!running && !failed && !idle) complain("neither idle, nor running, nor failed");
    // One that is gone from the list has no session: it was told of at once.
    if (running && system_->deviceWithUniqueID(currMicroscope_->uniqueID) == nullptr)
      complain("a session of a microscope that is gone");
  }

  std::mt19937_64 random_;
  std::atomic<int64_t> frames_{0};
  std::atomic<int64_t> failures_{0};
  std::map<int, std::shared_ptr<FakeVideoDriver>> drivers_;
  std::map<int, std::string> connections_;

  test::ManualExecutor mainQueue_;
  std::shared_ptr<Machine> machine_ = std::make_shared<Machine>();
  Nodes* nodes_ = nullptr;  // owned by the system
  std::unique_ptr<V4l2CaptureSystem> system_ = makeSystem();
  std::shared_ptr<test::CallLog> callLog_ = std::make_shared<test::CallLog>();
  test::MemoryKeyValueStore store_;
  UserDefaults defaults_{store_};
  PathGrants grants_;
  Preferences preferences_{defaults_, grants_};
  test::FakeCaptureHost host_{callLog_};
  test::FakeFailureListener failureListener_;
  MicroscopeList microscopes_;
  std::shared_ptr<MicroscopeInfo> currMicroscope_;
  MicroscopeCatalogue catalogue_{*system_, microscopes_};
  RememberedControls remembered_{defaults_};
  CameraControlBoard controls_{*system_, remembered_};
  std::unique_ptr<CaptureController> controller_ = std::make_unique<CaptureController>(
      CaptureController::Dependencies{*system_, catalogue_, currMicroscope_, preferences_,
                                      mainQueue_, host_, host_, failureListener_, controls_});

  std::unique_ptr<V4l2CaptureSystem> makeSystem() {
    auto nodes = std::make_unique<Nodes>();
    nodes_ = nodes.get();
    return std::make_unique<V4l2CaptureSystem>(
        mainQueue_, [](uint32_t) { return std::make_unique<Decoder>(); }, machine_,
        std::move(nodes),
        StreamTiming{.configurationGrace = 1ms,
                     .silence = 20ms,
                     .longestSilence = 80ms,
                     .silenceAfterFault = 5ms,
                     .retry = 1ms,
                     .longestRetry = 8ms});
  }
};

int run(const Trial& trial) {
  const LogRedirection quiet([](std::string_view) {});
  Storm storm(trial.seed());
  for (int64_t i = 1; i <= trial.count() && storm.failures() < 10; ++i) {
    storm.step();
    if (i % 500 == 0) storm.calm();
  }
  storm.end();
  return trial.end(storm.failures(),
                   fmt::format("{} plugged in, {} sessions, {} frames, calm {} times",
                               storm.plugged, storm.sessions, storm.frames(), storm.calms));
}

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  return tessary::run(tessary::Trial("hotplug_storm", argc, argv, 1000));
}
