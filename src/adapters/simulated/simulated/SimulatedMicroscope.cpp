#include "simulated/SimulatedMicroscope.h"

#include <algorithm>
#include <utility>

#include "base/FourCharCode.h"

namespace tessary {
namespace {

constexpr Fraction kShortest{1, 30};
constexpr Fraction kLongest{1, 5};

std::vector<CaptureFormat> offeredFormats(std::span<const uint32_t> mediaSubTypes) {
  std::vector<CaptureFormat> formats;
  for (const uint32_t mediaSubType : mediaSubTypes) {
    for (const auto& [width, height] : {std::pair(640, 480), {1280, 720}, {1920, 1080}}) {
      formats.push_back({mediaSubType, width, height, {{kShortest, kLongest}}});
    }
  }
  return formats;
}

bool isLonger(Fraction a, Fraction b) {
  return uint64_t(a.numerator) * b.denominator > uint64_t(b.numerator) * a.denominator;
}

}  // namespace

SimulatedMicroscope::SimulatedMicroscope(std::span<const uint32_t> mediaSubTypes)
    : formats_(offeredFormats(mediaSubTypes)),
      inForce_{formats_.front(), kShortest, 0},
      wanted_(inForce_) {}

std::string SimulatedMicroscope::modelID() const {
  return "UVC Camera VendorID_1374 ProductID_41312";
}

std::string SimulatedMicroscope::uniqueID() const { return "simulated-microscope"; }

std::string SimulatedMicroscope::localizedName() const { return "Simulated Microscope"; }

std::string SimulatedMicroscope::manufacturer() const { return "Tessary"; }

std::string SimulatedMicroscope::serialNumber() const { return "S1"; }

uint32_t SimulatedMicroscope::transportType() const { return kTransportTypeUSB; }

bool SimulatedMicroscope::lockForConfiguration() { return isConnected(); }

void SimulatedMicroscope::unlockForConfiguration() {
  {
    const std::lock_guard lock(mutex_);
    wanted_.revision = inForce_.revision + 1;
    inForce_ = wanted_;
  }
  changed_.notify_all();
}

void SimulatedMicroscope::setActiveFormat(const CaptureFormat& format) {
  if (std::find(formats_.begin(), formats_.end(), format) == formats_.end()) return;
  const std::lock_guard lock(mutex_);
  wanted_.format = format;
  wanted_.frameDuration = kShortest;
}

CaptureFormat SimulatedMicroscope::activeFormat() const {
  const std::lock_guard lock(mutex_);
  return wanted_.format;
}

void SimulatedMicroscope::setActiveVideoMinFrameDuration(Fraction duration) {
  if (duration.denominator == 0 || isLonger(kShortest, duration)) duration = kShortest;
  if (isLonger(duration, kLongest)) duration = kLongest;
  const std::lock_guard lock(mutex_);
  wanted_.frameDuration = duration;
}

SimulatedMicroscope::Setting SimulatedMicroscope::setting() const {
  const std::lock_guard lock(mutex_);
  return inForce_;
}

bool SimulatedMicroscope::isConnected() const {
  const std::lock_guard lock(mutex_);
  return connected_;
}

void SimulatedMicroscope::wait(const std::stop_token& stop, uint64_t revision, TimePoint deadline) {
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, stop, deadline,
                      [&] { return !connected_ || inForce_.revision != revision; });
}

std::unique_ptr<FrameLoop> SimulatedMicroscope::takeFrames(const CaptureFormat& format) {
  const std::lock_guard lock(mutex_);
  if (!frames_ || frames_->format() != format) return nullptr;
  return std::move(frames_);
}

void SimulatedMicroscope::keepFrames(std::unique_ptr<FrameLoop> frames) {
  const std::lock_guard lock(mutex_);
  frames_.swap(frames);
}

bool SimulatedMicroscope::takeDamage() {
  const std::lock_guard lock(mutex_);
  if (framesToDamage_ == 0) return false;
  --framesToDamage_;
  return true;
}

void SimulatedMicroscope::sendUnlessFrozen(const std::function<void()>& send) {
  const std::lock_guard sending(sending_);
  {
    const std::lock_guard lock(mutex_);
    if (std::chrono::steady_clock::now() < frozenUntil_) return;
  }
  send();
}

void SimulatedMicroscope::countDroppedFrame() {
  const std::lock_guard lock(mutex_);
  ++droppedFrames_;
}

void SimulatedMicroscope::disconnect() {
  {
    const std::lock_guard lock(mutex_);
    connected_ = false;
  }
  changed_.notify_all();
}

void SimulatedMicroscope::damageNext(int frames) {
  const std::lock_guard lock(mutex_);
  framesToDamage_ = std::max(frames, 0);
}

void SimulatedMicroscope::freeze(std::chrono::milliseconds time) {
  {
    const std::lock_guard lock(mutex_);
    frozenUntil_ = std::chrono::steady_clock::now() + time;
  }
  const std::lock_guard sent(sending_);
}

uint64_t SimulatedMicroscope::droppedFrames() const {
  const std::lock_guard lock(mutex_);
  return droppedFrames_;
}

}  // namespace tessary
