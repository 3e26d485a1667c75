#include "capture/CaptureController.h"

#include <string>
#include <utility>

#include <fmt/format.h>

#include "base/Log.h"
#include "base/ScaleType.h"

namespace tessary {
namespace {

constexpr const char* kQueueLabel = "com.quorvix.microscope.session";
constexpr uint32_t kFramesCapturedAtStart = 10;
constexpr int32_t kCancel = 0;
/// A camera takes up to two seconds to start.
constexpr int kSilentLooks = 3;

/// "dmb1 640x480". Bytes of the subtype that can't be shown become question marks.
std::string describe(const CaptureFormat& format) {
  std::string type;
  for (int32_t shift = 24; shift >= 0; shift -= 8) {
    const uint32_t byte = format.mediaSubType >> shift & 0xFF;
    type += byte >= 0x20 && byte < 0x7F ? char(byte) : '?';
  }
  return fmt::format("{} {}x{}", type, format.width, format.height);
}

/// Calls `token`'s block as long as it lives, also for an event that is already on its way when it
/// is let go.
auto weakly(const CaptureController::ObserverToken& token) {
  return [weak = std::weak_ptr(token)](const std::string& text = {}) {
    if (const auto block = weak.lock()) (*block)(text);
  };
}

template <typename Block>
CaptureController::ObserverToken makeObserver(Block block) {
  return std::make_shared<const std::function<void(const std::string&)>>(std::move(block));
}

}  // namespace

CaptureController::CaptureController(Dependencies dependencies) : dependencies_(dependencies) {}

CaptureController::~CaptureController() { windowWillClose(); }

void CaptureController::setupCaptureSession() {
  capVideoDataOutputQueue = std::make_shared<SerialQueue>(kQueueLabel);
  capSession = std::make_shared<CaptureSession>(dependencies_.mainQueue);
}

void CaptureController::addObservers() {
  sessionRuntimeErrorObserver = makeObserver([this](const std::string& reason) {
    // Meant: no restart and no change of state here. Frames simply stop.
    log("!!!AVCaptureSessionRuntimeErrorNotification!!!");
    log("{}", reason);
    dependencies_.failures.failed(Failure::Camera, reason);
  });
  deviceWasConnectedObserver =
      makeObserver([this](const std::string&) { onMicroscopeConnected(); });
  deviceWasDisconnectedObserver =
      makeObserver([this](const std::string&) { onMicroscopeDisconnected(); });
  if (capSession) capSession->setRuntimeErrorHandler(weakly(sessionRuntimeErrorObserver));
  dependencies_.captureSystem.setHotPlugHandlers(weakly(deviceWasConnectedObserver),
                                                 weakly(deviceWasDisconnectedObserver));
}

void CaptureController::onMicroscopesInitialized() {
  if (capDevice) return;
  for (const auto& microscope : dependencies_.catalogue.microscopes()) {
    if (microscope->uniqueID != dependencies_.preferences.uniqueID) continue;
    startCaptureSession(microscope, dependencies_.preferences.resolution);
    return;
  }
}

void CaptureController::windowWillClose() {
  if (capSession && capSession->isRunning()) capSession->stopRunning();
  dependencies_.controls.cameraDidClose();
  capSession = nullptr;
  capDevice = nullptr;
  capDeviceInput = nullptr;
  capVideoDataOutput = nullptr;
  capVideoDataOutputQueue = nullptr;
  sessionRuntimeErrorObserver = nullptr;
  if (deviceWasConnectedObserver || deviceWasDisconnectedObserver)
    dependencies_.captureSystem.setHotPlugHandlers({}, {});
  deviceWasConnectedObserver = nullptr;
  deviceWasDisconnectedObserver = nullptr;
}

// A copy, since it may be the current one, which a stop lets go.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void CaptureController::startCaptureSession(std::shared_ptr<MicroscopeInfo> microscope,
                                            std::shared_ptr<Resolution> resolution) {
  if (!capSession || !microscope) return;  // before the window is set up and after it has closed
  if (dependencies_.currMicroscope)
    stopCaptureSession();
  else
    endCalibration();  // one may have begun while no microscope was there
  dependencies_.currMicroscope = microscope;
  // The object and not a copy: the remembered resolution and the one in use may be the same.
  microscope->currResolution = std::move(resolution);
  // Meant: true even for a window that is covered, until its visibility next changes.
  wndExposed = true;
  framesCaptured = kFramesCapturedAtStart;
  silentLooks_ = 0;
  capDevice = dependencies_.captureSystem.deviceWithUniqueID(microscope->uniqueID);

  capSession->beginConfiguration();
  const bool added = addInputAndOutput();
  capSession->commitConfiguration();
  if (!added) return;
  capSession->startRunning();

  // A device may have vanished by now; its disconnection is told later and cleans up.
  if (capDevice)
    capDevice->lockForConfiguration();  // meant: configured whether or not it is granted
  configDeviceWithCurrResolution();
  if (capDevice) capDevice->unlockForConfiguration();

  dependencies_.picture.changeScale(kScaleNone);
  dependencies_.picture.setCalibration(kUncalibrated, kUnitMillimetre);
  dependencies_.picture.removeAllShapes();
  rememberChoice(*microscope);
  dependencies_.controls.cameraDidOpen(capDevice);
}

