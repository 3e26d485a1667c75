#include "simulated/Optics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include <libyuv.h>

namespace tessary {
namespace {

constexpr int32_t kAutomatic = 0;
constexpr int32_t kManual = 1;
constexpr int32_t kUsualExposure = 100;
constexpr int32_t kUsualContrast = 100;
constexpr int32_t kSharp = 120;
constexpr int32_t kMidGrey = 128;
/// How far out of focus takes one more pixel of blur, in a picture of 640 pixels' width.
constexpr int32_t kFocusPerPixel = 12;

CameraControl number(uint32_t id, const char* name, ControlGroup group, int32_t minimum,
                     int32_t maximum, int32_t step, int32_t usual) {
  return {.id = id,
          .name = name,
          .group = group,
          .minimum = minimum,
          .maximum = maximum,
          .step = step,
          .defaultValue = usual,
          .value = usual};
}

std::vector<CameraControl> controlsAtFirst() {
  using enum ControlGroup;
  CameraControl mode =
      number(Optics::kExposureMode, "Auto Exposure", Exposure, kAutomatic, kManual, 1, kAutomatic);
  mode.kind = ControlKind::Menu;
  mode.choices = {{kAutomatic, "Automatic"}, {kManual, "Manual"}};
  mode.isMode = true;
  CameraControl autoFocus = number(Optics::kAutoFocus, "Autofocus", Focus, 0, 1, 1, 1);
  autoFocus.kind = ControlKind::Switch;
  autoFocus.isMode = true;
  CameraControl focusOnce = number(Optics::kFocusOnce, "Focus Once", Focus, 0, 0, 1, 0);
  focusOnce.kind = ControlKind::Button;
  return {mode,
          number(Optics::kExposureTime, "Exposure Time", Exposure, 5, 500, 5, kUsualExposure),
          number(Optics::kBrightness, "Brightness", Picture, -64, 64, 1, 0),
          number(Optics::kContrast, "Contrast", Picture, 0, 200, 1, kUsualContrast),
          autoFocus,
          number(Optics::kFocus, "Focus", Focus, 0, 250, 2, kSharp),
          focusOnce};
}

/// For each of a pixel's four bytes, what becomes of its value.
std::array<uint8_t, 1024> tones(int32_t exposure, int32_t contrast, int32_t brightness) {
  std::array<uint8_t, 1024> table{};
  for (size_t value = 0; value < 256; ++value) {
    const double lit = double(value) * exposure / kUsualExposure;
    const double tone = (lit - kMidGrey) * contrast / kUsualContrast + kMidGrey + brightness;
    const auto byte = uint8_t(std::clamp(std::lround(tone), 0L, 255L));
    for (size_t channel = 0; channel < 3; ++channel) table[value * 4 + channel] = byte;
    table[value * 4 + 3] = 255;
  }
  return table;
}

std::shared_ptr<PixelBuffer> blurred(const PixelBuffer& picture, int32_t radius,
                                     PixelBufferPool& pool) {
  const TextureSize size = picture.size();
  auto result = pool.take(size);
  std::vector<int32_t> sums(size_t(size.width) * 4 * size_t(radius * 2 + 2));
  libyuv::ARGBBlur(picture.data(), int(picture.bytesPerRow()), result->data(),
                   int(result->bytesPerRow()), sums.data(), size.width * 4, size.width, size.height,
                   radius);
  return result;
}

}  // namespace

Optics::Optics() : controls_(controlsAtFirst()) { updateRuled(); }

std::vector<CameraControl> Optics::controls() const {
  const std::lock_guard lock(mutex_);
  return controls_;
}

bool Optics::set(ControlValue wanted) {
  {
    const std::lock_guard lock(mutex_);
    if (wanted.id == 0 || wanted.id > controls_.size()) return false;
    CameraControl& changed = control(wanted.id);
    if (!changed.canBeSet) return false;
    if (wanted.id == kFocusOnce) {
      control(kFocus).value = kSharp;
    } else {
      if (wanted.value < changed.minimum || wanted.value > changed.maximum) return false;
      changed.value = wanted.value - (wanted.value - changed.minimum) % changed.step;
    }
    updateRuled();
  }
  if (changed_) changed_();
  return true;
}

void Optics::updateRuled() {
  control(kExposureTime).canBeSet = control(kExposureMode).value == kManual;
  control(kFocus).canBeSet = control(kFocusOnce).canBeSet = control(kAutoFocus).value == 0;
}

std::shared_ptr<PixelBuffer> Optics::seen(std::shared_ptr<PixelBuffer> picture,
                                          PixelBufferPool& pool) const {
  int32_t exposure = kUsualExposure;
  int32_t contrast = 0;
  int32_t brightness = 0;
  int32_t outOfFocus = 0;
  {
    const std::lock_guard lock(mutex_);
    if (control(kExposureMode).value == kManual) exposure = control(kExposureTime).value;
    contrast = control(kContrast).value;
    brightness = control(kBrightness).value;
    if (control(kAutoFocus).value == 0) outOfFocus = std::abs(control(kFocus).value - kSharp);
  }
  const TextureSize size = picture->size();
  const int32_t radius = outOfFocus * size.width / (640 * kFocusPerPixel);
  if (radius > 0) picture = blurred(*picture, radius, pool);
  if (radius > 0 || exposure != kUsualExposure || contrast != kUsualContrast || brightness != 0) {
    const auto table = tones(exposure, contrast, brightness);
    libyuv::ARGBColorTable(picture->data(), int(picture->bytesPerRow()), table.data(), 0, 0,
                           size.width, size.height);
  }
  return picture;
}

}  // namespace tessary
