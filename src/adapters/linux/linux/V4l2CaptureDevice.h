#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "linux/NodeProbe.h"
#include "linux/WakeUp.h"
#include "platform/CaptureSystem.h"

namespace tessary {

/// What a stream is to look like.
struct WantedVideo {
  VideoFormat format;
  /// Numerator 0: whatever the driver takes.
  Fraction minFrameDuration{0, 1};
  friend bool operator==(const WantedVideo&, const WantedVideo&) = default;
};

/// One camera behind a V4L2 node. The configuration may be read on any thread; a stream follows it
/// while it runs.
class V4l2CaptureDevice final : public CaptureDevice {
 public:
  struct Description {
    std::string modelID;
    std::string uniqueID;
    std::string localizedName;
    std::string manufacturer;
    std::string serialNumber;
    uint32_t transportType = 0;
    std::string devNode;
    std::vector<VideoFormat> formats;
    bool formatsAreKnown = true;
    std::optional<VideoFormat> defaultFormat;
  };
  struct Configuration {
    /// Nothing for a camera that offers no format this program can show.
    std::optional<WantedVideo> wanted;
    bool locked = false;
    /// Counts the unlocks.
    uint64_t serial = 0;
  };

  explicit V4l2CaptureDevice(Description description);

  std::string modelID() const override { return description_.modelID; }
  std::string uniqueID() const override { return description_.uniqueID; }
  std::string localizedName() const override { return description_.localizedName; }
  std::string manufacturer() const override { return description_.manufacturer; }
  std::string serialNumber() const override { return description_.serialNumber; }
  uint32_t transportType() const override { return description_.transportType; }
  bool hasVideo() const override { return true; }
  const std::vector<CaptureFormat>& formats() const override { return formats_; }
  bool formatsAreKnown() const override { return description_.formatsAreKnown; }

  bool lockForConfiguration() override;
  void unlockForConfiguration() override;
  /// The first format of this subtype and size. One that the camera doesn't offer is ignored. The
  /// frame duration falls back to the driver's. Without a lock it is in force at once.
  void setActiveFormat(const CaptureFormat& format) override;
  CaptureFormat activeFormat() const override;
  void setActiveVideoMinFrameDuration(Fraction duration) override;

  const std::string& devNode() const noexcept { return description_.devNode; }
  Configuration configuration() const;
  /// That of the configuration, for whoever looks at every frame: no copy.
  uint64_t configurationSerial() const;
  /// `wakeUp` is signalled at every unlock, until detach(). One stream at a time.
  void attach(WakeUp& wakeUp);
  void detach(WakeUp& wakeUp);

 private:
  void putIntoForce();  // with the lock held

  const Description description_;
  std::vector<CaptureFormat> formats_;

  mutable std::mutex mutex_;  // guards all below
  std::optional<WantedVideo> inForce_;
  std::optional<WantedVideo> pending_;
  bool locked_ = false;
  uint64_t serial_ = 0;
  WakeUp* stream_ = nullptr;
};

}  // namespace tessary
