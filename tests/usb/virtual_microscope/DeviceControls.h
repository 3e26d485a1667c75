#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>

#include "virtual_microscope/Bytes.h"

namespace tessary::lab {

/// What the host can adjust: of the processing unit brightness and contrast, of the camera terminal
/// the exposure mode and its time. They are numbers that the pictures don't follow.
class DeviceControls {
 public:
  /// A control by the entity that it is one of and its selector there.
  struct Key {
    uint8_t entity;
    uint8_t selector;
    friend auto operator<=>(const Key&, const Key&) = default;
  };

  bool knows(Key key) const { return controls_.contains(key); }
  /// Says what was set.
  void set(Key key, std::span<const uint8_t> data);
  /// Nothing for a request that the control doesn't have.
  std::optional<Bytes> get(Key key, uint8_t request) const;
  /// As after a cable was pulled.
  void setDefaults();

 private:
  struct Control {
    const char* name;
    size_t length;  // of its value, in bytes
    int32_t least, most, step, usual;
    int32_t value;
  };

  std::map<Key, Control> controls_ = initial();
  static std::map<Key, Control> initial();
};

}  // namespace tessary::lab
