#pragma once

#include <memory>

#include "capture/MicroscopeInfo.h"
#include "capture/MicroscopeRules.h"
#include "platform/CaptureSystem.h"

namespace tessary {

/// Keeps a list of the connected microscopes up to date. It knows nothing of capture sessions: who
/// calls it reacts to what it reports. Main thread.
class MicroscopeCatalogue {
 public:
  /// Both must outlive the catalogue.
  MicroscopeCatalogue(CaptureSystem& system, MicroscopeList& microscopes,
                      Eligible eligible = Eligible::Microscopes)
      : system_(system), microscopes_(microscopes), eligible_(eligible) {}

  const MicroscopeList& microscopes() const { return microscopes_; }

  /// Empties the list and fills it with the microscopes present now.
  void InitializeMicroscopes();
  /// Adds all microscopes that are new. The last of them, or null if there is none.
  std::shared_ptr<MicroscopeInfo> onMicroscopeConnected();
  /// Removes all microscopes that are gone. The one of them nearest the start of the list, or null
  /// if there is none.
  std::shared_ptr<MicroscopeInfo> onMicroscopeDisconnected();

 private:
  CaptureSystem& system_;
  MicroscopeList& microscopes_;
  const Eligible eligible_;
};

}  // namespace tessary
