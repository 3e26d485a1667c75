#include "linux/V4l2CaptureSystem.h"

#include <algorithm>
#include <utility>

#include "base/FourCharCode.h"
#include "base/Log.h"
#include "linux/CameraIdentity.h"
#include "linux/UdevNodeSource.h"
#include "linux/V4l2Controls.h"
#include "linux/V4l2DeviceInput.h"

namespace tessary {

V4l2CaptureSystem::V4l2CaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder)
    : V4l2CaptureSystem(mainQueue, std::move(makeDecoder), std::make_shared<SystemV4l2Calls>(),
                        std::make_unique<UdevNodeSource>()) {}

V4l2CaptureSystem::V4l2CaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder,
                                     std::shared_ptr<V4l2Calls> calls,
                                     std::unique_ptr<NodeSource> nodes, const StreamTiming& timing)
    : mainQueue_(mainQueue),
      makeDecoder_(std::move(makeDecoder)),
      timing_(timing),
      calls_(std::move(calls)),
      nodes_(std::move(nodes)) {
  // Watched before it is read, so that nothing slips in between.
  nodes_->watch([this] {
    Snapshot found = takeSnapshot();
    const bool settled = found.settled;
    mainQueue_.post(lifetime_.guard([this, found = std::move(found)] { apply(found); }));
    return settled;
  });
  apply(takeSnapshot());
}

V4l2CaptureSystem::~V4l2CaptureSystem() { nodes_->stopWatching(); }

std::vector<std::shared_ptr<CaptureDevice>> V4l2CaptureSystem::devices() {
  std::vector<std::shared_ptr<CaptureDevice>> all;
  for (const Present& camera : present_) all.push_back(camera.device);
  return all;
}

std::shared_ptr<CaptureDevice> V4l2CaptureSystem::deviceWithUniqueID(const std::string& uniqueID) {
  for (const Present& camera : present_) {
    if (camera.device->uniqueID() == uniqueID) return camera.device;
  }
  return nullptr;
}

Result<std::unique_ptr<CaptureDeviceInput>> V4l2CaptureSystem::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  auto camera = std::dynamic_pointer_cast<V4l2CaptureDevice>(device);
  if (!camera) return Error{"The camera is not connected. Plug it in."};
  auto input = V4l2DeviceInput::open(calls_, camera, makeDecoder_, timing_);
  if (!input) return Error{input.error()};
  return *std::move(input);
}

std::unique_ptr<CameraControls> V4l2CaptureSystem::makeControls(
    const std::shared_ptr<CaptureDevice>& device, CameraControls::Handler handler) {
  const auto camera = std::dynamic_pointer_cast<V4l2CaptureDevice>(device);
  if (!camera) return nullptr;
  return std::make_unique<V4l2Controls>(calls_, camera->devNode(), camera->localizedName(),
                                        mainQueue_, std::move(handler));
}

void V4l2CaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                           std::function<void()> deviceWasDisconnected) {
  deviceWasConnected_ = std::move(deviceWasConnected);
  deviceWasDisconnected_ = std::move(deviceWasDisconnected);
}

bool V4l2CaptureSystem::Entry::sameCamera(const Entry& other) const {
  // A camera that this user is now allowed to ask counts as a new one: its formats are known now.
  return node.sysPath == other.node.sysPath && node.connectionID == other.node.connectionID &&
         probe->state == other.probe->state;
}

V4l2CaptureSystem::Snapshot V4l2CaptureSystem::takeSnapshot() {
  const std::lock_guard lock(snapshotMutex_);
  Snapshot snapshot;
  snapshot.number = ++snapshots_;
  decltype(probes_) probes;
  for (NodeRecord& node : nodes_->nodes()) {
    const std::pair key(node.sysPath, node.connectionID);
    const auto known = probes_.find(key);
    const auto probe = known != probes_.end()
                           ? known->second
                           : std::make_shared<const NodeProbe>(probeNode(*calls_, node.devNode));
    switch (probe->state) {
      case NodeProbe::State::NotACamera: probes.emplace(key, probe); break;
      case NodeProbe::State::Camera:
        probes.emplace(key, probe);
        snapshot.cameras.push_back({std::move(node), probe});
        break;
      case NodeProbe::State::NoPermission:
        // Listed, if it is a camera by udev's word, so that choosing it tells what to do.
        snapshot.settled = false;
        if (node.saysItCaptures) snapshot.cameras.push_back({std::move(node), probe});
        break;
      case NodeProbe::State::Unanswered: snapshot.settled = false; break;
    }
  }
  probes_ = std::move(probes);
  return snapshot;
}

void V4l2CaptureSystem::apply(const Snapshot& snapshot) {
  if (snapshot.number <= applied_) return;
  applied_ = snapshot.number;

  // Each change is listed and told alone, as if it had come alone: a hub takes all its cameras away
  // and brings them back at once. Departures come first, so that a camera that left and came back
  // is seen to be gone. A handler may run the main queue, and with it a newer snapshot, which has
  // then told the rest.
  const auto isSeen = [&](const Present& camera) {
    return std::ranges::any_of(snapshot.cameras,
                               [&](const Entry& entry) { return entry.sameCamera(camera.entry); });
  };
  for (;;) {
    const auto gone = std::ranges::find_if_not(present_, isSeen);
    if (gone == present_.end()) break;
    present_.erase(gone);
    if (const auto handler = deviceWasDisconnected_) handler();
    if (snapshot.number != applied_) return;
  }
  for (const Entry& entry : snapshot.cameras) {
    const auto isIt = [&](const Present& camera) { return camera.entry.sameCamera(entry); };
    if (std::ranges::any_of(present_, isIt)) continue;
    present_.push_back({entry, makeDevice(entry)});
    std::ranges::sort(present_, {},
                      [](const Present& camera) { return camera.device->uniqueID(); });
    if (const auto handler = deviceWasConnected_) handler();
    if (snapshot.number != applied_) return;
  }
}

std::shared_ptr<V4l2CaptureDevice> V4l2CaptureSystem::makeDevice(const Entry& entry) const {
  const NodeRecord& node = entry.node;
  V4l2CaptureDevice::Description camera;
  // A port may be named alike on a bus's fast and its slow half: the later arrival gets a number.
  const std::string identity = portIdentity(node);
  camera.uniqueID = identity;
  const auto taken = [&](const std::string& id) {
    return std::any_of(present_.begin(), present_.end(),
                       [&](const Present& other) { return other.device->uniqueID() == id; });
  };
  for (int number = 2; taken(camera.uniqueID); ++number)
    camera.uniqueID = fmt::format("{}#{}", identity, number);
  camera.localizedName = displayName(node, entry.probe->card);
  camera.modelID = node.isUsb ? usbModelID(node.vendorID, node.productID) : camera.localizedName;
  camera.manufacturer = printableText(node.manufacturer);
  camera.serialNumber = printableText(node.serial);
  camera.transportType = node.isUsb ? kTransportTypeUSB : 0;
  camera.devNode = node.devNode;
  camera.formats = entry.probe->formats;
  camera.formatsAreKnown = entry.probe->state == NodeProbe::State::Camera;
  camera.defaultFormat = entry.probe->currentFormat;
  return std::make_shared<V4l2CaptureDevice>(std::move(camera));
}

}  // namespace tessary
