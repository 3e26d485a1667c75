#include "virtual_microscope/VirtualMicroscope.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <thread>
#include <utility>

#include <poll.h>

#include "common/Numbers.h"
#include "virtual_microscope/Say.h"

namespace tessary::lab {
namespace {

// Kind and recipient in a control transfer's first byte
constexpr uint8_t kKindMask = 0x60;
constexpr uint8_t kStandard = 0x00;
constexpr uint8_t kClass = 0x20;
constexpr uint8_t kRecipientMask = 0x1F;
constexpr uint8_t kToInterface = 1;
constexpr uint8_t kToEndpoint = 2;

// Standard requests
constexpr uint8_t kGetStatus = 0;
constexpr uint8_t kClearFeature = 1;
constexpr uint8_t kSetFeature = 3;
constexpr uint8_t kSetAddress = 5;
constexpr uint8_t kGetDescriptor = 6;
constexpr uint8_t kGetConfiguration = 8;
constexpr uint8_t kSetConfiguration = 9;
constexpr uint8_t kGetInterface = 10;
constexpr uint8_t kSetInterface = 11;

constexpr uint8_t kDeviceDescriptor = 1;
constexpr uint8_t kConfigurationDescriptor = 2;
constexpr uint8_t kStringDescriptor = 3;

}  // namespace

struct VirtualMicroscope::Setup {
  uint8_t type;
  uint8_t request;
  uint16_t value;
  uint16_t index;
  uint16_t length;

