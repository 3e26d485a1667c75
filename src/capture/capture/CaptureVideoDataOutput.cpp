#include "capture/CaptureVideoDataOutput.h"

#include <utility>

namespace tessary {

CaptureVideoDataOutput::~CaptureVideoDataOutput() { drain(); }

void CaptureVideoDataOutput::setSampleBufferDelegate(
    CaptureVideoDataOutputSampleBufferDelegate* delegate, std::shared_ptr<SerialQueue> queue) {
  delegate_ = delegate;
  queue_ = std::move(queue);
}

void CaptureVideoDataOutput::setStreamFailedHandler(
    std::function<void(const std::string& reason)> handler) {
  streamFailedHandler_ = std::move(handler);
}

uint64_t CaptureVideoDataOutput::droppedFrames() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

void CaptureVideoDataOutput::drain() {
  if (queue_) queue_->drain();
}

void CaptureVideoDataOutput::deliver(const SampleBuffer& frame) {
  if (!delegate_ || !queue_) return;
  std::optional<SampleBuffer> late;
  {
    const std::lock_guard lock(mutex_);
    late = std::exchange(waiting_, frame);
    if (late) ++dropped_;
  }
  if (late)
    delegate_->captureOutputDidDropSampleBuffer(*late);
  else
    queue_->post([this] { handleWaitingFrame(); });
}

void CaptureVideoDataOutput::streamFailed(const std::string& reason) {
  if (streamFailedHandler_) streamFailedHandler_(reason);
}

void CaptureVideoDataOutput::handleWaitingFrame() {
  std::optional<SampleBuffer> frame;
  {
    const std::lock_guard lock(mutex_);
    frame = std::exchange(waiting_, std::nullopt);
  }
  delegate_->captureOutputDidOutputSampleBuffer(*frame);
}

}  // namespace tessary
