#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/SerialQueue.h"
#include "platform/CaptureSystem.h"

namespace tessary {

/// Told of the frames of an output.
class CaptureVideoDataOutputSampleBufferDelegate {
 public:
  virtual ~CaptureVideoDataOutputSampleBufferDelegate() = default;
  /// A frame, on the output's queue. The next one is not begun before this returns.
  virtual void captureOutputDidOutputSampleBuffer(const SampleBuffer& sampleBuffer) = 0;
  /// A frame that came too late to be shown, on the thread of the stream.
  virtual void captureOutputDidDropSampleBuffer(const SampleBuffer& sampleBuffer) = 0;
};

/// Takes a stream's frames over to a serial queue and hands them to a delegate there, one after the
/// other, each a 32-bit BGRA picture. The stream's thread never waits for the delegate: at most one
/// frame waits for the queue, the newest, and one whose place it takes is dropped.
class CaptureVideoDataOutput final : public FrameSink {
 public:
  CaptureVideoDataOutput() = default;
  /// Waits for the frame being handled. Not from the queue.
  ~CaptureVideoDataOutput() override;
  CaptureVideoDataOutput(const CaptureVideoDataOutput&) = delete;
  CaptureVideoDataOutput& operator=(const CaptureVideoDataOutput&) = delete;

  // The setters are for the time before the stream starts.

  /// `delegate` must outlive the output.
  void setSampleBufferDelegate(CaptureVideoDataOutputSampleBufferDelegate* delegate,
                               std::shared_ptr<SerialQueue> queue);
  /// Called with the reason, on the stream's thread, when the stream ended by itself.
  void setStreamFailedHandler(std::function<void(const std::string& reason)> handler);

  /// Frames dropped since the output was made. Any thread.
  uint64_t droppedFrames() const;
  /// Waits until every frame that was delivered before has been handled. Not from the queue.
  void drain();

  // FrameSink, on the stream's thread.
  void deliver(const SampleBuffer& frame) override;
  void streamFailed(const std::string& reason) override;

 private:
  void handleWaitingFrame();

  CaptureVideoDataOutputSampleBufferDelegate* delegate_ = nullptr;
  std::shared_ptr<SerialQueue> queue_;
  std::function<void(const std::string&)> streamFailedHandler_;

  mutable std::mutex mutex_;  // guards waiting_ and dropped_
  std::optional<SampleBuffer> waiting_;
  uint64_t dropped_ = 0;
};

}  // namespace tessary
