#include "ffmpeg/EncoderEffort.h"

#include <algorithm>
#include <array>

namespace tessary {
namespace {

// Measured with `bench/movie_bench efforts`, conversion from BGRA included. The arithmetic coder
// costs by the bit; large frames have many, and the rate for doing without it.
constexpr std::array<EncoderEffort, 3> kSmallFrames{
    EncoderEffort{"veryfast", 11}, EncoderEffort{"superfast", 7}, EncoderEffort{"ultrafast", 4.5}};
constexpr std::array<EncoderEffort, 2> kLargeFrames{EncoderEffort{"superfast", 9.5},
                                                    EncoderEffort{"ultrafast", 6}};
constexpr int64_t kSmallFramePixels = int64_t{1024} * 768;

// The live preview decodes and draws the same frames meanwhile and takes as much again; the other
// half is for stalls and for whatever else runs. So two cores take 1920x1080 with the least effort.
constexpr double kShareOfTheMachine = 0.25;

}  // namespace

EffortLadder::EffortLadder(int32_t width, int32_t height, int32_t expectedFrameRate,
                           unsigned cores) {
  const int64_t pixels = int64_t(width) * height;
  const bool small = pixels <= kSmallFramePixels;
  efforts_ = small ? std::span<const EncoderEffort>(kSmallFrames)
                   : std::span<const EncoderEffort>(kLargeFrames);
  // No scene cuts: key frames come where they are asked for.
  streamFeatures_ = "ref=1:bframes=0:weightp=0:scenecut=0:rc-lookahead=0:mbtree=0";
  streamFeatures_ += small ? ":cabac=1:8x8dct=1" : ":cabac=0:8x8dct=0";

  cores = std::max(cores, 1U);
  // Every thread codes a slice of its own, which costs a little quality; no delay comes from it.
  const unsigned worthwhile = small ? 2 : 4;
  threads_ = int(std::min(cores, worthwhile));

  const double available = 1000.0 * cores * kShareOfTheMachine;  // milliseconds in a second
  const auto cost = [&](const EncoderEffort& candidate) {
    return candidate.cpuPerMegapixel * double(pixels) * 1e-6 * std::max(expectedFrameRate, 1);
  };
  while (canStepDown() && cost(effort()) > available) stepDown();
}

const EncoderEffort& EffortLadder::effort() const { return efforts_[index_]; }

bool EffortLadder::canStepDown() const { return index_ + 1 < efforts_.size(); }

void EffortLadder::stepDown() {
  if (canStepDown()) ++index_;
}

bool EffortLadder::isTooSlow(std::chrono::microseconds busy, std::chrono::microseconds elapsed) {
  return busy.count() * 4 > elapsed.count() * 3;
}

}  // namespace tessary
