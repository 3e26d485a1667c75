// What recording costs, on frames of the simulated microscope (they have a camera's grain).
//   movie_bench efforts                          every effort of the encoder at every size: the
//                                                numbers that
//                                                src/adapters/ffmpeg/ffmpeg/EncoderEffort.cpp
//                                                chooses by
//   movie_bench record WIDTH HEIGHT SECONDS MOVIE FRAMES
//                                                records MOVIE in real time, having written one
//                                                loop of the frames to FRAMES, raw BGRA, for
//                                                another program to encode
// bench/movie_bench.py runs `record` at three sizes beside the ffmpeg program.

#include <charconv>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <string_view>
#include <thread>
#include <vector>

#include <fmt/core.h>
#include <sys/resource.h>

#include "ffmpeg/FfmpegAssetWriter.h"
#include "ffmpeg/MovieEncoder.h"
#include "simulated/SimulatedScene.h"

namespace {

using namespace tessary;
using namespace std::chrono;

constexpr size_t kLoop = 16;           // pictures
constexpr int64_t kInterval = 33'333;  // microseconds
constexpr size_t kFramesAnEffort = 150;

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

MovieSettings settingsOf(TextureSize size) {
  const int32_t pixels = size.width * size.height;
  const float factor = pixels <= 640 * 480 ? 4.05F : 10.1F;
  return {size.width, size.height, int32_t(float(pixels) * factor), 30, 30};
}

std::vector<std::shared_ptr<const PixelBuffer>> makeFrames(TextureSize size) {
  const SimulatedScene scene(size, kLoop);
  std::vector<std::shared_ptr<const PixelBuffer>> frames;
  for (size_t i = 0; i < kLoop; ++i) {
    auto frame = std::make_shared<PixelBuffer>(size);
    scene.draw(i, *frame);
    frames.push_back(std::move(frame));
  }
  return frames;
}

int measureEfforts() {
  fmt::print("{:>10} {:>10} {:>8} {:>14} {:>14} {:>16} {:>8}\n", "size", "effort", "threads",
             "wall ms/frame", "CPU ms/frame", "CPU ms/megapixel", "Mbit/s");
  for (const TextureSize size : {TextureSize{640, 480}, {1280, 720}, {1920, 1080}}) {
    const auto frames = makeFrames(size);
    EffortLadder ladder(size.width, size.height, 1, std::thread::hardware_concurrency());
    for (;;) {
      // The effort can only change at a key frame, and here is but one.
      MovieSettings settings = settingsOf(size);
      settings.maxKeyFrameInterval = 2 * int32_t(kFramesAnEffort);
      auto encoder = MovieEncoder::make(settings, ladder);
      if (!encoder) {
        fmt::print(stderr, "{}\n", encoder.error());
        return 1;
      }
      MovieEncoder::Packets packets;
      const double cpu = cpuSeconds();
      const auto begin = steady_clock::now();
      // Frames a second apart: it never finds itself too slow.
      Result<void> encoded;
      for (size_t i = 0; encoded && i < kFramesAnEffort; ++i)
        encoded = (*encoder)->encode(*frames[i % kLoop], int64_t(i) * kInterval, packets);
      const double wall = duration<double, std::milli>(steady_clock::now() - begin).count();
      const double perFrame = (cpuSeconds() - cpu) * 1e3 / kFramesAnEffort;
      double bits = 0;
      for (const auto& packet : packets) bits += packet->size * 8.0;
      const double megapixels = double(size.width) * size.height * 1e-6;
      fmt::print("{:>10} {:>10} {:>8} {:>14.2f} {:>14.2f} {:>16.2f} {:>8.2f}\n",
                 fmt::format("{}x{}", size.width, size.height), ladder.effort().preset,
                 ladder.threads(), wall / kFramesAnEffort, perFrame, perFrame / megapixels,
                 bits / (double(kFramesAnEffort) * kInterval));
      if (!ladder.canStepDown()) break;
      ladder.stepDown();
    }
  }
  return 0;
}

int record(TextureSize size, int32_t seconds, const std::string& movie, const std::string& raw) {
  const auto frames = makeFrames(size);
  {
    std::ofstream file(raw, std::ios::binary);
    for (const auto& frame : frames)
      file.write(reinterpret_cast<const char*>(frame->data()), std::streamsize(frame->byteCount()));
  }
  std::filesystem::remove(movie);
  FfmpegAssetWriter writer(movie);
  const double cpu = cpuSeconds();
  if (const auto started = writer.startWriting(settingsOf(size)); !started) {
    fmt::print(stderr, "{}\n", started.error());
    return 1;
  }
  writer.startSessionAtSourceTime(MediaTime(0));
  const auto begin = steady_clock::now();
  int64_t offered = 0;
  int64_t dropped = 0;
  microseconds longest{0};
  for (; offered * kInterval < seconds * 1'000'000LL; ++offered) {
    const MediaTime time(offered * kInterval);
    std::this_thread::sleep_until(begin + time);
    const auto before = steady_clock::now();
    if (!writer.isReadyForMoreMediaData() ||
        !writer.appendSampleBuffer({frames[size_t(offered) % kLoop], time}))
      ++dropped;
    longest = std::max(longest, duration_cast<microseconds>(steady_clock::now() - before));
  }
  const auto end = steady_clock::now();
  std::promise<void> finished;
  writer.finishWritingWithCompletionHandler([&] { finished.set_value(); });
  finished.get_future().wait();
  const double cpuUsed = cpuSeconds() - cpu;
  const double finishing = duration<double, std::milli>(steady_clock::now() - end).count();
  const EffortLadder ladder(size.width, size.height, 30, std::thread::hardware_concurrency());
  fmt::print("preset {} features {} offered {} written {} dropped {} cpu {:.3f} bits {:.0f} ",
             ladder.effort().preset, ladder.streamFeatures(), offered, writer.framesWritten(),
             dropped, cpuUsed, double(std::filesystem::file_size(movie)) * 8 / seconds);
  fmt::print("append_us {} finish_ms {:.0f}\n", longest.count(), finishing);
  if (!writer.error().empty()) fmt::print(stderr, "{}\n", writer.error());
  return writer.error().empty() ? 0 : 1;
}

int32_t numberIn(std::string_view text) {
  int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments, arguments + count);
  if (count == 2 && words[1] == "efforts") return measureEfforts();
  if (count == 7 && words[1] == "record")
    return record({numberIn(words[2]), numberIn(words[3])}, numberIn(words[4]), words[5], words[6]);
  fmt::print(stderr, "movie_bench efforts | record WIDTH HEIGHT SECONDS MOVIE FRAMES\n");
  return 2;
}
