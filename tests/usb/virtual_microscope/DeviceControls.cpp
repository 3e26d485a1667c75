#include "virtual_microscope/DeviceControls.h"

#include "virtual_microscope/Descriptors.h"
#include "virtual_microscope/Say.h"
#include "virtual_microscope/StreamControl.h"

namespace tessary::lab {
namespace {

// Selectors, of the camera terminal and of the processing unit
constexpr uint8_t kExposureMode = 2;
constexpr uint8_t kExposureTime = 4;
constexpr uint8_t kBrightness = 2;
constexpr uint8_t kContrast = 3;

// Exposure modes are bits: manual, and automatic with a fixed aperture
constexpr int32_t kManual = 1;
constexpr int32_t kAutomatic = 8;

constexpr uint8_t kCanBeReadAndSet = 3;

Bytes valueBytes(int32_t value, size_t length) {
  Bytes bytes;
  for (size_t i = 0; i < length; ++i) bytes.push_back(uint8_t(uint32_t(value) >> 8 * i));
  return bytes;
}

}  // namespace

std::map<DeviceControls::Key, DeviceControls::Control> DeviceControls::initial() {
  return {
      // Of a set of bits, the "step" tells which there are.
      {{kCamera, kExposureMode},
       {"exposure mode", 1, 0, 0, kManual | kAutomatic, kAutomatic, kAutomatic}},
      {{kCamera, kExposureTime}, {"exposure time", 4, 1, 5000, 1, 157, 157}},
      {{kProcessing, kBrightness}, {"brightness", 2, -64, 64, 1, 0, 0}},
      {{kProcessing, kContrast}, {"contrast", 2, 0, 100, 5, 50, 50}},
  };
}

void DeviceControls::set(Key key, std::span<const uint8_t> data) {
  Control& control = controls_.at(key);
  if (data.size() < control.length) return;
  uint32_t bits = 0;
  for (size_t i = 0; i < control.length; ++i) bits |= uint32_t(data[i]) << 8 * i;
  control.value = control.length == 2 ? int16_t(bits) : int32_t(bits);
  say("{} is {}", control.name, control.value);
}

std::optional<Bytes> DeviceControls::get(Key key, uint8_t request) const {
  const Control& control = controls_.at(key);
  const auto value = [&](int32_t number) { return valueBytes(number, control.length); };
  switch (request) {
    case StreamControl::GetCurrent: return value(control.value);
    case StreamControl::GetLeast: return value(control.least);
    case StreamControl::GetMost: return value(control.most);
    case StreamControl::GetStep: return value(control.step);
    case StreamControl::GetDefault: return value(control.usual);
    case StreamControl::GetLength: return Fields().u16(control.length).bytes();
    case StreamControl::GetInfo: return Fields().u8(kCanBeReadAndSet).bytes();
    default: return std::nullopt;
  }
}

void DeviceControls::setDefaults() { controls_ = initial(); }

}  // namespace tessary::lab
