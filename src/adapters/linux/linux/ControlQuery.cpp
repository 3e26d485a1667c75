#include "linux/ControlQuery.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>

#include <fmt/format.h>
#include <linux/videodev2.h>

#include "linux/CameraIdentity.h"
#include "linux/DriverError.h"

namespace tessary {
namespace {

// A driver that never says that the list is over must not keep us.
constexpr int kMostControls = 512;
constexpr int64_t kMostChoices = 256;

constexpr uint32_t kExposureIDs[] = {V4L2_CID_EXPOSURE,
                                     V4L2_CID_EXPOSURE_AUTO,
                                     V4L2_CID_EXPOSURE_ABSOLUTE,
                                     V4L2_CID_EXPOSURE_AUTO_PRIORITY,
                                     V4L2_CID_AUTO_EXPOSURE_BIAS,
                                     V4L2_CID_EXPOSURE_METERING,
                                     V4L2_CID_IRIS_ABSOLUTE,
                                     V4L2_CID_IRIS_RELATIVE,
                                     V4L2_CID_ISO_SENSITIVITY,
                                     V4L2_CID_ISO_SENSITIVITY_AUTO,
                                     V4L2_CID_WIDE_DYNAMIC_RANGE,
                                     V4L2_CID_SCENE_MODE,
                                     V4L2_CID_GAIN,
                                     V4L2_CID_AUTOGAIN,
                                     V4L2_CID_ANALOGUE_GAIN,
                                     V4L2_CID_DIGITAL_GAIN,
                                     V4L2_CID_BACKLIGHT_COMPENSATION,
                                     V4L2_CID_POWER_LINE_FREQUENCY};
constexpr uint32_t kColourIDs[] = {V4L2_CID_SATURATION,
                                   V4L2_CID_HUE,
                                   V4L2_CID_HUE_AUTO,
                                   V4L2_CID_AUTO_WHITE_BALANCE,
                                   V4L2_CID_AUTO_N_PRESET_WHITE_BALANCE,
                                   V4L2_CID_WHITE_BALANCE_TEMPERATURE,
                                   V4L2_CID_DO_WHITE_BALANCE,
                                   V4L2_CID_RED_BALANCE,
                                   V4L2_CID_BLUE_BALANCE,
                                   V4L2_CID_COLORFX,
                                   V4L2_CID_COLOR_KILLER,
                                   V4L2_CID_CHROMA_AGC,
                                   V4L2_CID_CHROMA_GAIN};
constexpr uint32_t kFocusIDs[] = {V4L2_CID_FOCUS_ABSOLUTE,  V4L2_CID_FOCUS_RELATIVE,
                                  V4L2_CID_FOCUS_AUTO,      V4L2_CID_AUTO_FOCUS_START,
                                  V4L2_CID_AUTO_FOCUS_STOP, V4L2_CID_AUTO_FOCUS_RANGE};
constexpr uint32_t kPictureIDs[] = {
    V4L2_CID_BRIGHTNESS, V4L2_CID_AUTOBRIGHTNESS, V4L2_CID_CONTRAST,
    V4L2_CID_SHARPNESS,  V4L2_CID_GAMMA,          V4L2_CID_HFLIP,
    V4L2_CID_VFLIP,      V4L2_CID_ROTATE,         V4L2_CID_BAND_STOP_FILTER};
/// Drivers mark few of them as such.
constexpr uint32_t kModeIDs[] = {V4L2_CID_EXPOSURE_AUTO,
                                 V4L2_CID_AUTOGAIN,
                                 V4L2_CID_AUTO_WHITE_BALANCE,
                                 V4L2_CID_AUTO_N_PRESET_WHITE_BALANCE,
                                 V4L2_CID_HUE_AUTO,
                                 V4L2_CID_FOCUS_AUTO,
                                 V4L2_CID_AUTOBRIGHTNESS,
                                 V4L2_CID_CHROMA_AGC,
                                 V4L2_CID_ISO_SENSITIVITY_AUTO,
                                 V4L2_CID_SCENE_MODE};

template <size_t Count>
bool isOneOf(const uint32_t (&ids)[Count], uint32_t id) {
  return std::ranges::find(ids, id) != std::end(ids);
}

ControlGroup groupOf(uint32_t id) {
  if (isOneOf(kExposureIDs, id)) return ControlGroup::Exposure;
  if (isOneOf(kColourIDs, id)) return ControlGroup::Colour;
  if (isOneOf(kFocusIDs, id)) return ControlGroup::Focus;
  if (isOneOf(kPictureIDs, id)) return ControlGroup::Picture;
  return ControlGroup::Other;
}

std::optional<ControlKind> kindOf(uint32_t type) {
  switch (type) {
    case V4L2_CTRL_TYPE_INTEGER: return ControlKind::Number;
    case V4L2_CTRL_TYPE_BOOLEAN: return ControlKind::Switch;
    case V4L2_CTRL_TYPE_MENU:
    case V4L2_CTRL_TYPE_INTEGER_MENU: return ControlKind::Menu;
    case V4L2_CTRL_TYPE_BUTTON: return ControlKind::Button;
    default: return std::nullopt;  // texts, bit masks, structures and what has 64 bits
  }
}

template <typename Char, size_t Size>
std::string textOf(const Char (&text)[Size]) {
  const auto* chars = reinterpret_cast<const char*>(text);
  return printableText({chars, ::strnlen(chars, Size)});
}

bool canBeSetBy(uint32_t flags) {
  return !(flags & (V4L2_CTRL_FLAG_INACTIVE | V4L2_CTRL_FLAG_GRABBED | V4L2_CTRL_FLAG_READ_ONLY));
}

int choices(const VideoNode& node, const v4l2_query_ext_ctrl& query, CameraControl& control) {
  const int64_t last = std::min<int64_t>(query.maximum, query.minimum + kMostChoices - 1);
  for (int64_t index = query.minimum; index <= last; ++index) {
    v4l2_querymenu entry{};
    entry.id = query.id;
    entry.index = uint32_t(index);
    const int error = node.ioctl(VIDIOC_QUERYMENU, &entry);
    if (error == EINVAL) continue;  // menus have gaps
    if (error != 0) return error;
    const int64_t number = entry.value;  // a copy: it lies unaligned
    control.choices.push_back({int32_t(index), query.type == V4L2_CTRL_TYPE_INTEGER_MENU
                                                   ? fmt::format("{}", number)
                                                   : textOf(entry.name)});
  }
  return 0;
}

v4l2_ext_controls oneControl(v4l2_ext_control& control) {
  v4l2_ext_controls controls{};
  controls.which = V4L2_CTRL_WHICH_CUR_VAL;
  controls.count = 1;
  controls.controls = &control;
  return controls;
}

}  // namespace

int queryControls(const VideoNode& node, std::vector<CameraControl>& controls) {
  controls.clear();
  uint32_t last = 0;
  for (int count = 0; count < kMostControls; ++count) {
    v4l2_query_ext_ctrl query{};
    query.id = last | V4L2_CTRL_FLAG_NEXT_CTRL;
    const int error = node.ioctl(VIDIOC_QUERY_EXT_CTRL, &query);
    if (error == EINVAL || error == ENOTTY) return 0;  // the end, or no controls at all
    if (error != 0) return error;
    if (query.id <= last) return 0;
    last = query.id;
    const auto kind = kindOf(query.type);
    if (!kind || (query.flags & V4L2_CTRL_FLAG_DISABLED)) continue;
    CameraControl control{
        .id = query.id,
        .name = textOf(query.name),
        .kind = *kind,
        .group = groupOf(query.id),
        .minimum = int32_t(query.minimum),
        .maximum = int32_t(query.maximum),
        .step = int32_t(std::clamp<uint64_t>(query.step, 1, std::numeric_limits<int32_t>::max())),
        .defaultValue = int32_t(query.default_value),
        .value = int32_t(query.default_value),
        .choices = {},
        .canBeSet = canBeSetBy(query.flags),
        .isMode = isOneOf(kModeIDs, query.id) || (query.flags & V4L2_CTRL_FLAG_UPDATE) != 0};
    if (*kind == ControlKind::Menu) {
      if (const int menuError = choices(node, query, control)) return menuError;
    }
    if (*kind != ControlKind::Button && !(query.flags & V4L2_CTRL_FLAG_WRITE_ONLY)) {
      v4l2_ext_control value{};
      value.id = query.id;
      v4l2_ext_controls request = oneControl(value);
      const int valueError = node.ioctl(VIDIOC_G_EXT_CTRLS, &request);
      if (classify(valueError) == DriverError::Gone) return valueError;
      if (valueError == 0) control.value = value.value;
    }
    controls.push_back(std::move(control));
  }
  return 0;
}

int setControl(const VideoNode& node, ControlValue& value) {
  v4l2_query_ext_ctrl query{};
  query.id = value.id;
  if (const int error = node.ioctl(VIDIOC_QUERY_EXT_CTRL, &query)) return error;
  // Some drivers take it all the same, and then show it only when the mode is left.
  if (!canBeSetBy(query.flags)) return EACCES;
  v4l2_ext_control control{};
  control.id = value.id;
  control.value = value.value;
  v4l2_ext_controls request = oneControl(control);
  const int error = node.ioctl(VIDIOC_S_EXT_CTRLS, &request);
  if (error == 0) value.value = control.value;
  return error;
}

}  // namespace tessary
