#pragma once
// Which attached cameras count as microscopes, what resolutions each offers, and which of them is
// preselected.

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "capture/MicroscopeInfo.h"
#include "platform/CaptureSystem.h"

namespace tessary {

using ResolutionList = std::vector<std::shared_ptr<Resolution>>;

/// Which cameras count as microscopes.
enum class Eligible {
  Microscopes,  ///< USB cameras of the numbers that isVidPidValid() knows.
  /// Every camera that sends something that can be decoded, USB or not. One that this user may not
  /// ask counts too, so that choosing it tells why.
  AnyCamera,
};

/// Appends every microscope present to `array`, in the platform's order. Logs each camera,
/// microscope or not.
void getAllDevices(CaptureSystem& system, MicroscopeList& array,
                   Eligible eligible = Eligible::Microscopes);

/// Reads the USB numbers out of "UVC Camera VendorID_1374 ProductID_41312". False for a text of
/// another form, one of 100 characters or more and one that is not ASCII; the outputs then stay as
/// they are. A number without digits reads as 0, and what follows the digits is ignored.
bool parseModelID(std::string_view modelID, int32_t& vid, int32_t& pid);

/// Whether a USB camera of these numbers is a microscope.
bool isVidPidValid(int32_t vid, int32_t pid);

/// Fills `array` with what `device` offers: one pixel format, ascending in size.
void getDeviceResolutions(const CaptureDevice& device, ResolutionList& array);
/// The same without the limits on size and format, for a camera that offers nothing within them: of
/// several formats it keeps the first by type code.
void getAllResolutions(const CaptureDevice& device, ResolutionList& array);
/// Appends a resolution unless it is smaller than 320x240 or already there.
void addDeviceResolution(ResolutionList& array, uint32_t type, int32_t width, int32_t height);
/// Sorts by type code, then by pixel count.
void sortDeviceResolutions(ResolutionList& array);
/// Leaves one pixel format: of several 'dmb1', or else 'yuvs'. A single one stays whatever it is.
void cleanUpDeviceResolutions(ResolutionList& array);
/// The middle of `array`, or the lower of the two middles. Null if it is empty.
std::shared_ptr<Resolution> getDefResolution(const ResolutionList& array);

}  // namespace tessary
