#pragma once

#include <chrono>
#include <deque>
#include <optional>

#include "virtual_microscope/Bytes.h"
#include "virtual_microscope/StreamControl.h"
#include "virtual_microscope/UsbIpLink.h"

namespace tessary::lab {

/// Sends the pictures, each in as many bulk transfers as it needs, at the rate that was agreed on,
/// and spoils them on request. Says when a fault that was asked for is over.
class StreamPump {
 public:
  using Clock = std::chrono::steady_clock;

  StreamPump(UsbIpLink& link, const StreamControl& control, double framesPerSecond)
      : link_(link), control_(control), framesPerSecond_(framesPerSecond) {}

  void start();
  /// Forgets the transfers that the host has asked for, unless it still waits for them.
  void stop() { streaming_ = false; }
  void forgetTransfers() { transfers_.clear(); }

  void addTransfer(uint32_t sequence, uint32_t length) { transfers_.push_back({sequence, length}); }
  /// False if there is no such transfer any more.
  bool removeTransfer(uint32_t sequence);
  /// Answers as many transfers as there is something to send for.
  void pump();
  /// Until pump() may have something to do; nothing if that needs a message of the host first.
  std::optional<std::chrono::milliseconds> timeToNextPicture() const;

  void corrupt(int pictures) { corrupt_.left = corrupt_.asked = pictures; }
  void truncate(int pictures) { truncate_.left = truncate_.asked = pictures; }
  void fail(int transfers) { fail_.left = fail_.asked = transfers; }
  void freeze(std::chrono::milliseconds duration) { frozenUntil_ = Clock::now() + duration; }
  void setFramesPerSecond(double rate) { framesPerSecond_ = rate; }

  uint64_t sent() const { return sent_; }

 private:
  struct Transfer {
    uint32_t sequence;
    uint32_t length;
  };
  struct Fault {
    const char* name;
    int asked = 0;
    int left = 0;
    /// Whether this one is to be spoilt.
    bool take();
  };

  void beginPicture();
  void sendPiece(const Transfer& transfer);
  Clock::duration interval() const;

  UsbIpLink& link_;
  const StreamControl& control_;
  double framesPerSecond_;

  bool streaming_ = false;
  std::deque<Transfer> transfers_;
  std::optional<Bytes> picture_;  // on its way
  size_t offset_ = 0;             // of it, sent already
  uint8_t frameID_ = 0;           // alternates, for the host to tell one picture from the next
  size_t nextPicture_ = 0;
  Clock::time_point due_;
  uint64_t sent_ = 0;

  Fault corrupt_{"corrupt"};
  Fault truncate_{"truncate"};
  Fault fail_{"error"};
  Clock::time_point frozenUntil_;
};

}  // namespace tessary::lab
