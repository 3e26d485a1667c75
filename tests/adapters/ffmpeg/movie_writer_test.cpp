#include <algorithm>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>

#include "LogCapture.h"
#include "MovieFixture.h"

namespace tessary::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using MovieWriter = MovieTest;

TEST_F(MovieWriter, AMovieIsH264InAQuickTimeFileOfTheFramesSize) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, evenly(5'000'000, 33'333, 10), {320, 240});
  EXPECT_EQ(writer.error(), "");
  EXPECT_EQ(writer.framesWritten(), 10);

  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->majorBrand, "qt  ");
  EXPECT_EQ(movie->codec, "h264");
  EXPECT_EQ(movie->tracks, 1);
  EXPECT_EQ(movie->width, 320);
  EXPECT_EQ(movie->height, 240);
  EXPECT_EQ(movie->reorderDelay, 0);
  EXPECT_EQ(movie->times.size(), 10U);
}

TEST_F(MovieWriter, AFinishedMovieIsAnOrdinaryOne) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, evenly(0, 33'333, 60));
  const auto boxes = readBoxes(pathOf("a.mp4"));
  std::vector<std::string> top;
  std::ranges::copy_if(boxes, std::back_inserter(top),
                       [](const std::string& box) { return box.find('/') == std::string::npos; });
  EXPECT_THAT(top, ElementsAre("ftyp", "mdat", "moov"));
  EXPECT_THAT(boxes, Each(Not(HasSubstr("mvex"))));
  EXPECT_THAT(boxes, Each(Not(HasSubstr("edts"))));
}

struct Timing {
  const char* name;
  int64_t start;
  std::vector<int64_t> times;
};

class MovieTimes : public MovieTest, public ::testing::WithParamInterface<Timing> {};

TEST_P(MovieTimes, AreTheCamerasToTheMicrosecond) {
  const auto& [name, start, times] = GetParam();
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto pictures = specimen({64, 48}, 4);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(start));
  for (const int64_t time : times)
    appendWaiting(writer, {pictures[size_t(time) % 4], MediaTime(time)});
  finish(writer);

  std::vector<int64_t> expected;
  for (const int64_t time : times) expected.push_back(time - start);
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->times, expected);
}

