#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "ReadMovie.h"
#include "TemporaryFolder.h"
#include "ffmpeg/FfmpegAssetWriter.h"

namespace tessary::test {

using namespace std::chrono_literals;

/// Makes a movie in a folder of its own.
class MovieTest : public ::testing::Test {
 protected:
  static MovieSettings settingsOf(int32_t width, int32_t height, int32_t bitRate = 400000) {
    return {width, height, bitRate, 30, 30};
  }

  static std::shared_ptr<const PixelBuffer> flat(TextureSize size, uint8_t blue, uint8_t green,
                                                 uint8_t red) {
    auto picture = std::make_shared<PixelBuffer>(size);
    for (size_t i = 0; i < picture->byteCount(); i += 4) {
      picture->data()[i] = blue;
      picture->data()[i + 1] = green;
      picture->data()[i + 2] = red;
      picture->data()[i + 3] = 255;
    }
    return picture;
  }

  /// A specimen that drifts, with the grain of a camera: soft blobs, and noise of its own in every
  /// frame.
  static std::vector<std::shared_ptr<const PixelBuffer>> specimen(TextureSize size, int count) {
    std::vector<std::shared_ptr<const PixelBuffer>> pictures;
    std::minstd_rand random(1);
    for (int n = 0; n < count; ++n) {
      auto picture = std::make_shared<PixelBuffer>(size);
      uint8_t* pixel = picture->data();
      for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x, pixel += 4) {
          const int u = (x + n) % 64 - 32;
          const int v = (y + n / 2) % 48 - 24;
          const int blob = u * u + v * v < 300 ? 60 : 0;
          const int grain = int(random() >> 20U) % 24;
          for (int c = 0; c < 3; ++c)
            pixel[c] = uint8_t(std::clamp(170 - blob - 20 * c + grain, 0, 255));
          pixel[3] = 255;
        }
      }
      pictures.push_back(std::move(picture));
    }
    return pictures;
  }

  std::string pathOf(const std::string& name) const { return folder_.file(name); }

  /// Appends, waiting for room: a camera that waits for the encoder.
  static void appendWaiting(FfmpegAssetWriter& writer, const SampleBuffer& frame) {
    while (!writer.isReadyForMoreMediaData()) std::this_thread::yield();
    const auto appended = writer.appendSampleBuffer(frame);
    ASSERT_TRUE(appended) << appended.error();
  }

  static void finish(FfmpegAssetWriter& writer) {
    std::promise<void> finished;
    writer.finishWritingWithCompletionHandler([&] { finished.set_value(); });
    finished.get_future().wait();
  }

  /// Makes a movie of frames at `times`, in microseconds of the camera's clock.
  void record(FfmpegAssetWriter& writer, const std::vector<int64_t>& times,
              TextureSize size = {64, 48}) {
    const auto pictures = specimen(size, 8);
    ASSERT_TRUE(writer.startWriting(settingsOf(size.width, size.height))) << writer.error();
    writer.startSessionAtSourceTime(MediaTime(times.front()));
    for (size_t i = 0; i < times.size(); ++i)
      appendWaiting(writer, {pictures[i % pictures.size()], MediaTime(times[i])});
    finish(writer);
  }

  TemporaryFolder folder_;
};

/// `count` time stamps from `first` on, `interval` microseconds apart.
inline std::vector<int64_t> evenly(int64_t first, int64_t interval, int count) {
  std::vector<int64_t> times;
  for (int i = 0; i < count; ++i) times.push_back(first + i * interval);
  return times;
}

}  // namespace tessary::test
