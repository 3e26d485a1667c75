#include "capture/MicroscopeRules.h"

#include <algorithm>
#include <utility>

#include "base/FourCharCode.h"
#include "base/Log.h"
#include "base/Number.h"

namespace tessary {
namespace {

constexpr size_t kModelIDBufferSize = 100;  // with the zero at the end
constexpr std::string_view kModelIDPrefix = "UVC Camera ";
constexpr std::string_view kVendorPrefix = "VendorID_";
constexpr std::string_view kProductPrefix = "ProductID_";

constexpr int32_t kVendor = 0x055E;
constexpr int32_t kFirstProduct = 0xA160;
constexpr int32_t kLastProduct = 0xA19B;

constexpr int32_t kMinWidth = 320;
constexpr int32_t kMinHeight = 240;

bool isASCII(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return uint8_t(c) < 0x80; });
}

/// Numbers are read at 64 bits and cut to 32.
int32_t number(std::string_view text) { return int32_t(uint64_t(int64Value(text))); }

/// Wraps at 32 bits.
int32_t pixelCount(const Resolution& resolution) {
  return int32_t(uint32_t(resolution.width) * uint32_t(resolution.height));
}

bool isMicroscope(const CaptureDevice& device, MicroscopeInfo& info) {
  return device.transportType() == kTransportTypeUSB && device.hasVideo() &&
         parseModelID(device.modelID(), info.vid, info.pid) && isVidPidValid(info.vid, info.pid);
}

bool isCamera(const CaptureDevice& device) {
  return device.hasVideo() && (!device.formatsAreKnown() || !device.formats().empty());
}

void addNewResolution(ResolutionList& array, const Resolution& added) {
  // Formats that differ only in frame rate collapse.
  if (std::ranges::any_of(array, [&](const auto& present) { return *present == added; })) return;
  array.push_back(std::make_shared<Resolution>(added));
}

}  // namespace

void getAllDevices(CaptureSystem& system, MicroscopeList& array, Eligible eligible) {
  for (const auto& device : system.devices()) {
    log("modelID:{}", device->modelID());
    log("uniqueID:{}", device->uniqueID());
    log("localizedName:{}", device->localizedName());
    log("manufacturer:{}", device->manufacturer());
    const auto info = std::make_shared<MicroscopeInfo>();
    // Asked either way: it fills in the numbers.
    const bool counts =
        isMicroscope(*device, *info) || (eligible == Eligible::AnyCamera && isCamera(*device));
    if (!counts) continue;
    info->uniqueID = device->uniqueID();
    info->name = device->localizedName();
    getDeviceResolutions(*device, info->resolutions);
    if (eligible == Eligible::AnyCamera && info->resolutions.empty())
      getAllResolutions(*device, info->resolutions);
    info->defResolution = getDefResolution(info->resolutions);
    array.push_back(info);
  }
}

bool parseModelID(std::string_view modelID, int32_t& vid, int32_t& pid) {
  if (modelID.size() >= kModelIDBufferSize || !isASCII(modelID)) return false;
  if (!modelID.starts_with(kModelIDPrefix)) return false;
  const std::string_view numbers = modelID.substr(kModelIDPrefix.size());
  if (!numbers.starts_with(kVendorPrefix)) return false;
  const size_t blank = numbers.find(' ');
  if (blank == std::string_view::npos) return false;
  const std::string_view vendor = numbers.substr(0, blank);
  const std::string_view product = numbers.substr(blank + 1);
  if (!product.starts_with(kProductPrefix)) return false;
  vid = number(vendor.substr(kVendorPrefix.size()));
  pid = number(product.substr(kProductPrefix.size()));
  return true;
}

bool isVidPidValid(int32_t vid, int32_t pid) {
  return vid == kVendor && pid >= kFirstProduct && pid <= kLastProduct;
}

void getDeviceResolutions(const CaptureDevice& device, ResolutionList& array) {
  array.clear();
  for (const CaptureFormat& format : device.formats())
    addDeviceResolution(array, format.mediaSubType, format.width, format.height);
  sortDeviceResolutions(array);
  cleanUpDeviceResolutions(array);
}

void getAllResolutions(const CaptureDevice& device, ResolutionList& array) {
  array.clear();
  for (const CaptureFormat& format : device.formats())
    addNewResolution(array, {format.mediaSubType, format.width, format.height});
  sortDeviceResolutions(array);
  std::erase_if(array, [kept = array.empty() ? 0 : array.front()->type](const auto& resolution) {
    return resolution->type != kept;
  });
}

void addDeviceResolution(ResolutionList& array, uint32_t type, int32_t width, int32_t height) {
  if (width < kMinWidth || height < kMinHeight) return;
  addNewResolution(array, {type, width, height});
}

void sortDeviceResolutions(ResolutionList& array) {
  std::ranges::stable_sort(array, {}, [](const auto& resolution) {
    return std::pair(resolution->type, pixelCount(*resolution));
  });
}

void cleanUpDeviceResolutions(ResolutionList& array) {
  const auto isOfType = [](uint32_t type) {
    return [type](const auto& resolution) { return resolution->type == type; };
  };
  if (array.empty() || std::ranges::all_of(array, isOfType(array.front()->type))) return;
  // Meant: 'yuvs' is kept by default and not because it is there, so that a device with several
  // types of which neither can be used ends with nothing.
  const uint32_t kept = std::ranges::any_of(array, isOfType(kMediaSubTypeMJPEG))
                            ? kMediaSubTypeMJPEG
                            : kMediaSubTypeYUYV;
  std::erase_if(array, [kept](const auto& resolution) { return resolution->type != kept; });
}

std::shared_ptr<Resolution> getDefResolution(const ResolutionList& array) {
  return array.empty() ? nullptr : array[(array.size() - 1) / 2];
}

}  // namespace tessary
