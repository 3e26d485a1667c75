#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>

#include <gmock/gmock.h>

#include "LogCapture.h"
#include "MovieFixture.h"

namespace tessary::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

/// Copies the file before and after every step, and in the middle of every long one: what a process
/// that was killed there leaves behind.
class Snapshots final : public MovieFileCalls {
 public:
  explicit Snapshots(std::filesystem::path movie) : movie_(std::move(movie)) {}

  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    // 16 bytes that lie in one page can't be torn apart.
    const size_t first = bytes.size() > 16 ? bytes.size() / 2 : bytes.size();
    ssize_t written = MovieFileCalls::writeAt(fd, bytes.first(first), offset);
    snap();
    if (first == bytes.size()) return written;
    written += MovieFileCalls::writeAt(fd, bytes.subspan(first), offset + written);
    snap();
    return written;
  }
  int truncate(int fd, int64_t length) override {
    const int result = MovieFileCalls::truncate(fd, length);
    snap();
    return result;
  }
  int flushToDisk(int fd) override {
    snap();
    return MovieFileCalls::flushToDisk(fd);
  }

  const std::vector<std::filesystem::path>& taken() const { return taken_; }

 private:
  void snap() {
    if (!std::filesystem::exists(movie_)) return;
    auto copy = movie_;
    copy.replace_extension("step" + std::to_string(taken_.size()) + ".mp4");
    std::filesystem::copy_file(movie_, copy);
    taken_.push_back(copy);
  }

  std::filesystem::path movie_;
  std::vector<std::filesystem::path> taken_;
};

/// Fails at the n-th step, from 0, with `code`; with `forGood` at all that follow as well. What the
/// failing write could still place stays.
class FailingCalls final : public MovieFileCalls {
 public:
  FailingCalls(int step, int code, bool forGood) : step_(step), code_(code), forGood_(forGood) {}

  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    if (!failsNow()) return MovieFileCalls::writeAt(fd, bytes, offset);
    if (bytes.size() > 16) MovieFileCalls::writeAt(fd, bytes.first(bytes.size() / 2), offset);
    errno = code_;
    return -1;
  }
  int flushToDisk(int fd) override {
    if (!failsNow()) return MovieFileCalls::flushToDisk(fd);
    errno = code_;
    return -1;
  }
  int steps() const { return steps_; }

 private:
  bool failsNow() {
    const int step = steps_++;
    return step == step_ || (forGood_ && step > step_);
  }

  const int step_;
  const int code_;
  const bool forGood_;
  int steps_ = 0;
};

/// Writing waits until it is let go.
class StallingCalls final : public MovieFileCalls {
 public:
  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    std::unique_lock lock(mutex_);
    stalled_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
    return MovieFileCalls::writeAt(fd, bytes, offset);
  }
  void waitUntilStalled() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stalled_; });
  }
  void letGo() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  bool stalled_ = false;
  bool open_ = false;
};

/// A file system without nameless files, or without the means to name them.
class PlainFileSystem final : public MovieFileCalls {
 public:
  explicit PlainFileSystem(bool hasNameless) : hasNameless_(hasNameless) {}
  int openNameless(const std::string& folder) override {
    if (hasNameless_) return MovieFileCalls::openNameless(folder);
    errno = EOPNOTSUPP;
    return -1;
  }
  int link(int, const std::string&) override {
    errno = ENOENT;
    return -1;
  }

 private:
  const bool hasNameless_;
};

class MovieFileTest : public MovieTest {
 protected:
  /// The number of frames that a player finds.
  static size_t framesIn(const std::filesystem::path& path) {
    const auto movie = readMovie(path);
    EXPECT_TRUE(movie) << path;
    return movie ? movie->times.size() : 0;
  }

