#include "linux/V4l2CaptureDevice.h"

#include <algorithm>
#include <utility>

namespace tessary {

V4l2CaptureDevice::V4l2CaptureDevice(Description description)
    : description_(std::move(description)) {
  formats_.reserve(description_.formats.size());
  for (const VideoFormat& format : description_.formats) formats_.push_back(format.format);
  if (description_.defaultFormat) inForce_ = WantedVideo{*description_.defaultFormat};
  pending_ = inForce_;
}

bool V4l2CaptureDevice::lockForConfiguration() {
  const std::lock_guard lock(mutex_);
  locked_ = true;
  return true;
}

void V4l2CaptureDevice::unlockForConfiguration() {
  const std::lock_guard lock(mutex_);
  locked_ = false;
  putIntoForce();
}

void V4l2CaptureDevice::setActiveFormat(const CaptureFormat& format) {
  const auto& offered = description_.formats;
  const auto found = std::find_if(offered.begin(), offered.end(), [&](const VideoFormat& f) {
    return f.format.mediaSubType == format.mediaSubType && f.format.width == format.width &&
           f.format.height == format.height;
  });
  if (found == offered.end()) return;
  const std::lock_guard lock(mutex_);
  pending_ = WantedVideo{*found};
  if (!locked_) putIntoForce();
}

CaptureFormat V4l2CaptureDevice::activeFormat() const {
  const std::lock_guard lock(mutex_);
  return pending_ ? pending_->format.format : CaptureFormat{};
}

void V4l2CaptureDevice::setActiveVideoMinFrameDuration(Fraction duration) {
  const std::lock_guard lock(mutex_);
  if (!pending_) return;
  pending_->minFrameDuration = duration;
  if (!locked_) putIntoForce();
}

V4l2CaptureDevice::Configuration V4l2CaptureDevice::configuration() const {
  const std::lock_guard lock(mutex_);
  return {inForce_, locked_, serial_};
}

uint64_t V4l2CaptureDevice::configurationSerial() const {
  const std::lock_guard lock(mutex_);
  return serial_;
}

void V4l2CaptureDevice::attach(WakeUp& wakeUp) {
  const std::lock_guard lock(mutex_);
  stream_ = &wakeUp;
}

void V4l2CaptureDevice::detach(WakeUp& wakeUp) {
  const std::lock_guard lock(mutex_);
  if (stream_ == &wakeUp) stream_ = nullptr;
}

void V4l2CaptureDevice::putIntoForce() {
  inForce_ = pending_;
  ++serial_;
  if (stream_) stream_->signal();
}

}  // namespace tessary
