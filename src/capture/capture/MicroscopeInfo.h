#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Resolution.h"

namespace tessary {

/// One connected microscope, identified by `uniqueID`. A microscope that stays connected keeps its
/// object; one that leaves and returns gets a new one. Main thread.
class MicroscopeInfo {
 public:
  std::string uniqueID;  ///< The device's identifier, the key of all comparisons.
  std::string name;      ///< Shown to the user.
  int32_t vid = 0;       ///< USB vendor number.
  int32_t pid = 0;       ///< USB product number.
  /// One pixel format, ascending in size. Empty if the device offers nothing that is usable.
  std::vector<std::shared_ptr<Resolution>> resolutions;
  /// The preselected element of `resolutions`, null if that is empty.
  std::shared_ptr<Resolution> defResolution;
  /// The resolution in use. Set by the capture controller, which may share the object with the
  /// settings.
  std::shared_ptr<Resolution> currResolution;
};

using MicroscopeList = std::vector<std::shared_ptr<MicroscopeInfo>>;

/// The connected microscopes in the order in which they were found, new arrivals at the end.
extern MicroscopeList gMicroscopes;
/// The microscope whose session is wanted, or null. Set even while its session does not work, and
/// still set after the microscope has left the list, until the session is stopped.
extern std::shared_ptr<MicroscopeInfo> gCurrMicroscope;

}  // namespace tessary
