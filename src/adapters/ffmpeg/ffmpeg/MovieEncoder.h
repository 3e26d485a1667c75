#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/PixelBuffer.h"
#include "base/Result.h"
#include "ffmpeg/AvHandles.h"
#include "ffmpeg/EncoderEffort.h"
#include "platform/AssetWriter.h"

namespace tessary {

/// Turns pictures into H.264: no B-frames and no look-ahead, so that every frame comes out at once
/// and in order. The picture's colours are those of a USB camera: full range, BT.601 matrix, BT.709
/// primaries and transfer. One thread at a time.
///
/// The bit rate is held at its average within a second, at whatever rate frames come. When encoding
/// takes nearly as long as the frames last, the encoder goes on with less effort from the next key
/// frame.
class MovieEncoder {
 public:
  using Packets = std::vector<AvHandle<AVPacket>>;
  static constexpr AVRational kTimeBase{1, 1000000};

  /// Whether a movie can be made with `settings`.
  static Result<void> accepts(const MovieSettings& settings);
  static Result<std::unique_ptr<MovieEncoder>> make(const MovieSettings& settings,
                                                    const EffortLadder& ladder);
  /// Gives the encoder's memory back to the system.
  ~MovieEncoder();

  /// The stream's format, valid for all that ever comes out.
  const AVCodecParameters& parameters() const { return *parameters_; }
  const EncoderEffort& effort() const { return ladder_.effort(); }

  /// Encodes `picture`, of the movie's size, for `time` in microseconds of the movie's timeline,
  /// which rise. What comes out is added to `packets`.
  Result<void> encode(const PixelBuffer& picture, int64_t time, Packets& packets);
  /// Encodes the last picture once more.
  Result<void> repeat(int64_t time, Packets& packets);
  /// Brings out what is still inside.
  Result<void> drain(Packets& packets);

 private:
  MovieEncoder(const MovieSettings& settings, const EffortLadder& ladder);

  Result<AvHandle<AVCodecContext>> open() const;
  Result<void> send(const AVFrame* frame, Packets& packets);
  void followFrameRate(int64_t time);
  Result<void> prepareKeyFrame(int64_t time, Packets& packets);

  const MovieSettings settings_;
  EffortLadder ladder_;
  AvHandle<AVCodecContext> context_;
  AvHandle<AVCodecParameters> parameters_;
  AvHandle<AVFrame> frame_;
  std::optional<int64_t> lastTime_;
  double meanInterval_;  // of the last second's frames or so, microseconds
  int32_t intervals_ = 1;
  int32_t framesSinceKeyFrame_ = 0;
  std::optional<int64_t> keyFrameTime_;  // of the last key frame
  std::chrono::microseconds busy_{0};    // spent encoding since then
};

}  // namespace tessary
