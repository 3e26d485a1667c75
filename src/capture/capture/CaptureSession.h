#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Executor.h"
#include "base/Lifetime.h"
#include "capture/CaptureVideoDataOutput.h"
#include "platform/CaptureSystem.h"

namespace tessary {

/// Lets the frames of one input flow to one output while it runs. Main thread.
class CaptureSession {
 public:
  using RuntimeErrorHandler = std::function<void(const std::string& reason)>;

  /// `mainQueue` runs work on the thread that uses the session.
  explicit CaptureSession(Executor& mainQueue) : mainQueue_(mainQueue) {}
  ~CaptureSession();
  CaptureSession(const CaptureSession&) = delete;
  CaptureSession& operator=(const CaptureSession&) = delete;

  bool isRunning() const { return running_; }
  const std::shared_ptr<CaptureDeviceInput>& input() const { return input_; }
  const std::shared_ptr<CaptureVideoDataOutput>& output() const { return output_; }

  /// From here to the matching commit, what is added does not begin to flow.
  void beginConfiguration();
  void commitConfiguration();

  /// False for null and while there is an input.
  bool canAddInput(const std::shared_ptr<CaptureDeviceInput>& input) const;
  void addInput(std::shared_ptr<CaptureDeviceInput> input);
  /// Ends the stream first. Ignored for an input that the session does not have.
  void removeInput(const std::shared_ptr<CaptureDeviceInput>& input);
  /// Takes the place of an output that is there.
  void addOutput(std::shared_ptr<CaptureVideoDataOutput> output);
  /// Ends the stream first. Ignored for an output that the session does not have.
  void removeOutput(const std::shared_ptr<CaptureVideoDataOutput>& output);

  void startRunning();
  /// When it returns, no frame is being handled and none will be delivered.
  void stopRunning();

  /// Called when a stream has ended by itself. The session has stopped then and let its input go.
  void setRuntimeErrorHandler(RuntimeErrorHandler handler);

 private:
  /// Starts the stream if all that it needs is there.
  void startStream();
  void stopStream();
  void streamFailed(const std::string& reason);

  Executor& mainQueue_;
  std::shared_ptr<CaptureDeviceInput> input_;
  std::shared_ptr<CaptureVideoDataOutput> output_;
  RuntimeErrorHandler runtimeErrorHandler_;
  int32_t configurations_ = 0;
  bool running_ = false;
  /// Of the stream, while the input streams: a failure on its way to the main thread can't be taken
  /// for one of a later stream, or reach a session that is gone.
  std::optional<Lifetime> stream_;
};

}  // namespace tessary
