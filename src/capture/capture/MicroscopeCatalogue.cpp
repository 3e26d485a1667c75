#include "capture/MicroscopeCatalogue.h"

#include <algorithm>

namespace tessary {
namespace {

auto hasUniqueIDOf(const MicroscopeInfo& info) {
  return [&info](const auto& other) { return other->uniqueID == info.uniqueID; };
}

}  // namespace

void MicroscopeCatalogue::InitializeMicroscopes() {
  microscopes_.clear();
  getAllDevices(system_, microscopes_, eligible_);
}

std::shared_ptr<MicroscopeInfo> MicroscopeCatalogue::onMicroscopeConnected() {
  MicroscopeList present;
  getAllDevices(system_, present, eligible_);
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
  getAllDevices(system_, present, eligible_);
  std::shared_ptr<MicroscopeInfo> disconnected;
  for (size_t i = microscopes_.size(); i-- > 0;) {
    const auto info = microscopes_[i];
    if (std::ranges::any_of(present, hasUniqueIDOf(*info))) continue;
    microscopes_.erase(microscopes_.begin() + std::ptrdiff_t(i));
    disconnected = info;
  }
  return disconnected;
}

}  // namespace tessary