INSTANTIATE_TEST_SUITE_P(
    , MovieTimes,
    ::testing::Values(
        Timing{"Even", 1'000'000, evenly(1'000'000, 33'333, 40)},
        Timing{"ByTheMicrosecond", 7, {7, 8, 10, 13, 1000, 1001, 33'333, 66'667, 99'999, 100'000}},
        Timing{"Jitter",
               123'456'789,
               {123'456'789, 123'489'001, 123'523'456, 123'556'780, 123'590'117}},
        Timing{"Gap", 0, {0, 33'333, 66'666, 12'000'001, 12'033'334, 95'000'000}},
        Timing{"SlowCamera", 0, evenly(0, 200'000, 12)},
        Timing{"HighClock", 40LL * 86'400 * 1'000'000,
               evenly(40LL * 86'400 * 1'000'000, 33'366, 9)},
        Timing{"FirstFrameLost", 1'000'000, {1'033'333, 1'066'666, 1'100'001}},
        Timing{"OneFrame", 500, {500}}),
    [](const auto& row) { return row.param.name; });

TEST_F(MovieWriter, TheLastFrameLastsAsLongAsTheOneBeforeIt) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, {0, 40'000, 80'000});
  EXPECT_EQ(readMovie(pathOf("a.mp4"))->duration, 120'000);
}

TEST_F(MovieWriter, TheLastFrameLastsAsLongAlsoWhenItWasWrittenBeforeTheEnd) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  for (int i = 0; i < 3; ++i) appendWaiting(writer, {picture, MediaTime(i * 40'000)});
  while (writer.framesWritten() < 3) std::this_thread::yield();
  finish(writer);
  EXPECT_EQ(readMovie(pathOf("a.mp4"))->duration, 120'000);
}

TEST_F(MovieWriter, AfterAGapTheLastFrameLastsASecondAtTheMost) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, {0, 40'000, 60'000'000});
  EXPECT_EQ(readMovie(pathOf("a.mp4"))->duration, 61'000'000);
}

TEST_F(MovieWriter, AGapTooLongForTheContainerIsBridgedByThePictureThatStands) {
  constexpr int64_t kMinute = 60'000'000;
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const LogCapture log;
  record(writer, {0, 33'333, 75 * kMinute});
  EXPECT_THAT(log.lines(), ElementsAre());
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_THAT(movie->times,
              ElementsAre(0, 33'333, 33'333 + 30 * kMinute, 33'333 + 60 * kMinute, 75 * kMinute));
}

TEST_F(MovieWriter, EveryThirtiethFrameIsAKeyFrameAndNoOther) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const TextureSize size{64, 48};
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  // A cut to another picture in between asks for none.
  for (int i = 0; i < 95; ++i)
    appendWaiting(writer, {flat(size, uint8_t(i < 50 ? 10 : 240), 128, 30), MediaTime(i * 33'333)});
  finish(writer);
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  ASSERT_EQ(movie->keys.size(), 95U);
  for (size_t i = 0; i < movie->keys.size(); ++i) EXPECT_EQ(movie->keys[i], i % 30 == 0) << i;
}

TEST_F(MovieWriter, ColoursComeBackAsTheyWere) {
  const std::vector<std::array<int, 3>> colors{{0, 0, 0},     {255, 255, 255}, {128, 128, 128},
                                               {200, 60, 30}, {30, 200, 60},   {40, 70, 220},
                                               {16, 16, 16},  {235, 235, 235}};
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 64, 4'000'000)));
  writer.startSessionAtSourceTime(MediaTime(0));
  int64_t time = 0;
  for (const auto& [blue, green, red] : colors)
    appendWaiting(writer, {flat({64, 64}, uint8_t(blue), uint8_t(green), uint8_t(red)),
                           MediaTime(time += 33'333)});
  finish(writer);
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_TRUE(movie->fullRange);
  EXPECT_TRUE(movie->bt601);
  ASSERT_EQ(movie->colors.size(), colors.size());
  for (size_t i = 0; i < colors.size(); ++i)
    for (size_t c = 0; c < 3; ++c)
      EXPECT_NEAR(movie->colors[i][c], colors[i][c], 4) << i << ' ' << c;
}

struct Rate {
  TextureSize size;
  int32_t bitRate;
  int64_t interval;  // microseconds
};

class MovieBitRate : public MovieTest, public ::testing::WithParamInterface<Rate> {};

TEST_P(MovieBitRate, IsTheOneThatWasAskedForOverTwentySeconds) {
  const auto& [size, bitRate, interval] = GetParam();
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto pictures = specimen(size, 12);
  ASSERT_TRUE(writer.startWriting(settingsOf(size.width, size.height, bitRate)));
  writer.startSessionAtSourceTime(MediaTime(0));
  for (int64_t i = 0; i * interval < 20'000'000; ++i)
    appendWaiting(writer, {pictures[size_t(i) % pictures.size()], MediaTime(i * interval)});
  finish(writer);
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_NEAR(movie->bitRate, bitRate, 0.15 * bitRate);
}

std::string nameOf(const ::testing::TestParamInfo<Rate>& row) {
  const auto [size, bitRate, interval] = row.param;
  return std::to_string(size.width) + "x" + std::to_string(size.height) + "Every" +
         std::to_string(interval / 1000) + "ms";
}

INSTANTIATE_TEST_SUITE_P(, MovieBitRate,
                         ::testing::Values(Rate{{320, 240}, 311'040, 33'333},
                                           Rate{{640, 480}, 1'244'160, 33'333},
                                           Rate{{640, 480}, 1'244'160, 100'000},
                                           Rate{{800, 600}, 4'848'000, 66'667}),
                         nameOf);

TEST_F(MovieWriter, AStopBeforeAnyFrameLeavesNoFile) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  finish(writer);
  EXPECT_EQ(writer.error(), "");
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(MovieWriter, AWriterThatIsDestroyedUnfinishedLeavesAPlayableMovie) {
  {
    FfmpegAssetWriter writer(pathOf("a.mp4"));
    const auto picture = flat({64, 48}, 1, 2, 3);
    ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
    writer.startSessionAtSourceTime(MediaTime(0));
    for (int i = 0; i < 7; ++i) appendWaiting(writer, {picture, MediaTime(i * 50'000)});
  }
  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->times, evenly(0, 50'000, 7));
}

TEST_F(MovieWriter, AWriterThatIsDestroyedBeforeAnyFrameLeavesNoFile) {
  for (const bool started : {false, true}) {
    FfmpegAssetWriter writer(pathOf("a.mp4"));
    if (started) {
      ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(MovieWriter, TheCompletionMayDestroyTheWriter) {
  auto writer = std::make_unique<FfmpegAssetWriter>(pathOf("a.mp4"));
  ASSERT_TRUE(writer->startWriting(settingsOf(64, 48)));
  writer->startSessionAtSourceTime(MediaTime(0));
  appendWaiting(*writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  std::promise<std::string> finished;
  writer->finishWritingWithCompletionHandler([&] {
    const std::string error = writer->error();
    writer.reset();
    finished.set_value(error);
  });
  EXPECT_EQ(finished.get_future().get(), "");
  EXPECT_TRUE(readMovie(pathOf("a.mp4")));
}

TEST_F(MovieWriter, TheFinishCompletesAlsoWhereWritingNeverBegan) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  finish(writer);
  EXPECT_EQ(writer.error(), "");
}

TEST_F(MovieWriter, FramesThatDoNotFitAreRefusedAndTheMovieGoesOn) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto picture = flat({64, 48}, 1, 2, 3);
  const auto refused = [&](const SampleBuffer& frame, const char* reason) {
    EXPECT_THAT(writer.appendSampleBuffer(frame).error(), HasSubstr(reason));
    EXPECT_EQ(writer.error(), "") << "a refused frame is no fault of the movie";
  };
  refused({picture, MediaTime(0)}, "Writing has not begun");
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  EXPECT_FALSE(writer.isReadyForMoreMediaData());
  refused({picture, MediaTime(0)}, "timeline has not begun");
  writer.startSessionAtSourceTime(MediaTime(1000));

  appendWaiting(writer, {picture, MediaTime(1000)});
  refused({picture, MediaTime(999)}, "before the movie's timeline");
  refused({picture, MediaTime(1000)}, "does not follow");
  refused({flat({32, 48}, 1, 2, 3), MediaTime(2000)}, "32 by 48 does not fit");
  refused({flat({64, 64}, 1, 2, 3), MediaTime(2000)}, "64 by 64 does not fit");
  refused({nullptr, MediaTime(2000)}, "without a picture");
  appendWaiting(writer, {picture, MediaTime(3000)});
  refused({picture, MediaTime(2000)}, "does not follow");
  finish(writer);
  refused({picture, MediaTime(4000)}, "being finished");

  const auto movie = readMovie(pathOf("a.mp4"));
  ASSERT_TRUE(movie);
  EXPECT_THAT(movie->times, ElementsAre(0, 2000));
}

TEST_F(MovieWriter, SettingsThatMakeNoMovieAreRefusedWithAReason) {
  const auto refused = [&](MovieSettings settings) {
    FfmpegAssetWriter writer(pathOf("a.mp4"));
    EXPECT_FALSE(writer.canApplyOutputSettings(settings));
    const auto started = writer.startWriting(settings);
    EXPECT_FALSE(started);
    EXPECT_EQ(writer.error(), started.error());
    finish(writer);
    return writer.error();
  };
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  EXPECT_TRUE(writer.canApplyOutputSettings({1920, 1080, 20'943'360, 30, 30}));
  EXPECT_TRUE(writer.canApplyOutputSettings({2, 2, 16, 30, 30}));
  EXPECT_THAT(refused({0, 0, 0, 30, 30}), HasSubstr("no picture"));
  EXPECT_THAT(refused({-64, 48, 1000, 30, 30}), HasSubstr("no picture"));
  EXPECT_THAT(refused({641, 480, 1000, 30, 30}), HasSubstr("even"));
  EXPECT_THAT(refused({640, 481, 1000, 30, 30}), HasSubstr("even"));
  EXPECT_THAT(refused({20000, 480, 1000, 30, 30}), HasSubstr("too large"));
  EXPECT_THAT(refused({640, 480, 0, 30, 30}), HasSubstr("too few"));
  EXPECT_THAT(refused({640, 480, 1000, 0, 30}), HasSubstr("frame rate"));
  EXPECT_THAT(refused({640, 480, 1000, 30, 0}), HasSubstr("key frame"));
}

TEST_F(MovieWriter, AFileThatCanNotBeMadeIsTold) {
  const LogCapture log;
  const auto failure = [&](const std::string& path) {
    FfmpegAssetWriter writer(path);
    EXPECT_TRUE(writer.startWriting(settingsOf(64, 48))) << "the disk has not answered yet";
    writer.startSessionAtSourceTime(MediaTime(0));
    while (writer.error().empty()) std::this_thread::yield();
    EXPECT_TRUE(writer.isReadyForMoreMediaData());
    EXPECT_EQ(writer.appendSampleBuffer({flat({64, 48}, 1, 2, 3), MediaTime(0)}).error(),
              writer.error());
    finish(writer);
    return writer.error();
  };
  std::ofstream(pathOf("there.mp4")) << "something else";
  EXPECT_THAT(failure(pathOf("no/such/folder/a.mp4")), HasSubstr("is gone"));
  EXPECT_THAT(failure("/proc/a.mp4"), HasSubstr("can't be made"));
  EXPECT_THAT(failure(pathOf("there.mp4/a.mp4")), HasSubstr("is gone"));
  EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(MovieWriter, TheFactoryWantsAWholePath) {
  const auto factory = makeFfmpegAssetWriterFactory();
  EXPECT_THAT(factory("a.mp4").error(), HasSubstr("not the whole path"));
  auto writer = factory(pathOf("a.mp4"));
  ASSERT_TRUE(writer);
  EXPECT_TRUE(*writer);
}

TEST_F(MovieWriter, FfmpegSaysNothingOfItsOwn) {
  const LogCapture log;
  ::testing::internal::CaptureStderr();
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, evenly(0, 33'333, 40));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(log.lines(), ElementsAre());
}

}  // namespace
}  // namespace tessary::test
