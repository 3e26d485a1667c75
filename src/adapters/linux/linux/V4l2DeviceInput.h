#pragma once

#include <memory>

#include "linux/StreamCounters.h"
#include "linux/StreamTiming.h"
#include "linux/V4l2CaptureDevice.h"
#include "linux/V4l2Stream.h"
#include "linux/VideoNode.h"
#include "platform/FrameDecoder.h"

namespace tessary {

/// A camera that this program has opened and claimed: no other program can stream from it.
class V4l2DeviceInput final : public CaptureDeviceInput {
 public:
  /// Fails when the node can't be opened or another program has the camera.
  static Result<std::unique_ptr<V4l2DeviceInput>> open(
      std::shared_ptr<V4l2Calls> calls, const std::shared_ptr<V4l2CaptureDevice>& device,
      FrameDecoderFactory makeDecoder, const StreamTiming& timing);
  ~V4l2DeviceInput() override;

  void startStreaming(FrameSink& sink) override;
  void stopStreaming() override;

  /// Of the running stream, or of the last one. The caller's thread is the one that starts and
  /// stops.
  StreamCounters counters() const;

 private:
  V4l2DeviceInput(std::shared_ptr<V4l2Calls> calls, std::shared_ptr<V4l2CaptureDevice> device,
                  FrameDecoderFactory makeDecoder, const StreamTiming& timing);

  const std::shared_ptr<V4l2Calls> calls_;
  const std::shared_ptr<V4l2CaptureDevice> device_;
  const FrameDecoderFactory makeDecoder_;
  const StreamTiming timing_;
  const VideoNode node_;
  StreamCounters lastCounters_;
  std::unique_ptr<V4l2Stream> stream_;  // last: it uses all of the above
};

}  // namespace tessary
