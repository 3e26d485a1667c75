#pragma once
// What a camera lets its user adjust, such as exposure and focus, as the camera itself tells it.

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tessary {

enum class ControlKind {
  Number,  ///< A whole number.
  Switch,  ///< 0 or 1.
  Menu,    ///< One of a few named values.
  Button,  ///< Does something when it is pressed, and has no value.
};

enum class ControlGroup { Exposure, Colour, Focus, Picture, Other };

struct ControlChoice {
  int32_t value = 0;
  std::string name;
  friend bool operator==(const ControlChoice&, const ControlChoice&) = default;
};

/// One control as it is now. Values lie on steps from `minimum` on.
struct CameraControl {
  uint32_t id = 0;  ///< The same in every camera of the model.
  std::string name;
  ControlKind kind = ControlKind::Number;
  ControlGroup group = ControlGroup::Other;
  int32_t minimum = 0;
  int32_t maximum = 0;
  int32_t step = 1;  ///< At least 1.
  int32_t defaultValue = 0;
  int32_t value = 0;
  std::vector<ControlChoice> choices;  ///< Of a menu.
  /// False while the camera sees to it itself, as to the exposure time of an automatic exposure,
  /// and for what can only be read.
  bool canBeSet = true;
  /// Whether it may decide about others' `canBeSet`, as an automatic mode does.
  bool isMode = false;
  friend bool operator==(const CameraControl&, const CameraControl&) = default;
};

struct ControlValue {
  uint32_t id = 0;
  int32_t value = 0;
  friend bool operator==(const ControlValue&, const ControlValue&) = default;
};

/// The controls of one camera. A camera may take seconds to answer, so nobody waits for it here:
/// what is asked for is done in its order elsewhere, and what came of it is reported. Main thread.
class CameraControls {
 public:
  struct Report {
    /// The last request that has been dealt with, 0 for none.
    uint64_t request = 0;
    /// What the camera took since the last report, and no more.
    std::vector<ControlValue> taken;
    /// Every control in the camera's order.
    std::vector<CameraControl> controls;
  };
  /// Called on the main thread when the controls were first read, after every request, and when
  /// something changes by itself or by another program.
  using Handler = std::function<void(const Report& report)>;

  virtual ~CameraControls() = default;
  /// Sets these in their order and returns at once, with the number of the request; numbers rise.
  /// One that the camera doesn't take, or that can't be set when its turn comes, is skipped with a
  /// line in the log. The value of a button is of no meaning.
  virtual uint64_t set(std::span<const ControlValue> values) = 0;
};

}  // namespace tessary
