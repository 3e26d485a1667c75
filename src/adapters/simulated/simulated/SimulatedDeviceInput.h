#pragma once

#include <thread>

#include "platform/CaptureSystem.h"
#include "platform/FrameDecoder.h"
#include "platform/ImageEncoder.h"
#include "simulated/SimulatedMicroscope.h"

namespace tessary {

/// Streams from a simulated microscope by the rules of a real one: its frames are decoded from
/// their bytes, one that does not decode is skipped and counted, and unplugging ends it quietly.
class SimulatedDeviceInput final : public CaptureDeviceInput {
 public:
  SimulatedDeviceInput(std::shared_ptr<SimulatedMicroscope> microscope,
                       FrameDecoderFactory makeDecoder, std::shared_ptr<ImageEncoder> encoder);
  ~SimulatedDeviceInput() override;

  void startStreaming(FrameSink& sink) override;
  void stopStreaming() override;

 private:
  void run(const std::stop_token& stop, FrameSink& sink, uint64_t revisionAtStart);
  /// Streams until what is in force changes. False when the stream is over.
  bool runSetting(const std::stop_token& stop, FrameSink& sink);
  void sendFrame(FrameSink& sink, MediaTime stamp);

  const std::shared_ptr<SimulatedMicroscope> microscope_;
  const FrameDecoderFactory makeDecoder_;
  const std::shared_ptr<ImageEncoder> encoder_;
  // The stream's own, touched by no one else while it runs.
  PixelBufferPool pool_;
  std::unique_ptr<FrameLoop> frames_;
  std::unique_ptr<FrameDecoder> decoder_;
  size_t frameIndex_ = 0;
  MediaTime earliest_{0};  // before which the next frame would come too soon after the last

  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace tessary
