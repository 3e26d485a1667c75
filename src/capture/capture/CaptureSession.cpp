#include "capture/CaptureSession.h"

#include <utility>

namespace tessary {

CaptureSession::~CaptureSession() { stopRunning(); }

void CaptureSession::beginConfiguration() { ++configurations_; }

void CaptureSession::commitConfiguration() {
  if (configurations_ > 0) --configurations_;
  startStream();
}

bool CaptureSession::canAddInput(const std::shared_ptr<CaptureDeviceInput>& input) const {
  return input && !input_;
}

void CaptureSession::addInput(std::shared_ptr<CaptureDeviceInput> input) {
  if (!canAddInput(input)) return;
  input_ = std::move(input);
  startStream();
}

void CaptureSession::removeInput(const std::shared_ptr<CaptureDeviceInput>& input) {
  if (!input || input != input_) return;
  stopStream();
  input_ = nullptr;
}

void CaptureSession::addOutput(std::shared_ptr<CaptureVideoDataOutput> output) {
  stopStream();
  output_ = std::move(output);
  startStream();
}

void CaptureSession::removeOutput(const std::shared_ptr<CaptureVideoDataOutput>& output) {
  if (!output || output != output_) return;
  stopStream();
  output_ = nullptr;
}

void CaptureSession::startRunning() {
  running_ = true;
  startStream();
}

void CaptureSession::stopRunning() {
  running_ = false;
  stopStream();
}

void CaptureSession::setRuntimeErrorHandler(RuntimeErrorHandler handler) {
  runtimeErrorHandler_ = std::move(handler);
}

void CaptureSession::startStream() {
  if (!running_ || configurations_ > 0 || stream_ || !input_ || !output_) return;
  stream_.emplace();
  output_->setStreamFailedHandler(
      [failed = stream_->guard([this](const std::string& reason) { streamFailed(reason); }),
       &mainQueue = mainQueue_](const std::string& reason) {
        mainQueue.post([failed, reason] { failed(reason); });
      });
  input_->startStreaming(*output_);
}

void CaptureSession::stopStream() {
  if (!stream_) return;
  stream_.reset();
  input_->stopStreaming();
  output_->drain();
}

void CaptureSession::streamFailed(const std::string& reason) {
  stopRunning();
  input_ = nullptr;
  // A copy: the handler may end this session.
  if (const auto handler = runtimeErrorHandler_) handler(reason);
}

}  // namespace tessary
