#include "linux/V4l2CaptureSystem.h"

#include <algorithm>
#include <utility>

#include "base/FourCharCode.h"
#include "base/Log.h"
#include "linux/CameraIdentity.h"
#include "linux/UdevNodeSource.h"
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
    Survey found = survey();
    const bool settled = found.settled;
    mainQueue_.post(lifetime_.guard([this, found = std::move(found)] { apply(found); }));
    return settled;
  });
  apply(survey());
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

void V4l2CaptureSystem::setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                           std::function<void()> deviceWasDisconnected) {
  deviceWasConnected_ = std::move(deviceWasConnected);
  deviceWasDisconnected_ = std::move(deviceWasDisconnected);
}

bool V4l2CaptureSystem::Sighting::sameCamera(const Sighting& other) const {
  // A camera that this user is now allowed to ask counts as a new one: its formats are known now.
  return node.sysPath == other.node.sysPath && node.incarnation == other.node.incarnation &&
         probe->state == other.probe->state;
}

V4l2CaptureSystem::Survey V4l2CaptureSystem::survey() {
  const std::lock_guard lock(surveyMutex_);
  Survey survey;
  survey.number = ++surveys_;
  decltype(probes_) probes;
  for (NodeRecord& node : nodes_->nodes()) {
    const std::pair key(node.sysPath, node.incarnation);
    const auto known = probes_.find(key);
    const auto probe = known != probes_.end()
                           ? known->second
                           : std::make_shared<const NodeProbe>(probeNode(*calls_, node.devNode));
    switch (probe->state) {
      case NodeProbe::State::NotACamera: probes.emplace(key, probe); break;
      case NodeProbe::State::Camera:
        probes.emplace(key, probe);
        survey.cameras.push_back({std::move(node), probe});
        break;
      case NodeProbe::State::NoPermission:
        // Listed, if it is a camera by udev's word, so that choosing it tells what to do.
        survey.settled = false;
        if (node.saysItCaptures) survey.cameras.push_back({std::move(node), probe});
        break;
      case NodeProbe::State::Unanswered: survey.settled = false; break;
    }
  }
  probes_ = std::move(probes);
  return survey;
}

void V4l2CaptureSystem::apply(const Survey& survey) {
  if (survey.number <= applied_) return;
  applied_ = survey.number;

  // Each change is listed and told alone, as if it had come alone: a hub takes all its cameras away
  // and brings them back at once. Departures come first, so that a camera that left and came back
  // is seen to be gone. A handler may run the main queue, and with it a newer survey, which has
  // then told the rest.
  const auto isSeen = [&](const Present& camera) {
    return std::ranges::any_of(
        survey.cameras, [&](const Sighting& seen) { return seen.sameCamera(camera.sighting); });
  };
  for (;;) {
    const auto gone = std::ranges::find_if_not(present_, isSeen);
    if (gone == present_.end()) break;
    present_.erase(gone);
    if (const auto handler = deviceWasDisconnected_) handler();
    if (survey.number != applied_) return;
  }
  for (const Sighting& seen : survey.cameras) {
    const auto isIt = [&](const Present& camera) { return camera.sighting.sameCamera(seen); };
    if (std::ranges::any_of(present_, isIt)) continue;
    present_.push_back({seen, makeDevice(seen)});
    std::ranges::sort(present_, {},
                      [](const Present& camera) { return camera.device->uniqueID(); });
    if (const auto handler = deviceWasConnected_) handler();
    if (survey.number != applied_) return;
  }
}

std::shared_ptr<V4l2CaptureDevice> V4l2CaptureSystem::makeDevice(const Sighting& sighting) const {
  const NodeRecord& node = sighting.node;
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
  camera.localizedName = displayName(node, sighting.probe->card);
  camera.modelID = node.isUsb ? usbModelID(node.vendorID, node.productID) : camera.localizedName;
  camera.manufacturer = printableText(node.manufacturer);
  camera.transportType = node.isUsb ? kTransportTypeUSB : 0;
  camera.devNode = node.devNode;
  camera.formats = sighting.probe->formats;
  camera.defaultFormat = sighting.probe->currentFormat;
  return std::make_shared<V4l2CaptureDevice>(std::move(camera));
}

}  // namespace tessary