bool CaptureController::addInputAndOutput() {
  auto input = dependencies_.captureSystem.makeDeviceInput(capDevice);
  if (!input) {
    log("Could not create video device input: {}", input.error());
    dependencies_.failures.failed(Failure::Camera, input.error());
    capDeviceInput = nullptr;
    return false;
  }
  capDeviceInput = *std::move(input);
  if (!capSession->canAddInput(capDeviceInput)) {
    log("Could not add video device input to the session");
    dependencies_.failures.failed(Failure::Camera,
                                  "The microscope can't be opened. Choose it once more.");
    return false;
  }
  capSession->addInput(capDeviceInput);
  // Frames are 32-bit BGRA and upright on this platform, and late ones are discarded: none of it
  // needs to be asked for.
  capVideoDataOutput = std::make_shared<CaptureVideoDataOutput>();
  capVideoDataOutput->setSampleBufferDelegate(this, capVideoDataOutputQueue);
  capSession->addOutput(capVideoDataOutput);
  return true;
}

void CaptureController::endCalibration() {
  if (dependencies_.dialogs.closeCalibrationWindow()) dependencies_.picture.stopCalibration();
}

void CaptureController::stopCaptureSession() {
  endCalibration();
  dependencies_.dialogs.closeInputTextWindow();
  dependencies_.controls.cameraDidClose();
  if (capSession) {
    if (capSession->isRunning()) capSession->stopRunning();
    capSession->beginConfiguration();
    capSession->removeInput(capDeviceInput);
    capDeviceInput = nullptr;
    capSession->removeOutput(capVideoDataOutput);
    capVideoDataOutput = nullptr;
    capSession->commitConfiguration();
  }
  capDevice = nullptr;
  dependencies_.currMicroscope = nullptr;
  dependencies_.failures.recovered(Failure::Camera);
}

void CaptureController::watchFrames() {
  if (!capSession || !capSession->isRunning() || !dependencies_.currMicroscope) return;
  const uint64_t frames = framesDelivered_;
  if (frames != framesSeen_) {
    framesSeen_ = frames;
    silentLooks_ = 0;
    dependencies_.failures.recovered(Failure::Camera);
  } else if (++silentLooks_ == kSilentLooks) {
    dependencies_.failures.failed(
        Failure::Camera, fmt::format("{} sends no pictures. Unplug it and plug it in again.",
                                     dependencies_.currMicroscope->name));
  }
}

const CaptureFormat* CaptureController::matchDeviceFormat() const {
  const auto& microscope = dependencies_.currMicroscope;
  if (!capDevice || !microscope || !microscope->currResolution) return nullptr;
  const Resolution wanted = *microscope->currResolution;
  for (const CaptureFormat& format : capDevice->formats()) {
    if (Resolution{format.mediaSubType, format.width, format.height} != wanted) continue;
    log("matchDeviceFormat OK: {:X}, {}x{}", wanted.type, wanted.width, wanted.height);
    return &format;
  }
  return nullptr;
}

void CaptureController::configDeviceWithCurrResolution() {
  const auto& microscope = dependencies_.currMicroscope;
  if (!microscope) return;
  auto& resolution = microscope->currResolution;
  const CaptureFormat* format = nullptr;
  if (resolution && resolution->width != 0 && resolution->height != 0 && resolution->type != 0)
    format = matchDeviceFormat();
  if (!format) {
    // The default is what will be remembered, even if it does not match either.
    resolution = microscope->defResolution;
    format = matchDeviceFormat();
  }
  if (format) {
    capDevice->setActiveFormat(*format);
    log("Config device OK: {}", describe(*format));
  } else {
    const Resolution missing = resolution ? *resolution : Resolution{};
    log("Can not config microscope with resolution: {}x{}", missing.width, missing.height);
  }
  if (!capDevice) return;
  // Only the first range counts, even if a later one is faster.
  const CaptureFormat active = format ? *format : capDevice->activeFormat();
  const auto& ranges = active.videoSupportedFrameRateRanges;
  if (!ranges.empty()) capDevice->setActiveVideoMinFrameDuration(ranges.front().minFrameDuration);
}

void CaptureController::rememberChoice(const MicroscopeInfo& microscope) {
  Preferences& preferences = dependencies_.preferences;
  preferences.uniqueID = microscope.uniqueID;
  *preferences.resolution = microscope.currResolution ? *microscope.currResolution : Resolution{};
  preferences.save();
}

void CaptureController::captureOutputDidOutputSampleBuffer(const SampleBuffer& sampleBuffer) {
  ++framesCaptured;
  ++framesDelivered_;
  // Meant: the count starts at 10, so this holds nothing back until the counter has wrapped.
  if (wndExposed && framesCaptured > 1) dependencies_.picture.updateVideoFrame(sampleBuffer);
}

void CaptureController::captureOutputDidDropSampleBuffer(const SampleBuffer&) {
  // Meant: a late frame is neither logged nor counted here.
}

void CaptureController::onMicroscopeConnected() {
  const auto microscope = dependencies_.catalogue.onMicroscopeConnected();
  if (!microscope) return;
  if (dependencies_.dialogs.isMicroscopeWindowUp()) dependencies_.dialogs.refreshMicroscopes();
  if (microscope->uniqueID == dependencies_.preferences.uniqueID && !capDevice)
    startCaptureSession(microscope, dependencies_.preferences.resolution);
}

void CaptureController::onMicroscopeDisconnected() {
  const auto microscope = dependencies_.catalogue.onMicroscopeDisconnected();
  if (!microscope) return;
  CaptureDialogs& dialogs = dependencies_.dialogs;
  if (dialogs.isMicroscopeWindowUp()) {
    if (dependencies_.catalogue.microscopes().empty())
      dialogs.endMicroscopeSheet(kCancel);
    else
      dialogs.refreshMicroscopes();
  }
  // Without a current microscope there is nothing that could match.
  const auto& current = dependencies_.currMicroscope;
  if (!current || current->uniqueID != microscope->uniqueID) return;
  stopCaptureSession();
  dependencies_.picture.stopPreview();
}

}  // namespace tessary
