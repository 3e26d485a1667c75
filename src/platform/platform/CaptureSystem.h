#pragma once
// What the program asks of the platform's cameras. Adapters implement these classes; the room
// capture/ holds all decisions. Everything here is called on the main thread except where it says.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Result.h"
#include "base/SampleBuffer.h"
#include "base/Time.h"
#include "platform/CameraControls.h"

namespace tessary {

/// Frames may come between these two durations.
struct FrameRateRange {
  Fraction minFrameDuration;
  Fraction maxFrameDuration;
  friend bool operator==(const FrameRateRange&, const FrameRateRange&) = default;
};

/// One thing a camera can deliver: a media subtype (base/FourCharCode.h) at a size in pixels.
/// Formats and frame rate ranges stand in the driver's order.
struct CaptureFormat {
  uint32_t mediaSubType = 0;
  int32_t width = 0;
  int32_t height = 0;
  std::vector<FrameRateRange> videoSupportedFrameRateRanges;
  friend bool operator==(const CaptureFormat&, const CaptureFormat&) = default;
};

/// One camera that is, or was, connected. A camera that stays connected keeps its object.
class CaptureDevice {
 public:
  virtual ~CaptureDevice() = default;

  /// "UVC Camera VendorID_1374 ProductID_41312" for a USB camera of these numbers.
  virtual std::string modelID() const = 0;
  /// Survives a restart and being plugged into the same port again; no two present devices share
  /// it.
  virtual std::string uniqueID() const = 0;
  virtual std::string localizedName() const = 0;
  virtual std::string manufacturer() const = 0;
  /// Tells copies of one model apart; empty for a camera that has none.
  virtual std::string serialNumber() const = 0;
  /// kTransportTypeUSB for USB cameras.
  virtual uint32_t transportType() const = 0;
  virtual bool hasVideo() const = 0;
  virtual const std::vector<CaptureFormat>& formats() const = 0;
  /// False for a camera that this user may not ask: formats() is then empty, whatever it offers.
  virtual bool formatsAreKnown() const = 0;

  /// Between lock and unlock, changes are collected; unlocking puts them into force at once. A
  /// stream that is about to start starts with them, one that is running is reconfigured.
  virtual bool lockForConfiguration() = 0;
  virtual void unlockForConfiguration() = 0;
  virtual void setActiveFormat(const CaptureFormat& format) = 0;
  /// The format in force, or the device's default before any was set.
  virtual CaptureFormat activeFormat() const = 0;
  virtual void setActiveVideoMinFrameDuration(Fraction duration) = 0;
};

/// Where a stream's frames go.
class FrameSink {
 public:
  virtual ~FrameSink() = default;
  /// A good frame, in its place in time. On the stream's own thread.
  virtual void deliver(const SampleBuffer& frame) = 0;
  /// The stream ended by itself and won't go on; `reason` is in plain words. Not sent for a device
  /// that was unplugged. On the stream's own thread.
  virtual void streamFailed(const std::string& reason) = 0;
};

/// A device that has been opened for streaming. Destroying it closes the device.
class CaptureDeviceInput {
 public:
  virtual ~CaptureDeviceInput() = default;
  /// Starts the stream and returns at once. To start a camera takes long, so the stream waits for
  /// the configuration that may follow: it starts when the device is next unlocked, or after a
  /// short while without.
  virtual void startStreaming(FrameSink& sink) = 0;
  /// Ends the stream. When it returns, `sink` is not used again.
  virtual void stopStreaming() = 0;
};

/// All cameras of the machine.
class CaptureSystem {
 public:
  virtual ~CaptureSystem() = default;

  /// The cameras present now, in a stable order.
  virtual std::vector<std::shared_ptr<CaptureDevice>> devices() = 0;
  /// Null if no such device is present.
  virtual std::shared_ptr<CaptureDevice> deviceWithUniqueID(const std::string& uniqueID) = 0;
  /// Opens `device` (null is allowed and fails). An error says what is wrong and, where there is
  /// something to do, what to do.
  virtual Result<std::unique_ptr<CaptureDeviceInput>> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) = 0;
  /// The controls of `device`, which need not be open for streaming. They are read, and reported
  /// for the first time, after this has returned. `handler` is not called once the object has
  /// ended, and its end waits for no camera. Null if there is no such device.
  virtual std::unique_ptr<CameraControls> makeControls(const std::shared_ptr<CaptureDevice>& device,
                                                       CameraControls::Handler handler) = 0;
  /// Told on the main thread of each camera that came or went, one by one: `devices` has then
  /// changed by that camera alone. One that left and came back is told to have gone first. Empty
  /// functions end it.
  virtual void setHotPlugHandlers(std::function<void()> deviceWasConnected,
                                  std::function<void()> deviceWasDisconnected) = 0;
};

}  // namespace tessary
