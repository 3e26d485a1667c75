#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>

#include "LogCapture.h"
#include "MovieFixture.h"
#include "base/SerialQueue.h"
#include "ffmpeg/MovieRecorder.h"

namespace tessary::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// A file system without nameless files, or without the means to name them.
class PlainFileSystem : public FileCalls {
 public:
  explicit PlainFileSystem(bool hasNameless) : hasNameless_(hasNameless) {}
  int openNameless(const std::string& folder) override {
    if (hasNameless_) return FileCalls::openNameless(folder);
    errno = EOPNOTSUPP;
    return -1;
  }
  int link(int fd, const std::string& path) override {
    if (canLink) return FileCalls::link(fd, path);
    errno = ENOENT;
    return -1;
  }
  bool canLink = false;

 private:
  const bool hasNameless_;
};

/// Copies the file before and after every step, and in the middle of every long one: what a process
/// that was killed there leaves behind.
class Snapshots final : public PlainFileSystem {
 public:
  explicit Snapshots(std::filesystem::path movie, bool hasNameless = true)
      : PlainFileSystem(hasNameless), movie_(std::move(movie)) {
    canLink = true;
  }

  int openNew(const std::string& path) override {
    const int fd = FileCalls::openNew(path);
    snap();
    return fd;
  }

  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    // 16 bytes that lie in one page can't be torn apart.
    const size_t first = bytes.size() > 16 ? bytes.size() / 2 : bytes.size();
    ssize_t written = FileCalls::writeAt(fd, bytes.first(first), offset);
    snap();
    if (first == bytes.size()) return written;
    written += FileCalls::writeAt(fd, bytes.subspan(first), offset + written);
    snap();
    return written;
  }
  int truncate(int fd, int64_t length) override {
    const int result = FileCalls::truncate(fd, length);
    snap();
    return result;
  }
  int flushToDisk(int fd) override {
    snap();
    return FileCalls::flushToDisk(fd);
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
class FailingCalls final : public FileCalls {
 public:
  FailingCalls(int step, int code, bool forGood) : step_(step), code_(code), forGood_(forGood) {}

  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    if (!failsNow()) return FileCalls::writeAt(fd, bytes, offset);
    if (bytes.size() > 16) FileCalls::writeAt(fd, bytes.first(bytes.size() / 2), offset);
    errno = code_;
    return -1;
  }
  int flushToDisk(int fd) override {
    if (!failsNow()) return FileCalls::flushToDisk(fd);
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

/// The folder goes away as soon as a file without a name has been made in it.
class VanishingFolder final : public FileCalls {
 public:
  explicit VanishingFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}
  int openNameless(const std::string& folder) override {
    const int fd = FileCalls::openNameless(folder);
    std::filesystem::remove_all(folder_);
    return fd;
  }

 private:
  const std::filesystem::path folder_;
};

/// A disk that does not answer until it is let go: any call waits, or writing alone.
class StallingCalls final : public FileCalls {
 public:
  explicit StallingCalls(bool fromTheStart = false) : fromTheStart_(fromTheStart) {}

  int openNameless(const std::string& folder) override {
    if (fromTheStart_) stall();
    return FileCalls::openNameless(folder);
  }
  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    stall();
    return FileCalls::writeAt(fd, bytes, offset);
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
  void stall() {
    std::unique_lock lock(mutex_);
    stalled_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }

  const bool fromTheStart_;
  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  bool stalled_ = false;
  bool open_ = false;
};

class MovieFileTest : public MovieTest {
 protected:
  /// The number of frames that a player finds.
  static size_t framesIn(const std::filesystem::path& path) {
    const auto movie = readMovie(path);
    EXPECT_TRUE(movie) << path;
    return movie ? movie->times.size() : 0;
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
      names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
  }
  void makeOld(const std::string& name) const {
    std::filesystem::last_write_time(
        pathOf(name), std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  }
  void makeOldFile(const std::string& name) const {
    std::ofstream(pathOf(name)) << "old";
    makeOld(name);
  }

  static constexpr int kFrames = 31;
  const std::vector<int64_t> times_ = evenly(0, 33'333, kFrames);
};

/// Whether it has nameless files.
class MovieOnAnyFileSystem : public MovieFileTest, public ::testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(, MovieOnAnyFileSystem, ::testing::Bool());

TEST_P(MovieOnAnyFileSystem, KilledAtAnyStepItPlays) {
  Snapshots calls(pathOf("a.mp4"), GetParam());
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
  // How many steps a movie takes depends on how many frames waited meanwhile.
  for (const bool forGood : {false, true}) {
    int step = 0;
    for (bool failed = true; failed; ++step) {
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
      failed = calls.steps() > step;
      if (!failed) continue;
      EXPECT_THAT(writer.error(), HasSubstr("the disk is full")) << step;
      EXPECT_THAT(log.lines(), SizeIs(1)) << step;
      if (writer.framesWritten() == 0) {
        EXPECT_FALSE(std::filesystem::exists(path)) << step;
      } else {
        EXPECT_EQ(framesIn(path), size_t(writer.framesWritten())) << step;
        EXPECT_FALSE(readBoxes(path).empty()) << "cut short at step " << step;
      }
    }
    EXPECT_GE(step, 15);
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
    taken = bool(writer.appendSampleBuffer({picture, MediaTime(i * 33'333)}));
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
  EXPECT_THAT(writer.appendSampleBuffer({picture, MediaTime(time)}).error(),
              HasSubstr("not kept up"));
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

TEST_F(MovieFileTest, WithoutNamelessFilesItIsHiddenUntilItHasAFrame) {
  PlainFileSystem calls(false);
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  while (names().empty()) std::this_thread::yield();
  EXPECT_THAT(names(), ElementsAre(StartsWith(".a.mp4.")));
  writer.startSessionAtSourceTime(MediaTime(0));
  appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  while (writer.framesWritten() < 1) std::this_thread::yield();
  EXPECT_THAT(names(), ElementsAre("a.mp4"));
}

TEST_F(MovieFileTest, WithoutNamelessFilesWhatAKilledProgramLeftIsRemoved) {
  std::ofstream(pathOf(".old.mp4.999999999-3.part")) << "a beginning";
  PlainFileSystem calls(false);
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  record(writer, times_);
  EXPECT_THAT(names(), ElementsAre("a.mp4"));
}

// What lies at the name.

TEST_F(MovieFileTest, AnOldFileOfItsNameIsReplaced) {
  makeOldFile("a.mp4");
  FfmpegAssetWriter writer(pathOf("a.mp4"));
  record(writer, times_);
  EXPECT_EQ(writer.error(), "");
  EXPECT_THAT(names(), ElementsAre("a.mp4"));
  EXPECT_EQ(framesIn(pathOf("a.mp4")), size_t(kFrames));
}

TEST_P(MovieOnAnyFileSystem, AMovieThatAnotherProgramRecordsIsLeftAlone) {
  PlainFileSystem calls(GetParam());
  calls.canLink = true;
  FfmpegAssetWriter other(pathOf("20240131_093005.mp4"), calls);
  ASSERT_TRUE(other.startWriting(settingsOf(64, 48)));
  other.startSessionAtSourceTime(MediaTime(0));
  appendWaiting(other, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  while (other.framesWritten() < 1) std::this_thread::yield();
  makeOld("20240131_093005.mp4");

  FfmpegAssetWriter writer(pathOf("20240131_093005.mp4"), calls);
  record(writer, times_);
  finish(other);
  EXPECT_EQ(writer.error(), "");
  EXPECT_EQ(other.error(), "");
  EXPECT_THAT(names(), ElementsAre("20240131_093005.mp4", "20240131_093005_1.mp4"));
  EXPECT_EQ(framesIn(pathOf("20240131_093005.mp4")), 1U);
  EXPECT_EQ(framesIn(pathOf("20240131_093005_1.mp4")), size_t(kFrames));
}

TEST_P(MovieOnAnyFileSystem, TwoThatBeginTogetherBothGetAName) {
  PlainFileSystem calls(GetParam());
  calls.canLink = true;
  FfmpegAssetWriter first(pathOf("20240131_093005_1.mp4"), calls);
  FfmpegAssetWriter second(pathOf("20240131_093005_1.mp4"), calls);
  for (FfmpegAssetWriter* writer : {&first, &second}) {
    ASSERT_TRUE(writer->startWriting(settingsOf(64, 48)));
    writer->startSessionAtSourceTime(MediaTime(0));
  }
  for (FfmpegAssetWriter* writer : {&first, &second}) {
    appendWaiting(*writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
    finish(*writer);
    EXPECT_EQ(writer->error(), "");
  }
  EXPECT_THAT(names(), ElementsAre("20240131_093005_1.mp4", "20240131_093005_2.mp4"));
}

TEST_F(MovieFileTest, AFileThatWasMadeJustNowIsLeftAlone) {
  std::ofstream(pathOf("20240131_093005.mp4")) << "another program's";
  makeOldFile("20240131_093005_1.mp4");
  FfmpegAssetWriter writer(pathOf("20240131_093005.mp4"));
  record(writer, times_);
  EXPECT_EQ(std::filesystem::file_size(pathOf("20240131_093005.mp4")), 17U);
  EXPECT_EQ(std::filesystem::file_size(pathOf("20240131_093005_1.mp4")), 3U);
  EXPECT_EQ(framesIn(pathOf("20240131_093005_2.mp4")), size_t(kFrames));
}

// A disk that does not answer.

TEST_F(MovieFileTest, NobodyWaitsForADiskThatDoesNotAnswer) {
  for (const bool fromTheStart : {true, false}) {
    StallingCalls calls(fromTheStart);
    const auto completed = std::make_shared<std::atomic<bool>>(false);
    {
      FfmpegAssetWriter writer(pathOf(fromTheStart ? "a.mp4" : "b.mp4"), calls, 50ms);
      ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
      writer.startSessionAtSourceTime(MediaTime(0));
      appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
      calls.waitUntilStalled();
      writer.finishWritingWithCompletionHandler([completed] { *completed = true; });
    }
    EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
    EXPECT_EQ(completed.use_count(), 1) << "nothing is left that could call it";
    calls.letGo();
    while (SerialQueue::abandonedThreads() > 0) std::this_thread::yield();
    EXPECT_FALSE(*completed);
    EXPECT_EQ(framesIn(pathOf(fromTheStart ? "a.mp4" : "b.mp4")), 1U) << "it came back after all";
  }
}

TEST_F(MovieFileTest, NoFrameIsTakenWhileTheOldestHasWaitedLong) {
  StallingCalls calls;
  FfmpegAssetWriter writer(pathOf("a.mp4"), calls);
  const auto picture = flat({64, 48}, 1, 2, 3);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  const auto began = std::chrono::steady_clock::now();
  ASSERT_TRUE(writer.appendSampleBuffer({picture, MediaTime(0)}));
  calls.waitUntilStalled();
  while (writer.isReadyForMoreMediaData() && std::chrono::steady_clock::now() - began < 10s)
    std::this_thread::yield();
  EXPECT_FALSE(writer.isReadyForMoreMediaData());
  EXPECT_GE(std::chrono::steady_clock::now() - began, MovieRecorder::kLongestUnwritten);
  calls.letGo();
  while (!writer.isReadyForMoreMediaData()) std::this_thread::yield();
  finish(writer);
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
  const std::filesystem::path folder = folder_.file("folder");
  std::filesystem::create_directory(folder);
  VanishingFolder calls(folder);
  FfmpegAssetWriter writer((folder / "a.mp4").string(), calls);
  ASSERT_TRUE(writer.startWriting(settingsOf(64, 48)));
  writer.startSessionAtSourceTime(MediaTime(0));
  appendWaiting(writer, {flat({64, 48}, 1, 2, 3), MediaTime(0)});
  finish(writer);
  EXPECT_THAT(writer.error(), HasSubstr("is gone"));
}

}  // namespace
}  // namespace tessary::test
