#include "output/Recording.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeAssetWriter.h"
#include "FakeFailureListener.h"
#include "LogCapture.h"
#include "ManualExecutor.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::Journal;
using test::LogCapture;
using test::ManualExecutor;
using test::WriterScript;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr TextureSize kVga{640, 480};

class Delegate final : public PreviewViewRecordDelegate {
 public:
  explicit Delegate(Journal& journal) : journal_(journal) {}
  void recordStatusDidChange(int64_t status) override {
    journal_.add(fmt::format("told {}", status));
  }

 private:
  Journal& journal_;
};

/// A recording whose queues run only when the test says so.
class RecordingTest : public ::testing::Test {
 protected:
  RecordingTest() {
    auto queue = std::make_unique<ManualExecutor>();
    recordingQueue = queue.get();
    recording = std::make_unique<Recording>(test::fakeWriters(script, journal), mainQueue, failures,
                                            std::move(queue), 0ms);
  }

  void start(const std::string& file = "/none/a.mp4", TextureSize size = kVga) {
    recording->startRecord(file, delegate, size);
    recordingQueue->runAll();
  }
  void frame(int64_t time) {
    recording->appendMovieFrame({nullptr, MediaTime(time)});
    recordingQueue->runAll();
  }
  void stop() {
    recording->stopRecord();
    recordingQueue->runAll();
  }
  /// The writer that was stopped as the `index`th has finished.
  void complete(size_t index = 0) { script.completions.at(index)(); }
  void runQueues() {
    recordingQueue->runAll();
    mainQueue.runAll();
  }
  int64_t status() const { return recording->recordingStatus(); }

  /// Brings a new recording to `state`, with what the journal holds until then left out.
  void enter(int64_t state) {
    recording->setRecordDelegate(delegate);
    if (state == kRecordingStartFailed) {
      script.canApply = false;
      start();
      script.canApply = true;
    } else if (state != kRecordingNone) {
      start();
    }
    if (state == kRecordingRunning) frame(1);
    if (state == kRecordingStopping || state == kRecordingFinished) stop();
    if (state == kRecordingFinished) {
      complete();
      runQueues();
    }
    ASSERT_EQ(status(), state);
    journal.take();
  }

  LogCapture log;
  Journal journal;
  WriterScript script;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>(journal);
  ManualExecutor* recordingQueue = nullptr;
  std::unique_ptr<Recording> recording;
};

// Bit rate.

