#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace tessary {

/// How hard the encoder tries: one of x264's presets, held to a fixed set of stream features.
struct EncoderEffort {
  const char* preset;
  double cpuPerMegapixel;  ///< Milliseconds of one core, for a frame of a million pixels.
};

/// Which efforts a movie of some size may use, and when to use less.
///
/// All efforts of a ladder write the same sequence and picture parameter sets: what the presets
/// would write into these (CABAC, the 8x8 transform, weighted prediction, reference frames) is
/// fixed for the ladder, so that they differ in their search only. A second encoder with less
/// effort can therefore go on within the same track from any key frame.
class EffortLadder {
 public:
  /// `expectedFrameRate` in frames a second; `cores` those of the machine.
  EffortLadder(int32_t width, int32_t height, int32_t expectedFrameRate, unsigned cores);

  const EncoderEffort& effort() const;
  /// x264 options that hold every effort to the ladder's stream features.
  const std::string& streamFeatures() const { return streamFeatures_; }
  bool canStepDown() const;
  void stepDown();
  int threads() const { return threads_; }

  /// Whether encoding has come too close to the rate of the frames: `busy` of `elapsed` was spent
  /// in the encoder. Above three quarters, the first stall loses a frame.
  static bool isTooSlow(std::chrono::microseconds busy, std::chrono::microseconds elapsed);

 private:
  std::span<const EncoderEffort> efforts_;  // most effort first
  size_t index_ = 0;
  std::string streamFeatures_;
  int threads_ = 1;
};

}  // namespace tessary
