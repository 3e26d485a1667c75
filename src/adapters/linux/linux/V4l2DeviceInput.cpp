#include "linux/V4l2DeviceInput.h"

#include <utility>

#include "linux/DriverError.h"

namespace tessary {

Result<std::unique_ptr<V4l2DeviceInput>> V4l2DeviceInput::open(
    std::shared_ptr<V4l2Calls> calls, const std::shared_ptr<V4l2CaptureDevice>& device,
    FrameDecoderFactory makeDecoder, const StreamTiming& timing) {
  // The constructor is private, out of make_unique's reach.
  std::unique_ptr<V4l2DeviceInput> input(
      new V4l2DeviceInput(std::move(calls), device, std::move(makeDecoder), timing));
  int failure = input->node_.openError();
  if (failure == 0) {
    // Any program may open a camera that streams for another; only buffers are a claim. One, for
    // now: memory for more is wanted when the format is known.
    unsigned count = 1;
    failure = input->node_.requestBuffers(count);
  }
  if (failure != 0) return Error{openFailureText(device->devNode(), failure)};
  return input;
}

V4l2DeviceInput::V4l2DeviceInput(std::shared_ptr<V4l2Calls> calls,
                                 std::shared_ptr<V4l2CaptureDevice> device,
                                 FrameDecoderFactory makeDecoder, const StreamTiming& timing)
    : calls_(std::move(calls)),
      device_(std::move(device)),
      makeDecoder_(std::move(makeDecoder)),
      timing_(timing),
      node_(*calls_, device_->devNode()) {}

V4l2DeviceInput::~V4l2DeviceInput() { stopStreaming(); }

void V4l2DeviceInput::startStreaming(FrameSink& sink) {
  stopStreaming();
  lastCounters_ = {};
  stream_ = std::make_unique<V4l2Stream>(node_, *device_, makeDecoder_, timing_, sink);
}

void V4l2DeviceInput::stopStreaming() {
  if (!stream_) return;
  stream_->stop();
  lastCounters_ = stream_->counters();
  stream_.reset();
}

StreamCounters V4l2DeviceInput::counters() const {
  return stream_ ? stream_->counters() : lastCounters_;
}

}  // namespace tessary
