#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "base/Executor.h"
#include "base/Lifetime.h"
#include "linux/NodeProbe.h"
#include "linux/NodeSource.h"
#include "linux/StreamTiming.h"
#include "linux/V4l2Calls.h"
#include "linux/V4l2CaptureDevice.h"
#include "platform/CaptureSystem.h"
#include "platform/FrameDecoder.h"

namespace tessary {

/// The cameras that Linux has drivers for. They are looked for on a thread of the node source, as
/// the first opening of a camera wakes it up; the list that the program sees changes on the main
/// thread only, together with the word that it changed.
class V4l2CaptureSystem final : public CaptureSystem {
 public:
  /// This machine's cameras. `mainQueue` must outlive this object.
  V4l2CaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder);
  /// For tests.
  V4l2CaptureSystem(Executor& mainQueue, FrameDecoderFactory makeDecoder,
                    std::shared_ptr<V4l2Calls> calls, std::unique_ptr<NodeSource> nodes,
                    const StreamTiming& timing = {});
  ~V4l2CaptureSystem() override;

  std::vector<std::shared_ptr<CaptureDevice>> devices() override;
  std::shared_ptr<CaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
  Result<std::unique_ptr<CaptureDeviceInput>> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::unique_ptr<CameraControls> makeControls(const std::shared_ptr<CaptureDevice>& device,
                                               CameraControls::Handler handler) override;
  void setHotPlugHandlers(std::function<void()> deviceWasConnected,
                          std::function<void()> deviceWasDisconnected) override;

 private:
  /// A node that is a camera, as it was found. Two that are equal are the same camera, not
  /// replugged.
  struct Entry {
    NodeRecord node;
    std::shared_ptr<const NodeProbe> probe;
    bool sameCamera(const Entry& other) const;
  };
  struct Snapshot {
    uint64_t number = 0;
    std::vector<Entry> cameras;
    bool settled = true;
  };
  struct Present {
    Entry entry;
    std::shared_ptr<V4l2CaptureDevice> device;
  };

  Snapshot takeSnapshot();
  void apply(const Snapshot& snapshot);
  std::shared_ptr<V4l2CaptureDevice> makeDevice(const Entry& entry) const;

  Executor& mainQueue_;
  const FrameDecoderFactory makeDecoder_;
  const StreamTiming timing_;
  const std::shared_ptr<V4l2Calls> calls_;
  const std::unique_ptr<NodeSource> nodes_;

  std::mutex snapshotMutex_;  // guards snapshots_ and probes_, and lets one be taken at a time
  uint64_t snapshots_ = 0;
  /// Answers of the nodes present, by path and connection: a camera is asked once.
  std::map<std::pair<std::string, std::string>, std::shared_ptr<const NodeProbe>> probes_;

  // All below belong to the main thread.
  uint64_t applied_ = 0;
  std::vector<Present> present_;
  std::function<void()> deviceWasConnected_;
  std::function<void()> deviceWasDisconnected_;
  const Lifetime lifetime_;
};

}  // namespace tessary
