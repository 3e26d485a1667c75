#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "virtual_microscope/CommandPipe.h"
#include "virtual_microscope/Descriptors.h"
#include "virtual_microscope/DeviceControls.h"
#include "virtual_microscope/Pictures.h"
#include "virtual_microscope/StreamControl.h"
#include "virtual_microscope/StreamPump.h"
#include "virtual_microscope/UsbIpLink.h"

namespace tessary::lab {

/// The camera: answers what the host asks, sends pictures, and obeys the commands in main.cpp.
class VirtualMicroscope {
 public:
  struct Options {
    Identity identity;
    std::vector<VideoFormat> formats;
    unsigned port = 0;
    double framesPerSecond = 30;
    bool plugged = true;
    std::string commandPipe;  // none if empty
  };

  explicit VirtualMicroscope(Options options);

  /// Until it is told to quit.
  void run();

 private:
  struct Setup;  // of a control transfer

  void plug();
  void unplug();
  void handle(const HostMessage& message);
  void handleControl(const HostMessage& message);
  /// What the host reads, or nothing if the request has to be refused.
  std::optional<Bytes> answerStandard(const Setup& setup);
  std::optional<Bytes> answerDevice(const Setup& setup, const Bytes& data);
  std::optional<Bytes> answerVideo(const Setup& setup, const Bytes& data);
  std::optional<Bytes> readDescriptor(uint16_t value) const;
  /// Presses its button and lets go, once the host waits for it.
  void pressButton();
  void sendButtonEvents();
  void obey(const std::string& line);

  const Options options_;
  StreamControl control_{options_.formats};
  UsbIpLink link_{options_.port};
  StreamPump pump_{link_, control_, options_.framesPerSecond};
  DeviceControls deviceControls_;
  std::chrono::milliseconds stall_{0};    // of each control that is set
  std::deque<uint32_t> buttonTransfers_;  // that the host has asked for
  std::deque<Bytes> buttonEvents_;        // that it has not heard of yet
  std::optional<CommandPipe> commands_;
  bool quit_ = false;
};

}  // namespace tessary::lab