  explicit Setup(const std::array<uint8_t, 8>& bytes)
      : type(bytes[0]),
        request(bytes[1]),
        value(uint16_t(bytes[2] | bytes[3] << 8)),
        index(uint16_t(bytes[4] | bytes[5] << 8)),
        length(uint16_t(bytes[6] | bytes[7] << 8)) {}
};

VirtualMicroscope::VirtualMicroscope(Options options) : options_(std::move(options)) {
  if (!options_.commandPipe.empty()) commands_.emplace(options_.commandPipe);
}

void VirtualMicroscope::run() {
  if (options_.plugged) plug();
  while (!quit_) {
    pollfd descriptors[] = {{link_.socket(), POLLIN, 0},
                            {commands_ ? commands_->fd() : -1, POLLIN, 0}};
    const auto wait = pump_.timeToNextPicture();
    poll(descriptors, 2, wait ? int(wait->count()) : -1);
    if (descriptors[1].revents) {
      while (const auto line = commands_->nextLine()) obey(*line);
    } else if (descriptors[0].revents) {
      if (const auto message = link_.receive()) {
        handle(*message);
      } else {
        say("the host hung up");
        pump_.stop();
        pump_.forgetTransfers();
      }
    }
    if (link_.isAttached()) pump_.pump();
  }
  unplug();
}

void VirtualMicroscope::plug() {
  if (link_.isAttached()) return;
  pump_.stop();
  pump_.forgetTransfers();
  buttonTransfers_.clear();
  buttonEvents_.clear();
  deviceControls_.setDefaults();
  if (link_.attach()) say("plugged");
}

void VirtualMicroscope::unplug() {
  if (!link_.isAttached()) return;
  pump_.stop();
  pump_.forgetTransfers();
  link_.detach();
  say("unplugged after {} pictures", pump_.sent());
}

void VirtualMicroscope::handle(const HostMessage& message) {
  if (message.kind == HostMessage::Kind::Unlink) {
    const bool removed = pump_.removeTransfer(message.unlinked) ||
                         std::erase(buttonTransfers_, message.unlinked) > 0;
    // 0 says that the transfer was complete before it could be taken back.
    link_.completeUnlink(message.sequence, removed ? -ECONNRESET : 0);
  } else if (message.endpoint == 0) {
    handleControl(message);
  } else if (message.endpoint == kStreamingEndpoint && message.toHost) {
    pump_.addTransfer(message.sequence, message.length);
  } else if (message.endpoint == kButtonEndpoint && message.toHost) {
    buttonTransfers_.push_back(message.sequence);
    sendButtonEvents();
  } else {
    link_.complete(message.sequence, -EPIPE, 0);
  }
}

void VirtualMicroscope::handleControl(const HostMessage& message) {
  const Setup setup(message.setup);
  std::optional<Bytes> answer;
  if ((setup.type & kKindMask) == kStandard)
    answer = answerStandard(setup);
  else if ((setup.type & kKindMask) == kClass)
    answer = answerVideo(setup, message.data);
  if (!answer) {
    link_.complete(message.sequence, -EPIPE, 0);
  } else if (message.toHost) {
    answer->resize(std::min<size_t>({answer->size(), setup.length, message.length}));
    link_.complete(message.sequence, 0, uint32_t(answer->size()), *answer);
  } else {
    link_.complete(message.sequence, 0, message.length);
  }
}

std::optional<Bytes> VirtualMicroscope::answerStandard(const Setup& setup) {
  switch (setup.request) {
    case kGetDescriptor: return readDescriptor(setup.value);
    case kGetStatus: return Bytes{0, 0};
    case kGetConfiguration: return Bytes{1};
    case kGetInterface: return Bytes{0};
    case kClearFeature:
      // This is how the driver ends a bulk stream.
      if ((setup.type & kRecipientMask) == kToEndpoint) pump_.stop();
      return Bytes{};
    case kSetInterface: pump_.stop(); return Bytes{};
    case kSetConfiguration:
    case kSetAddress:
    case kSetFeature: return Bytes{};
    default: return std::nullopt;
  }
}

std::optional<Bytes> VirtualMicroscope::readDescriptor(uint16_t value) const {
  const auto index = uint8_t(value);
  switch (value >> 8) {
    case kDeviceDescriptor: return deviceDescriptor(options_.identity);
    case kConfigurationDescriptor: return configurationDescriptor(options_.formats);
    case kStringDescriptor: return stringDescriptor(options_.identity, index);
    default: return std::nullopt;
  }
}

std::optional<Bytes> VirtualMicroscope::answerVideo(const Setup& setup, const Bytes& data) {
  const auto selector = uint8_t(setup.value >> 8);
  const bool isForDevice = (setup.type & kRecipientMask) == kToInterface &&
                           uint8_t(setup.index) == kVideoControlInterface;
  if (isForDevice) return answerDevice(setup, data);
  const bool isForStreaming = (setup.type & kRecipientMask) == kToInterface &&
                              uint8_t(setup.index) == kVideoStreamingInterface;
  if (!isForStreaming || !StreamControl::knows(selector)) return std::nullopt;
  if (setup.request != StreamControl::SetCurrent) return control_.get(selector, setup.request);
  control_.set(selector, data);
  if (selector == StreamControl::Commit) {
    const auto [width, height] = control_.committedSize().size;
    const bool isMjpeg = control_.committedFormat().coding == Coding::Mjpeg;
    say("streaming {} {}x{}", isMjpeg ? "MJPEG" : "YUYV", width, height);
    pump_.start();
  }
  return Bytes{};
}

std::optional<Bytes> VirtualMicroscope::answerDevice(const Setup& setup, const Bytes& data) {
  const DeviceControls::Key key{uint8_t(setup.index >> 8), uint8_t(setup.value >> 8)};
  if (!deviceControls_.knows(key)) return std::nullopt;
  if (setup.request != StreamControl::SetCurrent) return deviceControls_.get(key, setup.request);
  // Nothing else is answered meanwhile, as by firmware that is busy.
  std::this_thread::sleep_for(stall_);
  deviceControls_.set(key, data);
  return Bytes{};
}

void VirtualMicroscope::pressButton() {
  constexpr uint8_t kOfStreaming = 2;
  for (const size_t pressed : {1, 0})
    buttonEvents_.push_back(
        Fields().u8(kOfStreaming).u8(kVideoStreamingInterface).u8(0).u8(pressed).bytes());
  sendButtonEvents();
}

void VirtualMicroscope::sendButtonEvents() {
  while (!buttonEvents_.empty() && !buttonTransfers_.empty()) {
    link_.complete(buttonTransfers_.front(), 0, uint32_t(buttonEvents_.front().size()),
                   buttonEvents_.front());
    buttonTransfers_.pop_front();
    buttonEvents_.pop_front();
  }
}

void VirtualMicroscope::obey(const std::string& line) {
  const std::string_view text = line;
  const size_t blank = text.find(' ');
  const std::string_view command = text.substr(0, blank);
  const int number = blank == text.npos ? 0 : parseNumber<int>(text.substr(blank + 1)).value_or(0);
  say("told to {}", line);
  if (command == "plug")
    plug();
  else if (command == "unplug")
    unplug();
  else if (command == "quit")
    quit_ = true;
  else if (command == "corrupt" && number > 0)
    pump_.corrupt(number);
  else if (command == "truncate" && number > 0)
    pump_.truncate(number);
  else if (command == "error" && number > 0)
    pump_.fail(number);
  else if (command == "freeze" && number > 0)
    pump_.freeze(std::chrono::milliseconds(number));
  else if (command == "fps" && number > 0)
    pump_.setFramesPerSecond(number);
  else if (command == "stall")
    stall_ = std::chrono::milliseconds(number);
  else if (command == "press")
    pressButton();
  else
    say("'{}' is not understood", line);
}

}  // namespace tessary::lab
