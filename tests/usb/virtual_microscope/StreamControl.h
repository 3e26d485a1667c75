#pragma once

#include <optional>
#include <span>
#include <vector>

#include "virtual_microscope/Bytes.h"
#include "virtual_microscope/Pictures.h"

namespace tessary::lab {

/// What host and camera agree on before a stream: format, size and frame interval. The host tries
/// with the probe control and decides with the commit control.
class StreamControl {
 public:
  enum Selector : uint8_t { Probe = 1, Commit = 2 };
  enum Request : uint8_t {
    SetCurrent = 0x01,
    GetCurrent = 0x81,
    GetLeast = 0x82,
    GetMost = 0x83,
    GetStep = 0x84,
    GetLength = 0x85,
    GetInfo = 0x86,
    GetDefault = 0x87,
  };

  explicit StreamControl(const std::vector<VideoFormat>& formats) : formats_(formats) {}

  /// Whether `selector` is one of the two controls.
  static bool knows(uint8_t selector) { return selector == Probe || selector == Commit; }
  void set(uint8_t selector, std::span<const uint8_t> data);
  /// Nothing for a request that the controls don't have.
  std::optional<Bytes> get(uint8_t selector, uint8_t request) const;

  const PictureSize& committedSize() const { return sizeOf(commit_); }
  const VideoFormat& committedFormat() const { return formatOf(commit_); }
  /// In units of 100 ns.
  uint32_t committedInterval() const { return commit_.interval; }

 private:
  struct Choice {
    uint8_t format = 1;  // both count from 1
    uint8_t frame = 1;
    uint32_t interval = 0;
  };

  const VideoFormat& formatOf(const Choice& choice) const;
  const PictureSize& sizeOf(const Choice& choice) const;
  /// Brings what the host asked for into what there is.
  Choice corrected(Choice choice) const;

  const std::vector<VideoFormat>& formats_;
  Choice probe_ = corrected({});
  Choice commit_ = corrected({});
};

}  // namespace tessary::lab
