#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "base/PixelBuffer.h"
#include "linux/MappedBuffers.h"
#include "linux/StreamCounters.h"
#include "linux/StreamTiming.h"
#include "linux/V4l2CaptureDevice.h"
#include "linux/VideoNegotiation.h"
#include "platform/FrameDecoder.h"

struct v4l2_buffer;

namespace tessary {

/// The thread that runs a camera: it sets the camera up, takes frames as they come, decodes them,
/// hands them over, and brings a camera that stumbled back on its feet.
class V4l2Stream {
 public:
  /// Starts the thread. `node`, `device`, `makeDecoder` and `sink` must outlive this object.
  V4l2Stream(const VideoNode& node, V4l2CaptureDevice& device,
             const FrameDecoderFactory& makeDecoder, const StreamTiming& timing, FrameSink& sink);
  ~V4l2Stream();
  V4l2Stream(const V4l2Stream&) = delete;
  V4l2Stream& operator=(const V4l2Stream&) = delete;

  /// Ends the stream; `sink` is not used afterwards. Waits at most for the call that the driver is
  /// in. Not from the stream's own thread.
  void stop();
  /// Any thread.
  StreamCounters counters() const;

 private:
  using Clock = std::chrono::steady_clock;
  /// Why a step ended. All but Running end the stream for now, the last three for good.
  enum class Outcome { Running, Reconfigure, Silent, Trouble, Stopped, Gone, Failed };

  void run();
  void waitForConfiguration();
  Outcome start();
  Outcome pump();
  Outcome takeFrames(bool& tookAny);
  void handOver(uint32_t index, const v4l2_buffer& buffer);
  void stopVideo() noexcept;
  Outcome outcomeOf(int error);
  Outcome fail(std::string reason);
  void noteGoodBuffer();
  /// When a stream that stays silent is restarted.
  Clock::time_point silenceDeadline() const;
  void noteSequence(uint32_t sequence);
  bool wantsReconfiguration();
  /// Until `deadline`, a signal or a stop.
  void waitUntil(std::optional<Clock::time_point> deadline);
  void count(uint64_t StreamCounters::*what, uint64_t by = 1);
  void reportFaults();

  const VideoNode& node_;
  V4l2CaptureDevice& device_;
  const FrameDecoderFactory& makeDecoder_;
  const StreamTiming timing_;
  FrameSink& sink_;
  const std::string name_;

  WakeUp wakeUp_;
  std::atomic<bool> stopping_ = false;
  mutable std::mutex mutex_;  // guards counters_
  StreamCounters counters_;

  // All below belong to the thread.
  uint64_t seenSerial_;
  std::optional<WantedVideo> current_;
  bool formatIsSet_ = false;
  AgreedVideo agreed_;
  std::unique_ptr<FrameDecoder> decoder_;
  uint32_t decoderSubType_ = 0;
  PixelBufferPool pool_;
  MappedBuffers buffers_;
  bool videoIsOn_ = false;
  std::optional<uint32_t> lastSequence_;
  Clock::time_point lastGoodBuffer_;
  std::optional<Clock::time_point> lastFlaggedBuffer_;  // since the last good one
  std::chrono::milliseconds silence_;
  std::chrono::milliseconds silenceAfterFault_;
  std::chrono::milliseconds retry_;
  int lastError_ = 0;
  std::string failure_;
  StreamCounters reported_;
  std::optional<Clock::time_point> lastReport_;

  std::thread thread_;  // last: it uses all of the above
};

}  // namespace tessary
