// Records a movie in real time and prints the time stamp of every frame once it has been appended,
// so that a driver can kill it at any moment and knows what ought to be in the file.
//   recorder PATH SECONDS [WIDTH HEIGHT BITRATE]
// Ends by itself with the movie finished: "finished" and the writer's error, then "alive".

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include <fmt/core.h>

#include "ffmpeg/FfmpegAssetWriter.h"

namespace {

using namespace tessary;

constexpr int64_t kInterval = 33'333;  // microseconds

int32_t numberIn(std::string_view text) {
  int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

/// Grain over a moving edge: pictures that take all of the bit rate.
std::vector<std::shared_ptr<const PixelBuffer>> makePictures(TextureSize size) {
  std::vector<std::shared_ptr<const PixelBuffer>> pictures;
  std::minstd_rand random(7);
  for (int n = 0; n < 10; ++n) {
    auto picture = std::make_shared<PixelBuffer>(size);
    for (size_t i = 0; i < picture->byteCount(); ++i) {
      const int x = int(i / 4 % size_t(size.width));
      const int base = (x + n * 8) % 160 < 80 ? 60 : 180;
      picture->data()[i] = i % 4 == 3 ? uint8_t{255} : uint8_t(base + int(random() >> 24U) % 32);
    }
    pictures.push_back(std::move(picture));
  }
  return pictures;
}

void say(const std::string& line) {
  fmt::print("{}\n", line);
  std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string_view> words(arguments, arguments + count);
  if (count != 3 && count != 6) {
    fmt::print(stderr, "recorder PATH SECONDS [WIDTH HEIGHT BITRATE]\n");
    return 2;
  }
  MovieSettings settings{320, 240, 2'000'000, 30, 30};
  if (count == 6) {
    settings.width = numberIn(words[3]);
    settings.height = numberIn(words[4]);
    settings.averageBitRate = numberIn(words[5]);
  }
  std::signal(SIGXFSZ,
              SIG_IGN);  // as the program does: a file that may not grow fails to be written
  const auto pictures = makePictures({settings.width, settings.height});
  FfmpegAssetWriter writer{std::string(words[1])};
  if (const auto started = writer.startWriting(settings); !started) {
    say(started.error());
    return 1;
  }
  const MediaTime start(1'000'000);
  writer.startSessionAtSourceTime(start);
  const auto begin = std::chrono::steady_clock::now();
  const int64_t frames = numberIn(words[2]) * 1'000'000LL / kInterval;
  for (int64_t i = 0; i < frames; ++i) {
    const MediaTime time(i * kInterval);
    std::this_thread::sleep_until(begin + time);  // the camera's pace
    if (!writer.isReadyForMoreMediaData()) {
      say("dropped");
    } else if (const auto appended = writer.appendSampleBuffer(
                   {pictures[size_t(i) % pictures.size()], start + time})) {
      say(fmt::format("frame {}", time.count()));
    } else {
      say("refused " + appended.error());
    }
  }
  std::promise<void> finished;
  writer.finishWritingWithCompletionHandler([&] { finished.set_value(); });
  finished.get_future().wait();
  say("finished " + writer.error());
  say("alive");
  return 0;
}
