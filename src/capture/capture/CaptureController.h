#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "base/Executor.h"
#include "base/Failures.h"
#include "base/SerialQueue.h"
#include "capture/CameraControlBoard.h"
#include "capture/CaptureDialogs.h"
#include "capture/CapturePicture.h"
#include "capture/CaptureSession.h"
#include "capture/CaptureVideoDataOutput.h"
#include "capture/MicroscopeCatalogue.h"
#include "capture/MicroscopeInfo.h"
#include "platform/CaptureSystem.h"
#include "settings/Preferences.h"

namespace tessary {

/// The capture half of the main window's controller: owns the one capture session, opens and closes
/// the chosen microscope on it, chooses the device's format, forwards the frames to the picture and
/// reacts to microscopes that come and go. Failures are log lines, and told to the user. Main
/// thread, except where told.
///
///   Idle     no `capDevice`, no current microscope
///   Running  every field set, the session running
///   Failed   a current microscope, but no input on the session; `capDevice` possibly set
class CaptureController final : private CaptureVideoDataOutputSampleBufferDelegate {
 public:
  /// What the controller is given; the references must outlive it.
  struct Dependencies {
    CaptureSystem& captureSystem;
    MicroscopeCatalogue& catalogue;
    std::shared_ptr<MicroscopeInfo>& currMicroscope;  ///< `gCurrMicroscope`
    Preferences& preferences;
    Executor& mainQueue;
    CapturePicture& picture;
    CaptureDialogs& dialogs;
    FailureListener& failures;
    CameraControlBoard& controls;
  };

  explicit CaptureController(Dependencies dependencies);
  /// Closes, if that has not been done.
  ~CaptureController() override;
  CaptureController(const CaptureController&) = delete;
  CaptureController& operator=(const CaptureController&) = delete;

  // The window's life, in this order.

  /// Makes the session and the queue on which frames arrive.
  void setupCaptureSession();
  /// Listens for session errors and for microscopes that come and go.
  void addObservers();
  /// Opens the remembered microscope if it is present, and no other.
  void onMicroscopesInitialized();
  /// Stops the session, lets everything go and stops listening. The current microscope stays set.
  void windowWillClose();

  // The session.

  /// Opens `microscope` with the wanted `resolution` (null is allowed: the default), which becomes
  /// the microscope's `currResolution` as an object. Resets the overlay and remembers the choice,
  /// but not if the device can't be opened.
  void startCaptureSession(std::shared_ptr<MicroscopeInfo> microscope,
                           std::shared_ptr<Resolution> resolution);
  void stopCaptureSession();
  /// The first of the device's formats that is `currResolution`, or null.
  const CaptureFormat* matchDeviceFormat() const;
  /// Sets `currResolution`, or else the microscope's default, at the highest rate of the format's
  /// first range. With the device locked.
  void configDeviceWithCurrResolution();
  /// Looks for frames, each second or two: a session without any for some seconds is told as a
  /// failure, until one comes.
  void watchFrames();
  void refreshCameraControl() {}  ///< Meant: there is nothing to refresh.

  // Hot-plug.

  void onMicroscopeConnected();
  void onMicroscopeDisconnected();

  /// A block that is called while its token lives.
  using ObserverToken = std::shared_ptr<const std::function<void(const std::string&)>>;

  std::shared_ptr<CaptureSession> capSession;
  /// The open device, or null. This, not the current microscope, is what the tool rules and
  /// hot-plug go by.
  std::shared_ptr<CaptureDevice> capDevice;
  std::shared_ptr<CaptureDeviceInput> capDeviceInput;
  std::shared_ptr<CaptureVideoDataOutput> capVideoDataOutput;
  std::shared_ptr<SerialQueue> capVideoDataOutputQueue;
  /// Frames of the current session, on the frame queue. The main thread sets it while no output is
  /// running, so it needs no lock.
  uint32_t framesCaptured = 0;
  ObserverToken sessionRuntimeErrorObserver;
  ObserverToken deviceWasConnectedObserver;
  ObserverToken deviceWasDisconnectedObserver;
  /// Whether the main window is at least partly visible. Any thread.
  std::atomic<bool> wndExposed = false;

 private:
  void captureOutputDidOutputSampleBuffer(const SampleBuffer& sampleBuffer) override;
  void captureOutputDidDropSampleBuffer(const SampleBuffer& sampleBuffer) override;

  /// The part of a start that needs the device: input and output onto the session. False when the
  /// device can't be used.
  bool addInputAndOutput();
  /// A session that starts or ends takes a calibration with it: its line belongs to the picture
  /// that it was laid over. The window and the line go together.
  void endCalibration();
  void rememberChoice(const MicroscopeInfo& microscope);

  Dependencies dependencies_;
  std::atomic<uint64_t> framesDelivered_ = 0;
  uint64_t framesSeen_ = 0;  // of those, at the last look
  int silentLooks_ = 0;
};

}  // namespace tessary
