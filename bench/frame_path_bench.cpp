// What a frame costs on the stream's thread, from the bytes of an MJPEG frame to a picture that is
// ready for upload, beside TurboJPEG alone decoding the same frames into one buffer. Both are run
// in turn, frame by frame, so that whatever else the machine does meets both alike.
//
//   frame_path_bench                                the table on standard output
//   frame_path_bench --benchmark_format=json        the same for scripts
//
// bare_ms, ready_ms: medians of the CPU time of this thread; ratio: the median of ready to bare of
// the same frame.

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <turbojpeg.h>

#include "base/FourCharCode.h"
#include "jpeg/JpegFrameDecoder.h"
#include "jpeg/JpegImageEncoder.h"
#include "simulated/FrameLoop.h"

namespace tessary {
namespace {

double cpuMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return double(time.tv_sec) * 1e3 + double(time.tv_nsec) * 1e-6;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + ptrdiff_t(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// TurboJPEG alone, with the same settings but nothing around it.
class BareDecoder {
 public:
  explicit BareDecoder(TextureSize size) : picture_(size) {}
  bool decode(std::span<const uint8_t> bytes) {
    return tjDecompress2(handle_.get(), bytes.data(), bytes.size(), picture_.data(),
                         picture_.size().width, int(picture_.bytesPerRow()), picture_.size().height,
                         TJPF_BGRA, 0) == 0;
  }

 private:
  std::unique_ptr<void, int (*)(void*)> handle_{tjInitDecompress(), tjDestroy};
  PixelBuffer picture_;
};

/// The stream's calls, with the preview's ring of three holding on to what was delivered.
class FramePath {
 public:
  explicit FramePath(TextureSize size) : size_(size) {}
  bool decode(std::span<const uint8_t> bytes) {
    std::shared_ptr<PixelBuffer> picture = decoder_.decode(bytes, size_, 0, pool_);
    if (!picture) return false;
    ring_[next_++ % ring_.size()] = std::move(picture);
    return true;
  }

 private:
  TextureSize size_;
  PixelBufferPool pool_;
  JpegFrameDecoder decoder_;
  std::array<std::shared_ptr<PixelBuffer>, 3> ring_;
  size_t next_ = 0;
};

template <typename Decoder>
double timed(Decoder& decoder, std::span<const uint8_t> bytes, bool& good) {
  const double before = cpuMilliseconds();
  good = decoder.decode(bytes) && good;
  return cpuMilliseconds() - before;
}

void framePath(benchmark::State& state) {
  const auto width = int32_t(state.range(0));
  const auto height = int32_t(state.range(1));
  FrameLoop frames({kMediaSubTypeMJPEG, width, height, {}},
                   std::make_shared<JpegImageEncoder>(JpegImageEncoder::kCameraFrame));
  double bytesOfAll = 0;
  for (size_t i = 0; i < frames.frameCount(); ++i) bytesOfAll += double(frames.frame(i).size());

  BareDecoder bare({width, height});
  FramePath path({width, height});
  std::vector<double> bareTimes;
  std::vector<double> readyTimes;
  std::vector<double> ratios;
  bool good = true;
  for (size_t i = 0; i < 4; ++i) {  // the ring fills, and the caches
    timed(bare, frames.frame(i), good);
    timed(path, frames.frame(i), good);
  }
  size_t turn = 0;
  for ([[maybe_unused]] auto _ : state) {
    const std::span<const uint8_t> bytes = frames.frame(turn);
    double bareTime = 0;
    double readyTime = 0;
    // Who comes second finds the frame's bytes in the cache, so they take turns at it.
    if (turn++ % 2 == 0) {
      bareTime = timed(bare, bytes, good);
      readyTime = timed(path, bytes, good);
    } else {
      readyTime = timed(path, bytes, good);
      bareTime = timed(bare, bytes, good);
    }
    state.SetIterationTime((bareTime + readyTime) / 1e3);
    bareTimes.push_back(bareTime);
    readyTimes.push_back(readyTime);
    ratios.push_back(readyTime / bareTime);
  }
  if (!good) state.SkipWithError("a frame did not decode");
  state.counters["bare_ms"] = median(bareTimes);
  state.counters["ready_ms"] = median(readyTimes);
  state.counters["ratio"] = median(ratios);
  state.counters["kB"] = bytesOfAll / double(frames.frameCount()) / 1e3;
}

BENCHMARK(framePath)
    ->Args({640, 480})
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Iterations(400)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessary

BENCHMARK_MAIN();
