#include "capture/CameraControlBoard.h"

#include <algorithm>

#include "base/Log.h"

namespace tessary {
namespace {

std::string identityOf(const CaptureDevice& camera) {
  return camera.modelID() + " " + camera.serialNumber();
}

bool hasChoice(const CameraControl& control, int32_t value) {
  return std::ranges::any_of(
      control.choices, [value](const ControlChoice& choice) { return choice.value == value; });
}

/// The nearest that `control` has. Of a menu every value is taken for one.
int32_t nearestValue(const CameraControl& control, int32_t value) {
  const int64_t steps = (int64_t(std::clamp(value, control.minimum, control.maximum)) -
                         control.minimum + control.step / 2) /
                        control.step;
  const int64_t mostSteps = (int64_t(control.maximum) - control.minimum) / control.step;
  return int32_t(control.minimum + std::min(steps, mostSteps) * control.step);
}

bool hasValue(const CameraControl& control, int32_t value) {
  switch (control.kind) {
    case ControlKind::Button: return false;
    case ControlKind::Menu: return hasChoice(control, value);
    default: return value >= control.minimum && value <= control.maximum;
  }
}

}  // namespace

void CameraControlBoard::cameraDidOpen(const std::shared_ptr<CaptureDevice>& camera) {
  cameraDidClose();
  if (!camera) return;
  camera_ = camera;
  kept_ = remembered_.values(identityOf(*camera_));
  if (!kept_.empty() || changed_) beginReading();
  tell();
}

void CameraControlBoard::cameraDidClose() {
  if (!camera_) return;
  keepChanges();
  source_.reset();
  camera_ = nullptr;
  isRead_ = false;
  controls_.clear();
  asked_.clear();
  puttingBack_.clear();
  kept_.clear();
  tell();
}

void CameraControlBoard::setObserver(std::function<void()> changed) {
  changed_ = std::move(changed);
  if (changed_ && camera_ && !source_) beginReading();
}

void CameraControlBoard::beginReading() {
  source_ = system_.makeControls(
      camera_, [this](const CameraControls::Report& report) { controlsDidReport(report); });
}

void CameraControlBoard::controlsDidReport(const CameraControls::Report& report) {
  std::vector<CameraControl> now = report.controls;
  for (CameraControl& control : now) {
    // A slider that is dragged is ahead of the camera.
    const auto asked = asked_.find(control.id);
    if (asked == asked_.end() || asked->second <= report.request) continue;
    if (const CameraControl* here = find(control.id)) control.value = here->value;
  }
  const bool isNew = !isRead_ || now != controls_;
  controls_ = std::move(now);
  std::ranges::for_each(report.taken, [this](const ControlValue& taken) { note(taken); });
  if (!isRead_) {
    isRead_ = true;
    giveBack();
  }
  if (isNew) tell();
}

void CameraControlBoard::note(const ControlValue& taken) {
  const CameraControl* control = find(taken.id);
  if (!control || control->kind == ControlKind::Button) return;
  if (puttingBack_.contains(taken.id)) {
    isChanged_ = kept_.erase(taken.id) > 0 || isChanged_;
    return;
  }
  const auto kept = kept_.find(taken.id);
  if (kept != kept_.end() && kept->second == taken.value) return;
  kept_[taken.id] = taken.value;
  isChanged_ = true;
}

void CameraControlBoard::giveBack() {
  std::vector<ControlValue> values;
  // Modes first: they decide what else can be set.
  for (const bool modes : {true, false}) {
    for (const auto& [id, value] : kept_) {
      const CameraControl* control = find(id);
      if (!control || !hasValue(*control, value)) {
        if (modes) log("Remembered control {:#x}: the camera does not have {} any more", id, value);
      } else if (control->isMode == modes) {
        values.push_back({id, value});
      }
    }
  }
  ask(values);
}

void CameraControlBoard::set(uint32_t id, int32_t value) {
  const CameraControl* control = find(id);
  if (!control || !control->canBeSet || control->kind == ControlKind::Button) return;
  if (control->kind != ControlKind::Menu)
    value = nearestValue(*control, value);
  else if (!hasChoice(*control, value))
    return;
  // Told all the same: what was typed may have been another value.
  if (value == control->value) return tell();
  puttingBack_.erase(id);
  ask(std::vector{ControlValue{id, value}});
  tell();
}

void CameraControlBoard::press(uint32_t id) {
  const CameraControl* control = find(id);
  if (!control || !control->canBeSet || control->kind != ControlKind::Button) return;
  ask(std::vector{ControlValue{id, 1}});
}

void CameraControlBoard::setDefault(uint32_t id) {
  const CameraControl* control = find(id);
  if (!control || !control->canBeSet || control->kind == ControlKind::Button) return;
  puttingBack_.insert(id);
  ask(std::vector{ControlValue{id, control->defaultValue}});
  tell();
}

void CameraControlBoard::setAllDefaults() {
  std::vector<ControlValue> values;
  const auto add = [&](auto belongs) {
    for (const CameraControl& control : controls_) {
      if (control.kind != ControlKind::Button && belongs(control))
        values.push_back({control.id, control.defaultValue});
    }
  };
  const bool modesChange = std::ranges::any_of(controls_, [](const CameraControl& control) {
    return control.isMode && control.value != control.defaultValue;
  });
  // What can be set now may no longer be once the modes are back, and the other way round.
  add([](const CameraControl& control) { return !control.isMode && control.canBeSet; });
  add([](const CameraControl& control) { return control.isMode; });
  if (modesChange)
    add([](const CameraControl& control) { return !control.isMode && !control.canBeSet; });
  for (const ControlValue& value : values) puttingBack_.insert(value.id);
  isChanged_ = isChanged_ || !kept_.empty();
  kept_.clear();
  ask(values);
  tell();
}

void CameraControlBoard::ask(std::span<const ControlValue> values) {
  if (values.empty() || !source_) return;
  const uint64_t request = source_->set(values);
  for (const ControlValue& value : values) {
    asked_[value.id] = request;
    if (CameraControl* control = find(value.id)) control->value = value.value;
  }
}

void CameraControlBoard::keepChanges() {
  if (!camera_ || !isChanged_) return;
  isChanged_ = false;
  remembered_.setValues(identityOf(*camera_), kept_);
}

CameraControl* CameraControlBoard::find(uint32_t id) {
  const auto found = std::ranges::find(controls_, id, &CameraControl::id);
  return found == controls_.end() ? nullptr : &*found;
}

void CameraControlBoard::tell() const {
  // A copy: who is told may go.
  if (const auto changed = changed_) changed();
}

}  // namespace tessary
