#pragma once
// What the camera says of itself when it is asked: a USB 2.0 device with one USB Video Class 1.0
// function, which streams through a bulk endpoint.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "virtual_microscope/Bytes.h"
#include "virtual_microscope/Pictures.h"

namespace tessary::lab {

struct Identity {
  uint16_t vendor = 0x055e;
  uint16_t product = 0xa160;
  std::string maker = "Optics";
  std::string name = "USB Microscope";
  std::string serial = "TS0001";
};

constexpr uint8_t kVideoControlInterface = 0;
constexpr uint8_t kVideoStreamingInterface = 1;
constexpr uint8_t kStreamingEndpoint = 1;
constexpr uint8_t kButtonEndpoint = 2;

// Entities of the control interface that have controls
constexpr uint8_t kCamera = 1;
constexpr uint8_t kProcessing = 2;

constexpr uint32_t kFrameInterval = 333333;      // of 100 ns: 30 a second
constexpr uint32_t kSlowFrameInterval = 666666;  // 15 a second
/// The largest piece of a picture in one transfer, its header included.
constexpr uint32_t kLargestPayload = 16384;

uint32_t largestPicture(Size size);

Bytes deviceDescriptor(const Identity& identity);
Bytes configurationDescriptor(const std::vector<VideoFormat>& formats);
/// Nothing for an index that the device descriptor does not name.
std::optional<Bytes> stringDescriptor(const Identity& identity, uint8_t index);

}  // namespace tessary::lab
