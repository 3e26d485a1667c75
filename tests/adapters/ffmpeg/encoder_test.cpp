#include <fstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include "MovieFixture.h"
#include "base/Log.h"
#include "ffmpeg/EncoderEffort.h"
#include "ffmpeg/MovieEncoder.h"

namespace tessary::test {
namespace {

using Encoder = MovieTest;

struct Machine {
  int32_t width;
  int32_t height;
  unsigned cores;
  const char* preset;
};

class StartingEffort : public ::testing::TestWithParam<Machine> {};

TEST_P(StartingEffort, FitsTheMachine) {
  const auto& [width, height, cores, preset] = GetParam();
  EXPECT_STREQ(EffortLadder(width, height, 30, cores).effort().preset, preset);
}

INSTANTIATE_TEST_SUITE_P(
    , StartingEffort,
    ::testing::Values(Machine{640, 480, 2, "veryfast"}, Machine{640, 480, 1, "veryfast"},
                      Machine{1280, 720, 2, "superfast"}, Machine{1920, 1080, 2, "ultrafast"},
                      Machine{1920, 1080, 8, "superfast"}, Machine{3840, 2160, 2, "ultrafast"},
                      Machine{640, 480, 0, "veryfast"}));

TEST(EffortLadder, EndsAtTheLeastEffort) {
  EffortLadder ladder(640, 480, 30, 8);
  for (int i = 0; i < 10; ++i) ladder.stepDown();
  EXPECT_FALSE(ladder.canStepDown());
  EXPECT_STREQ(ladder.effort().preset, "ultrafast");
}

TEST(EffortLadder, ThreeQuartersOfTheTimeAreEnough) {
  EXPECT_FALSE(EffortLadder::isTooSlow(750ms, 1000ms));
  EXPECT_TRUE(EffortLadder::isTooSlow(751ms, 1000ms));
  EXPECT_FALSE(EffortLadder::isTooSlow(0ms, 0ms));
}

TEST_F(Encoder, AllEffortsOfALadderShareTheirStreamHeader) {
  for (const auto& [width, height] : {TextureSize{640, 480}, TextureSize{1280, 720}}) {
    EffortLadder ladder(width, height, 30, 64);
    std::string first;
    for (int efforts = 0;; ++efforts) {
      auto encoder = MovieEncoder::make(settingsOf(width, height, 4'000'000), ladder);
      ASSERT_TRUE(encoder) << encoder.error();
      const auto& parameters = (*encoder)->parameters();
      const std::string header(reinterpret_cast<const char*>(parameters.extradata),
                               size_t(parameters.extradata_size));
      if (efforts == 0)
        first = header;
      else
        EXPECT_EQ(header, first) << ladder.effort().preset;
      if (!ladder.canStepDown()) {
        EXPECT_GE(efforts, 1);
        break;
      }
      ladder.stepDown();
    }
  }
}

/// Bytes of this process that are in memory.
int64_t residentMemory() {
  int64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * sysconf(_SC_PAGESIZE);
}

TEST_F(Encoder, LeavesNoMemoryBehind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers keep what is freed";
#endif
  const TextureSize size{1920, 1080};
  const auto pictures = specimen(size, 1);
  const auto encodeSome = [&] {
    const EffortLadder ladder(size.width, size.height, 30, 2);
    auto encoder = MovieEncoder::make(settingsOf(size.width, size.height, 8'000'000), ladder);
    ASSERT_TRUE(encoder) << encoder.error();
    MovieEncoder::Packets packets;
    for (int64_t i = 0; i < 4; ++i) {
      ASSERT_TRUE((*encoder)->encode(*pictures[0], i * 33'333, packets));
    }
  };
  // As the recording does, on a thread of its own.
  const auto encodeElsewhere = [&] { std::jthread thread(encodeSome); };
  encodeElsewhere();
  malloc_trim(0);
  const int64_t before = residentMemory();
  for (int turn = 0; turn < 3; ++turn) {
    encodeElsewhere();
    EXPECT_LT(residentMemory() - before, 4'000'000) << "turn " << turn;
  }
}

TEST_F(Encoder, StepsDownAtAKeyFrameWhenItCanNotKeepUp) {
  const EffortLadder ladder(64, 48, 30, 2);
  auto encoder = MovieEncoder::make(settingsOf(64, 48), ladder);
  ASSERT_TRUE(encoder) << encoder.error();
  const LogRedirection quiet([](std::string_view) {});
  const auto pictures = specimen({64, 48}, 8);
  MovieEncoder::Packets packets;
  // A microsecond a frame is more than any machine can keep up with.
  std::vector<std::string> presets;
  for (int i = 0; i < 95; ++i) {
    ASSERT_TRUE((*encoder)->encode(*pictures[size_t(i) % 8], i, packets));
    if (i % 30 == 0 || i % 30 == 29) presets.push_back((*encoder)->effort().preset);
  }
  EXPECT_EQ(presets, (std::vector<std::string>{"veryfast", "veryfast", "superfast", "superfast",
                                               "ultrafast", "ultrafast", "ultrafast"}));
  ASSERT_EQ(packets.size(), 95U);
  for (size_t i = 0; i < packets.size(); ++i) {
    EXPECT_EQ(packets[i]->pts, int64_t(i));
    EXPECT_EQ(packets[i]->dts, int64_t(i));
    EXPECT_EQ((packets[i]->flags & AV_PKT_FLAG_KEY) != 0, i % 30 == 0) << i;
  }
}

TEST_F(Encoder, AMovieThatSteppedDownPlaysThroughout) {
  // Frames a microsecond apart step the encoder down, and the movie has one header for all.
  const LogRedirection quiet([](std::string_view) {});
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, evenly(0, 1, 120), {640, 480});
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->times, evenly(0, 1, 120));
}

TEST_F(Encoder, KeepsItsEffortWhileItKeepsUp) {
  auto encoder = MovieEncoder::make(settingsOf(64, 48), EffortLadder(64, 48, 30, 2));
  ASSERT_TRUE(encoder) << encoder.error();
  const auto pictures = specimen({64, 48}, 8);
  MovieEncoder::Packets packets;
  for (int i = 0; i < 95; ++i)
    ASSERT_TRUE((*encoder)->encode(*pictures[size_t(i) % 8], i * 10'000'000LL, packets));
  EXPECT_STREQ((*encoder)->effort().preset, "veryfast");
}

}  // namespace
}  // namespace tessary::test