TEST(MovieBitRate, FollowsTheNumberOfPixels) {
  struct Row {
    TextureSize size;
    int32_t bitRate;
  };
  const Row rows[] = {
      {{640, 480}, 1244160},
      {{800, 600}, 4848000},
      {{1280, 720}, 9308160},
      {{1920, 1080}, 20943360},
      {{320, 240}, 311040},
      {{307200, 1}, 1244160},
      {{307201, 1}, 3102730},  // one pixel more takes the other factor
      {{1, 1}, 4},
      {{0, 0}, 0},
      {{0, 480}, 0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(movieBitRate(row.size), row.bitRate) << row.size.width << " x " << row.size.height;
  }
}

TEST(MovieBitRate, PixelsWrapAt32Bits) {
  EXPECT_EQ(movieBitRate({65536, 65536}), 0);
  EXPECT_EQ(movieBitRate({65536, 65537}), 265420);      // as 65536 pixels
  EXPECT_LT(movieBitRate({65536, 40000}), 0);           // negative, so the small factor
  EXPECT_EQ(movieBitRate({32768, 65535}), 2147483647);  // what 32 bits can't hold
}

// Starting.

TEST_F(RecordingTest, BeginsWithStatusNone) {
  EXPECT_EQ(status(), kRecordingNone);
  EXPECT_FALSE(recordingTakesFrames(status()));
}

TEST_F(RecordingTest, OnlyWaitingAndRunningTakeFrames) {
  for (const int64_t takes : {4, 5}) EXPECT_TRUE(recordingTakesFrames(takes));
  for (const int64_t takesNot : {0, 1, 2, 3}) EXPECT_FALSE(recordingTakesFrames(takesNot));
}

TEST_F(RecordingTest, AStartOpensTheWriterWithTheSettingsOfItsSize) {
  start("/none/a.mp4", {1920, 1080});
  EXPECT_THAT(journal.take(),
              ElementsAre("make /none/a.mp4", "1: settings 1920x1080 20943360 30 30", "1: start",
                          "told 4"));
  EXPECT_EQ(status(), kRecordingWaiting);
}

TEST_F(RecordingTest, AStartReturnsAtOnce) {
  recording->startRecord("/none/a.mp4", delegate, kVga);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(status(), kRecordingNone);
}

TEST_F(RecordingTest, AWriterThatCanNotBeMadeIsAFailedStart) {
  script.makeError = "no encoder";
  start();
  EXPECT_THAT(journal.take(), ElementsAre("make /none/a.mp4", "told 1"));
  EXPECT_EQ(status(), kRecordingStartFailed);
  EXPECT_THAT(log.lines(), ElementsAre("The recording to /none/a.mp4 did not start: no encoder"));
}

TEST_F(RecordingTest, RefusedSettingsAreAFailedStart) {
  script.canApply = false;
  start("/none/a.mp4", {0, 0});
  EXPECT_THAT(journal.take(),
              ElementsAre("make /none/a.mp4", "1: settings 0x0 0 30 30", "told 1", "1: destroyed"));
  EXPECT_EQ(status(), kRecordingStartFailed);
  EXPECT_THAT(log.lines(), ElementsAre("The recording to /none/a.mp4 did not start: "
                                       "a movie of 0 by 0 pixels can't be made"));
}

TEST_F(RecordingTest, AWriterThatDoesNotStartWaitsForFramesAllTheSame) {
  script.starts = false;
  script.error = "the folder is gone";
  start();
  EXPECT_EQ(status(), kRecordingWaiting);
  EXPECT_THAT(log.lines(),
              ElementsAre("The movie /none/a.mp4 can't be written: the folder is gone"));
}

// Frames.

TEST_F(RecordingTest, TheFirstFrameBeginsTheTimelineAndFramesKeepTheirTimes) {
  start();
  journal.take();
  frame(5000);
  EXPECT_EQ(status(), kRecordingRunning);
  frame(38333);
  frame(900000);  // after a gap
  EXPECT_THAT(journal.take(), ElementsAre("1: session 5000", "told 5", "1: frame 5000",
                                          "1: frame 38333", "1: frame 900000"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecordingTest, AFrameThatTheWriterIsNotReadyForIsDropped) {
  start();
  frame(1);
  journal.take();
  script.ready = false;
  frame(2);
  script.ready = true;
  frame(3);
  EXPECT_THAT(journal.take(), ElementsAre("1: frame 3"));
  EXPECT_THAT(log.lines(), ElementsAre("Dropping buffer"));
  EXPECT_EQ(recording->lostFrames(), 1U);
}

TEST_F(RecordingTest, TheFrameThatBeginsTheTimelineCanBeDroppedToo) {
  start();
  journal.take();
  script.ready = false;
  frame(7);
  EXPECT_THAT(journal.take(), ElementsAre("1: session 7", "told 5"));
  EXPECT_THAT(log.lines(), ElementsAre("Dropping buffer"));
  EXPECT_EQ(status(), kRecordingRunning);
}

TEST_F(RecordingTest, ARefusedFrameIsLoggedAndTheRecordingGoesOn) {
  start();
  script.refusal = "another size, 100% wrong {}";
  frame(1);
  script.refusal.clear();
  frame(2);
  EXPECT_THAT(log.lines(), ElementsAre("another size, 100% wrong {}"));
  EXPECT_EQ(status(), kRecordingRunning);
  EXPECT_EQ(recording->lostFrames(), 1U);
}

TEST_F(RecordingTest, FramesThatPileUpAreLostAndCounted) {
  start();
  journal.take();
  for (int i = 0; i < Recording::kFramesUnderWay + 3; ++i) {
    recording->appendMovieFrame({nullptr, MediaTime(i)});
  }
  EXPECT_EQ(recording->lostFrames(), 3U);
  EXPECT_THAT(log.lines(), ElementsAre("Dropping buffer", "Dropping buffer", "Dropping buffer"));
  EXPECT_EQ(recordingQueue->runAll(), Recording::kFramesUnderWay);
  frame(100);  // there is room again
  EXPECT_THAT(journal.take(), Contains("1: frame 100"));
  EXPECT_EQ(recording->lostFrames(), 3U);
}

TEST_F(RecordingTest, AStopTellsHowManyFramesAreMissing) {
  start();
  frame(1);
  frame(2);
  script.ready = false;
  frame(3);
  stop();
  EXPECT_THAT(log.lines(), ElementsAre("Dropping buffer",
                                       "1 of 3 frames are missing from the movie /none/a.mp4"));
}

TEST_F(RecordingTest, LostFramesAreCountedForEachMovie) {
  start();
  script.ready = false;
  frame(1);
  EXPECT_EQ(recording->lostFrames(), 1U);
  start();
  EXPECT_EQ(recording->lostFrames(), 0U);
}

TEST_F(RecordingTest, AFrameIsLetGoOnceItIsHandled) {
  start();
  auto picture = std::make_shared<PixelBuffer>(TextureSize{2, 2});
  recording->appendMovieFrame({picture, MediaTime(1)});
  EXPECT_EQ(picture.use_count(), 2);
  recordingQueue->runAll();
  EXPECT_EQ(picture.use_count(), 1);
}

// The limit.

TEST_F(RecordingTest, FramesPastTheLimitAreNotRecordedHoweverLateTheStopComes) {
  recording->setLimit(30);
  start();
  frame(5'000'000);
  journal.take();
  frame(34'999'999);
  frame(35'000'000);
  frame(50'000'000);
  EXPECT_THAT(journal.take(), ElementsAre("1: frame 34999999"));
  EXPECT_EQ(status(), kRecordingRunning);
  EXPECT_EQ(recording->lostFrames(), 0U);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecordingTest, ALimitIsInForceFromTheMomentItIsSet) {
  start();
  frame(0);
  frame(40'000'000);
  journal.take();
  recording->setLimit(30);
  frame(41'000'000);
  recording->setLimit(60);
  frame(42'000'000);
  recording->setLimit(0);
  frame(3'600'000'000);
  EXPECT_THAT(journal.take(), ElementsAre("1: frame 42000000", "1: frame 3600000000"));
}

TEST_F(RecordingTest, TheLimitCountsFromEachMoviesFirstFrame) {
  recording->setLimit(10);
  start();
  frame(0);
  stop();
  start();
  frame(60'000'000);
  journal.take();
  frame(69'999'999);
  frame(70'000'000);
  EXPECT_THAT(journal.take(), ElementsAre("2: frame 69999999"));
}

// What the user is told.

TEST_F(RecordingTest, AMovieThatCanNotBeWrittenIsToldOnce) {
  start();
  script.error = "Nothing was recorded: the disk is full.";
  frame(1);
  frame(2);
  stop();
  complete();
  runQueues();
  EXPECT_EQ(failures.text(Failure::MovieNotSaved),
            "Nothing was recorded: the disk is full. Choose another folder in Options.");
  EXPECT_EQ(failures.told(), 1) << "and not that its frames are lost";
}

TEST_F(RecordingTest, WhatGoesOnIsToldAgain) {
  constexpr int64_t kAgain = RecordingFailures::kAgain.count();
  start();
  script.refusal = "too late";
  frame(0);
  frame(kAgain - 1);
  mainQueue.runAll();
  const int before = failures.told();
  EXPECT_THAT(failures.text(Failure::FramesLost), Not(IsEmpty()));
  script.error = "Nothing was recorded: the disk is full.";
  frame(kAgain);
  frame(2 * kAgain - 1);
  mainQueue.runAll();
  EXPECT_EQ(failures.told(), before + 1);
  frame(2 * kAgain);
  frame(2 * kAgain + 1);
  mainQueue.runAll();
  EXPECT_EQ(failures.told(), before + 2) << "a message goes after ten seconds, and this goes on";
  EXPECT_THAT(failures.text(Failure::MovieNotSaved), HasSubstr("the disk is full"));
}

TEST_F(RecordingTest, AMovieThatCanNotBeFinishedIsTold) {
  start();
  frame(1);
  stop();
  script.error = "The movie could not be finished: the disk is full.";
  complete();
  runQueues();
  EXPECT_THAT(failures.text(Failure::MovieNotSaved), HasSubstr("could not be finished"));
}

TEST_F(RecordingTest, AStartThatFailsIsToldAndTheNextStartTakesItBack) {
  script.makeError = "no encoder";
  start();
  mainQueue.runAll();
  EXPECT_EQ(failures.text(Failure::MovieNotSaved),
            "The recording did not start: no encoder. Choose another folder in Options.");
  script.makeError.clear();
  start();
  mainQueue.runAll();
  EXPECT_EQ(failures.text(Failure::MovieNotSaved), "");
}

TEST_F(RecordingTest, LostFramesAreToldUntilNoneWasLostForAWhile) {
  start();
  frame(0);
  script.ready = false;
  frame(100'000);
  frame(200'000);
  script.ready = true;
  frame(300'000);
  mainQueue.runAll();
  EXPECT_THAT(failures.text(Failure::FramesLost), HasSubstr("Frames are being lost"));
  EXPECT_EQ(failures.told(), 1);
  frame(2'199'999);
  mainQueue.runAll();
  EXPECT_THAT(failures.text(Failure::FramesLost), Not(IsEmpty()));
  frame(2'200'000);
  mainQueue.runAll();
  EXPECT_EQ(failures.text(Failure::FramesLost), "");
}

TEST_F(RecordingTest, FramesThatPileUpAreToldToo) {
  start();
  for (int i = 0; i <= Recording::kFramesUnderWay; ++i)
    recording->appendMovieFrame({nullptr, MediaTime(i)});
  mainQueue.runAll();
  EXPECT_THAT(failures.text(Failure::FramesLost), Not(IsEmpty()));
}

TEST_F(RecordingTest, ADiskThatTakesNothingForTwoSecondsIsTold) {
  start();
  frame(0);
  script.ready = false;
  frame(100'000);
  frame(2'099'999);
  mainQueue.runAll();
  EXPECT_EQ(failures.text(Failure::MovieNotSaved), "");
  frame(2'100'000);
  mainQueue.runAll();
  EXPECT_THAT(failures.text(Failure::MovieNotSaved), HasSubstr("the disk does not answer"));
  script.ready = true;
  frame(2'200'000);
  mainQueue.runAll();
  EXPECT_EQ(failures.text(Failure::MovieNotSaved), "");
}

TEST_F(RecordingTest, AFrameAfterTheStopIsNoLossToTellOf) {
  start();
  frame(1);
  stop();
  frame(2);
  mainQueue.runAll();
  EXPECT_EQ(failures.told(), 0);
}

TEST_F(RecordingTest, AfterTheEndNothingIsTold) {
  script.makeError = "no encoder";
  start();
  recording.reset();
  mainQueue.runAll();
  EXPECT_EQ(failures.told(), 0);
}

// Stopping.

TEST_F(RecordingTest, AStopFinishesTheWriterAndThenTellsTheMainThread) {
  start();
  frame(1);
  journal.take();
  stop();
  EXPECT_THAT(journal.take(), ElementsAre("told 2", "1: finish"));
  EXPECT_EQ(status(), kRecordingStopping);
  complete();
  recordingQueue->runAll();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
  EXPECT_EQ(status(), kRecordingStopping);
  mainQueue.runAll();
  EXPECT_THAT(journal.take(), ElementsAre("told 3"));
  EXPECT_EQ(status(), kRecordingFinished);
}

TEST_F(RecordingTest, AWriterThatFinishesAtOnceIsNotDestroyedInsideItsOwnCall) {
  start();
  stop();
  journal.take();
  complete();
  EXPECT_THAT(journal.take(), IsEmpty());
  recordingQueue->runAll();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
}

TEST_F(RecordingTest, AnErrorAtTheEndLeavesTheStatusAtStopping) {
  start();
  frame(1);
  stop();
  journal.take();
  script.error = "disk full";
  complete();
  runQueues();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
  EXPECT_EQ(status(), kRecordingStopping);
  EXPECT_THAT(log.lines(), ElementsAre("The movie /none/a.mp4 ended with an error: disk full"));
  script.error.clear();
  start();
  EXPECT_EQ(status(), kRecordingWaiting);
}

TEST_F(RecordingTest, AStopBeforeAnyFrameFinishesWithoutATimeline) {
  start();
  stop();
  complete();
  runQueues();
  EXPECT_THAT(journal.take(),
              ElementsAre("make /none/a.mp4", "1: settings 640x480 1244160 30 30", "1: start",
                          "told 4", "told 2", "1: finish", "1: destroyed", "told 3"));
}

TEST_F(RecordingTest, AFrameAfterTheStopReachesNoWriter) {
  start();
  frame(1);
  recording->stopRecord();
  recording->appendMovieFrame({nullptr, MediaTime(2)});
  journal.take();
  recordingQueue->runAll();
  EXPECT_THAT(journal.take(), ElementsAre("told 2", "1: finish"));
  EXPECT_THAT(log.lines(), ElementsAre("Dropping buffer"));
  EXPECT_EQ(status(), kRecordingStopping);
}

TEST_F(RecordingTest, AFirstFrameAfterTheStopIsHarmless) {
  start();
  recording->stopRecord();
  recording->appendMovieFrame({nullptr, MediaTime(2)});
  journal.take();
  recordingQueue->runAll();
  EXPECT_THAT(journal.take(), ElementsAre("told 2", "1: finish", "told 5"));
  EXPECT_EQ(status(), kRecordingRunning);
  complete();
  runQueues();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed", "told 3"));
  EXPECT_EQ(status(), kRecordingFinished);
}

TEST_F(RecordingTest, AnErrorAtTheEndTakesBackTheStatusOfAFrameAfterTheStop) {
  start();
  recording->stopRecord();
  recording->appendMovieFrame({nullptr, MediaTime(2)});
  recordingQueue->runAll();
  script.error = "disk full";
  complete();
  runQueues();
  EXPECT_EQ(status(), kRecordingStopping);
}

// Starting again.

TEST_F(RecordingTest, AStartBeforeTheOldMovieIsFinishedKeepsTheNewWriter) {
  start("/none/a.mp4");
  frame(1);
  stop();
  start("/none/b.mp4");
  journal.take();
  complete(0);
  runQueues();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
  EXPECT_EQ(status(), kRecordingWaiting);
  frame(50);
  EXPECT_THAT(journal.take(), ElementsAre("2: session 50", "told 5", "2: frame 50"));
  stop();
  complete(1);
  runQueues();
  EXPECT_THAT(journal.take(), ElementsAre("told 2", "2: finish", "2: destroyed", "told 3"));
}

TEST_F(RecordingTest, AStartAfterTheOldMovieButBeforeTheMainThreadKeepsItsStatus) {
  start("/none/a.mp4");
  stop();
  complete();
  start("/none/b.mp4");
  journal.take();
  mainQueue.runAll();
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(status(), kRecordingWaiting);
}

TEST_F(RecordingTest, AnErrorOfTheOldMovieLeavesTheNewOneAlone) {
  start("/none/a.mp4");
  stop();
  start("/none/b.mp4");
  frame(1);
  script.error = "disk full";
  complete();
  runQueues();
  EXPECT_EQ(status(), kRecordingRunning);
}

TEST_F(RecordingTest, AStartDuringARecordingFinishesTheRunningMovieInSilence) {
  start("/none/a.mp4");
  frame(1);
  journal.take();
  start("/none/b.mp4");
  EXPECT_THAT(journal.take(),
              ElementsAre("1: finish", "make /none/b.mp4", "2: settings 640x480 1244160 30 30",
                          "2: start", "told 4"));
  frame(9);  // the new timeline begins with it
  EXPECT_THAT(journal.take(), ElementsAre("2: session 9", "told 5", "2: frame 9"));
  complete();
  runQueues();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
  EXPECT_EQ(status(), kRecordingRunning);
}

TEST_F(RecordingTest, AFailedStartDuringARecordingEndsIt) {
  start("/none/a.mp4");
  frame(1);
  script.makeError = "no encoder";
  journal.take();
  start("/none/b.mp4");
  frame(2);
  EXPECT_THAT(journal.take(), ElementsAre("1: finish", "make /none/b.mp4", "told 1"));
  EXPECT_EQ(status(), kRecordingStartFailed);
}

// Every event in every state: what the delegate is told, and the status afterwards.

constexpr int64_t kStates[] = {kRecordingNone,     kRecordingStartFailed, kRecordingStopping,
                               kRecordingFinished, kRecordingWaiting,     kRecordingRunning};

class RecordingStateTest : public RecordingTest, public ::testing::WithParamInterface<int64_t> {
 protected:
  /// What the delegate was told since the last look.
  std::vector<std::string> told() {
    std::vector<std::string> told;
    for (const std::string& entry : journal.take()) {
      if (entry.starts_with("told")) told.push_back(entry);
    }
    return told;
  }
};
INSTANTIATE_TEST_SUITE_P(, RecordingStateTest, ::testing::ValuesIn(kStates));

TEST_P(RecordingStateTest, AStartWaitsForTheFirstFrame) {
  enter(GetParam());
  start("/none/b.mp4");
  EXPECT_THAT(told(), ElementsAre("told 4"));
  EXPECT_EQ(status(), kRecordingWaiting);
}

TEST_P(RecordingStateTest, AFailedStartIsTold) {
  enter(GetParam());
  script.makeError = "no encoder";
  start("/none/b.mp4");
  EXPECT_THAT(told(), ElementsAre("told 1"));
  EXPECT_EQ(status(), kRecordingStartFailed);
}

TEST_P(RecordingStateTest, AStopIsTold) {
  enter(GetParam());
  stop();
  EXPECT_THAT(told(), ElementsAre("told 2"));
  EXPECT_EQ(status(), kRecordingStopping);
}

TEST_P(RecordingStateTest, AStopFinishesOnlyWhatRuns) {
  enter(GetParam());
  const size_t before = script.completions.size();
  stop();
  const bool ran = GetParam() >= kRecordingWaiting;
  EXPECT_EQ(script.completions.size() - before, ran ? 1U : 0U);
  runQueues();
  EXPECT_EQ(status(), kRecordingStopping);
}

TEST_P(RecordingStateTest, AFrameBeginsTheTimelineUnlessOneHasCome) {
  enter(GetParam());
  frame(7);
  if (GetParam() == kRecordingRunning) {
    EXPECT_THAT(told(), IsEmpty());
  } else {
    EXPECT_THAT(told(), ElementsAre("told 5"));
  }
  EXPECT_EQ(status(), kRecordingRunning);
}

TEST_P(RecordingStateTest, TheEndOfTheProgramFinishesWhatRuns) {
  enter(GetParam());
  recording.reset();
  std::vector<std::string> expected;
  if (GetParam() >= kRecordingWaiting) expected = {"1: finish", "1: destroyed"};
  if (GetParam() == kRecordingStopping) expected = {"1: destroyed"};
  EXPECT_EQ(journal.take(), expected);
  mainQueue.runAll();
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(RecordingStateTest, AFinishFinishesWhatRunsAndNothingIsRecordedAfterwards) {
  enter(GetParam());
  recording->finish();
  std::vector<std::string> expected;
  if (GetParam() >= kRecordingWaiting) expected = {"1: finish", "1: destroyed"};
  if (GetParam() == kRecordingStopping) expected = {"1: destroyed"};
  EXPECT_EQ(journal.take(), expected);
  recording->startRecord("/none/b.mp4", delegate, kVga);
  recording->stopRecord();
  recording.reset();
  mainQueue.runAll();
  EXPECT_THAT(journal.take(), IsEmpty());
}

// Delegates.

TEST_F(RecordingTest, ADelegateIsKeptWeakly) {
  start();
  delegate.reset();
  journal.take();
  frame(1);
  EXPECT_THAT(journal.take(), ElementsAre("1: session 1", "1: frame 1"));
  EXPECT_EQ(status(), kRecordingRunning);
}

TEST_F(RecordingTest, TheDelegateCanBeChangedAndLeftOut) {
  recording->startRecord("/none/a.mp4", {}, kVga);
  recordingQueue->runAll();
  journal.take();
  recording->setRecordDelegate(delegate);
  frame(1);
  EXPECT_THAT(journal.take(), ElementsAre("1: session 1", "told 5", "1: frame 1"));
}

TEST_F(RecordingTest, ADelegateMayAskForAnythingInsideItsCall) {
  class Stopper final : public PreviewViewRecordDelegate {
   public:
    explicit Stopper(Recording& recording) : recording_(recording) {}
    void recordStatusDidChange(int64_t status) override {
      seen.push_back(recording_.recordingStatus());
      if (status == kRecordingRunning) recording_.stopRecord();
      if (status == kRecordingStopping) recording_.setRecordDelegate({});
    }
    std::vector<int64_t> seen;

   private:
    Recording& recording_;
  };
  const auto stopper = std::make_shared<Stopper>(*recording);
  recording->startRecord("/none/a.mp4", stopper, kVga);
  recording->appendMovieFrame({nullptr, MediaTime(1)});
  recordingQueue->runAll();
  EXPECT_THAT(stopper->seen, ElementsAre(4, 5, 2));
}

// The end.

TEST_F(RecordingTest, TheEndTellsNobodyEvenWhenTheMainQueueStillRuns) {
  start();
  frame(1);
  stop();
  complete();
  journal.take();
  recording.reset();
  mainQueue.runAll();
  EXPECT_THAT(journal.take(), ElementsAre("1: destroyed"));
}

TEST_F(RecordingTest, AMovieThatIsNotFinishedInTimeIsLogged) {
  start();
  frame(1);
  recording.reset();
  EXPECT_THAT(log.lines(), ElementsAre("The movie /none/a.mp4 could not be finished in time"));
}

}  // namespace
}  // namespace tessary