  static constexpr int kFrames = 31;
  const std::vector<int64_t> times_ = evenly(0, 33'333, kFrames);
};

TEST_F(MovieFileTest, KilledAtAnyStepItPlays) {
  Snapshots calls(pathOf("a.mp4"));
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  record(writer, times_);
  ASSERT_EQ(writer.error(), "");

  // Two steps of long writes and one of a short one a fragment, then those of finishing.
  ASSERT_GE(calls.taken().size(), 15U);
  size_t before = 1;
  std::vector<size_t> found;
  for (const auto& snapshot : calls.taken()) {
    const size_t frames = framesIn(snapshot);
    EXPECT_GE(frames, before) << "frames were lost again at " << snapshot;
    before = frames;
    found.push_back(frames);
    const auto movie = readMovie(snapshot);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->times, evenly(0, 33'333, int(frames))) << snapshot;
    EXPECT_FALSE(readBoxes(snapshot, true).empty()) << snapshot;
  }
  // Finishing: contents half written, whole, on the disk, in force, on the disk.
  ASSERT_GE(found.size(), 6U);
  EXPECT_TRUE(std::all_of(found.end() - 5, found.end(), [](size_t n) { return n == kFrames; }));
}

TEST_F(MovieFileTest, WhileItIsRecordedNoMoreThanAFragmentIsMissing) {
  Snapshots calls(pathOf("a.mp4"));
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  record(writer, times_);
  size_t before = 0;
  for (const auto& snapshot : calls.taken()) {
    const size_t frames = framesIn(snapshot);
    EXPECT_LE(frames, before + 8) << "a fragment of more than a quarter of a second";
    before = frames;
  }
}

TEST_F(MovieFileTest, AFailureAtAnyStepLeavesAMovieAndAReason) {
  FailingCalls counting(-1, 0, false);
  {
    FfmpegAssetWriter writer(pathOf("count.mp4"), counting);
    record(writer, times_);
    ASSERT_EQ(writer.error(), "");
  }
  for (const bool forGood : {false, true}) {
    for (int step = 0; step < counting.steps(); ++step) {
      const LogCapture log;
      const std::string path = pathOf(std::to_string(step) + (forGood ? "g.mp4" : ".mp4"));
      FailingCalls calls(step, ENOSPC, forGood);
      FfmpegAssetWriter writer(path, calls);
      const auto pictures = specimen({64, 48}, 8);
      ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
      writer.startSessionAtSourceTime(MediaTime(0));
      for (const int64_t time : times_) {
        while (!writer.isReadyForMoreMediaData()) std::this_thread::yield();
        if (!writer.appendSampleBuffer({pictures[0], MediaTime(time)})) break;
      }
      finish(writer);
      EXPECT_THAT(writer.error(), HasSubstr("the disk is full")) << step;
      EXPECT_THAT(log.lines(), SizeIs(1)) << step;
      if (writer.framesWritten() == 0) {
        EXPECT_FALSE(std::filesystem::exists(path)) << step;
      } else {
        EXPECT_EQ(framesIn(path), size_t(writer.framesWritten())) << step;
        EXPECT_FALSE(readBoxes(path).empty()) << "cut short at step " << step;
      }
    }
  }
}

TEST_F(MovieFileTest, AFullDiskInTheMiddleStillMakesAnOrdinaryMovie) {
  const LogCapture log;
  FailingCalls calls(5, ENOSPC, false);
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  bool taken = true;
  for (int i = 0; taken; ++i) {
    while (!writer.isReadyForMoreMediaData()) std::this_thread::yield();
    taken = writer.appendSampleBuffer({picture, MediaTime(i * 33'333)});
  }
  EXPECT_THAT(writer.error(), HasSubstr("The movie's first"));
  finish(writer);
  EXPECT_THAT(readBoxes(pathOf("a.mp4")), Contains("moov"));
  EXPECT_THAT(readBoxes(pathOf("a.mp4")), Not(Contains("moof")));
  EXPECT_EQ(framesIn(pathOf("a.mp4")), size_t(writer.framesWritten()));
}

TEST_F(MovieFileTest, FailuresAreToldInPlainWords) {
  struct Row {
    int code;
    const char* reason;
  };
  for (const auto& [code, reason] :
       {Row{ENOSPC, "the disk is full"}, Row{EDQUOT, "the disk is full"},
        Row{EFBIG, "as large as the disk allows"}, Row{EIO, "the disk does not answer"},
        Row{ENODEV, "the disk does not answer"}, Row{EROFS, "can only be read"},
        Row{EACCES, "may not be written to"}, Row{ENOTTY, "Inappropriate ioctl"}}) {
    const LogCapture log;
    FailingCalls calls(0, code, true);
    FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
    ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
    writer.startSessionAtSourceTime(MediaTime(0));
    appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
    finish(writer);
    EXPECT_THAT(writer.error(), HasSubstr(reason));
    EXPECT_THAT(log.lines(), ElementsAre("Movie: " + writer.error()));
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  }
}

TEST_F(MovieFileTest, FramesThatTheEncoderCanNotTakeAreNotQueuedUp) {
  StallingCalls calls;
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  EXPECT_TRUE(writer.isReadyForMoreMediaData());
  int64_t time = 0;
  ASSERT_TRUE(writer.appendSampleBuffer({picture, MediaTime(time++)}));
  calls.waitUntilStalled();

  int taken = 0;
  while (writer.isReadyForMoreMediaData()) {
    ASSERT_TRUE(writer.appendSampleBuffer({picture, MediaTime(time++)}));
    ASSERT_LE(++taken, 8);
  }
  EXPECT_EQ(taken, 4);
  EXPECT_FALSE(writer.appendSampleBuffer({picture, MediaTime(time)}));
  EXPECT_THAT(writer.error(), HasSubstr("not kept up"));
  calls.letGo();
  finish(writer);
  EXPECT_EQ(writer.error(), "");
  EXPECT_EQ(framesIn(pathOf("a.mp4")), size_t(taken) + 1);
}

TEST_F(MovieFileTest, AnEncoderThatIsFarTooSlowDoesNotMakeTheMoviesEndLate) {
  StallingCalls calls;
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  const auto append = [&](int64_t milliseconds) {
    return writer.isReadyForMoreMediaData() &&
           writer.appendSampleBuffer({picture, MediaTime(milliseconds * 1000)});
  };
  ASSERT_TRUE(append(0));
  calls.waitUntilStalled();
  EXPECT_TRUE(append(100));
  EXPECT_TRUE(append(200));
  EXPECT_FALSE(append(300));
  calls.letGo();
  finish(writer);
  EXPECT_EQ(framesIn(pathOf("a.mp4")), 3U);
}

TEST_F(MovieFileTest, CutShortItKeepsItsTimes) {
  // The first frame lost, others too, and a camera that stutters, in every fragment.
  std::vector<int64_t> times;
  for (int i = 1; i < 40; ++i)
    if (i % 7 != 0) times.push_back(i * 40'000 + i % 3 * 1234);
  Snapshots calls(pathOf("a.mp4"));
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(5'000'000));
  for (const int64_t time : times) appendWaiting(writer, {picture, MediaTime(5'000'000 + time)});
  finish(writer);
  for (const auto& snapshot : calls.taken()) {
    const auto movie = readMovie(snapshot);
    ASSERT_TRUE(movie);
    ASSERT_LE(movie->times.size(), times.size());
    EXPECT_TRUE(std::equal(movie->times.begin(), movie->times.end(), times.begin()))
        << snapshot << ": " << ::testing::PrintToString(movie->times);
  }
}

TEST_F(MovieFileTest, FramesGetIntoTheFileAlsoWhenNoOtherFollows) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  for (int i = 0; i < 3; ++i) appendWaiting(writer, {picture, MediaTime(i * 33'333)});
  while (writer.framesWritten() < 3) std::this_thread::yield();
  EXPECT_EQ(framesIn(pathOf("a.mp4")), 3U);
  finish(writer);
}

TEST_F(MovieFileTest, UnderItsNameTheFileAppearsWithItsFirstFrame) {
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  while (writer.framesWritten() < 1) std::this_thread::yield();
  EXPECT_EQ(framesIn(pathOf("a.mp4")), 1U);
}

TEST_F(MovieFileTest, AFileSystemWithoutNamelessFilesWillDo) {
  for (const bool hasNameless : {false, true}) {
    PlainFileSystem calls(hasNameless);
    const std::string path = pathOf(hasNameless ? "a.mp4" : "b.mp4");
    {
      FfmpegAssetWriter writer(path, calls);
      ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    FfmpegAssetWriter writer(path, calls);
    record(writer, times_);
    EXPECT_EQ(writer.error(), "");
    EXPECT_EQ(framesIn(path), size_t(kFrames));
  }
}

TEST_F(MovieFileTest, AMovieThatIsDeletedMeanwhileIsMissed) {
  const LogCapture log;
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  appendWaiting(writer, {picture, MediaTime(0)});
  while (writer.framesWritten() < 1) std::this_thread::yield();
  std::filesystem::remove(pathOf("a.mp4"));
  finish(writer);
  EXPECT_THAT(writer.error(), HasSubstr("its file was deleted"));
}

TEST_F(MovieFileTest, AFolderThatVanishesBeforeTheFirstFrameIsTold) {
  const LogCapture log;
  const auto folder = folder_.path() / "folder";
  std::filesystem::create_directory(folder);
  FfmpegAssetWriter writer((folder / "a.mp4").string());
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  std::filesystem::remove_all(folder);
  writer.startSessionAtSourceTime(MediaTime(0));
  appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  finish(writer);
  EXPECT_THAT(writer.error(), HasSubstr("is gone"));
}

}  // namespace
}  // namespace tessary::test
