#include "capture/MicroscopeCatalogue.h"

#include <algorithm>

#include "capture/MicroscopeRules.h"

namespace tessary {
namespace {

/// Whether two entries describe the same connection of one device. A microscope that is pulled and
/// put back before the event loop turns is present in every enumeration, but its open stream is
/// dead: it has to leave the list for its session to be ended and begun again.
bool isSameConnection(const MicroscopeInfo& a, const MicroscopeInfo& b) {
  const auto isSame = [](const auto& left, const auto& right) {
    return !left.owner_before(right) && !right.owner_before(left);
  };
  const std::weak_ptr<CaptureDevice> unknown;
  if (isSame(a.device_, unknown) || isSame(b.device_, unknown)) return true;
  return isSame(a.device_, b.device_);
}

auto hasUniqueIDOf(const MicroscopeInfo& info) {
  return [&info](const auto& other) { return other->uniqueID == info.uniqueID; };
}

}  // namespace

void MicroscopeCatalogue::InitializeMicroscopes() {
  microscopes_.clear();
  getAllDevices(system_, microscopes_);
}

std::shared_ptr<MicroscopeInfo> MicroscopeCatalogue::onMicroscopeConnected() {
  MicroscopeList present;
  getAllDevices(system_, present);
  std::shared_ptr<MicroscopeInfo> connected;
  for (const auto& info : present) {
    if (std::ranges::any_of(microscopes_, hasUniqueIDOf(*info))) continue;
    microscopes_.push_back(info);
    connected = info;
  }
  return connected;
}

std::shared_ptr<MicroscopeInfo> MicroscopeCatalogue::onMicroscopeDisconnected() {
  MicroscopeList present;
  getAllDevices(system_, present);
  std::shared_ptr<MicroscopeInfo> disconnected;
  for (size_t i = microscopes_.size(); i-- > 0;) {
    const auto info = microscopes_[i];
    const auto found = std::ranges::find_if(present, hasUniqueIDOf(*info));
    if (found != present.end() && isSameConnection(**found, *info)) continue;
    microscopes_.erase(microscopes_.begin() + std::ptrdiff_t(i));
    disconnected = info;
  }
  return disconnected;
}

}  // namespace tessary
