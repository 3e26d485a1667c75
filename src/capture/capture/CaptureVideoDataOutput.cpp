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
  SampleBuffer late;
  bool tookItsPlace = false;
  {
    const std::lock_guard lock(mutex_);
    tookItsPlace = discardsLate_ && !waiting_.empty();
    if (tookItsPlace) {
      // Newest wins: the user is focusing, so a late frame misleads.
      late = std::exchange(waiting_.back(), frame);
      ++dropped_;
    } else {
      waiting_.push_back(frame);
    }
  }
  if (tookItsPlace)
    delegate_->captureOutputDidDropSampleBuffer(late);
  else
    queue_->post([this] { handleWaitingFrame(); });  // one piece of work a waiting frame
}

void CaptureVideoDataOutput::streamFailed(const std::string& reason) {
  if (streamFailedHandler_) streamFailedHandler_(reason);
}

void CaptureVideoDataOutput::handleWaitingFrame() {
  SampleBuffer frame;
  {
    const std::lock_guard lock(mutex_);
    frame = std::move(waiting_.front());
    waiting_.pop_front();
  }
  delegate_->captureOutputDidOutputSampleBuffer(frame);
}

}  // namespace tessary
