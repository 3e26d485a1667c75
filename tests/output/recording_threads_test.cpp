// The recording on its real threads: frames from one, start and stop from another, movies finished
// on a third.

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeFailureListener.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "WaitLimit.h"
#include "base/SerialQueue.h"
#include "output/Recording.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::LogCapture;
using test::ManualExecutor;

constexpr TextureSize kVga{640, 480};

/// What the writers of a test add up to.
struct Totals {
  std::atomic<int> made{0};
  std::atomic<int> finished{0};
  std::atomic<int> destroyed{0};
  std::atomic<int> frames{0};
  std::atomic<int> mistakes{0};  // calls in an order that no writer has to bear
};

/// Finishes on a thread of its own. What a mistake leaves behind, the thread sanitizer finds: no
/// field is atomic.
class ThreadedWriter final : public AssetWriter {
 public:
  explicit ThreadedWriter(Totals& totals, std::chrono::milliseconds finishTime)
      : totals_(totals), finishTime_(finishTime) {
    ++totals_.made;
  }
  ~ThreadedWriter() override {
    if (finisher_.joinable()) finisher_.join();
    ++totals_.destroyed;
  }
  bool canApplyOutputSettings(const MovieSettings& settings) const override {
    return settings.width > 0;
  }
  Result<void> startWriting(const MovieSettings& /*settings*/) override {
    started_ = true;
    return {};
  }
  void startSessionAtSourceTime(MediaTime /*time*/) override {
    if (!started_ || session_ || finishing_) ++totals_.mistakes;
    session_ = true;
  }
  bool isReadyForMoreMediaData() const override { return !finishing_; }
  Result<void> appendSampleBuffer(const SampleBuffer& frame) override {
    if (!session_ || finishing_) ++totals_.mistakes;
    ++totals_.frames;
    if (!frame.imageBuffer) return Error{"no picture"};
    return {};
  }
  void finishWritingWithCompletionHandler(std::function<void()> completed) override {
    if (!started_ || finishing_) ++totals_.mistakes;
    finishing_ = true;
    finisher_ = std::thread([this, completed = std::move(completed)] {
      std::this_thread::sleep_for(finishTime_);
      ++totals_.finished;
      completed();
    });
  }
  std::string error() const override { return {}; }

 private:
  Totals& totals_;
  const std::chrono::milliseconds finishTime_;
  bool started_ = false;
  bool session_ = false;
  bool finishing_ = false;
  std::thread finisher_;
};

AssetWriterFactory threadedWriters(Totals& totals, std::chrono::milliseconds finishTime = 0ms) {
  return [&totals, finishTime](const std::string&) {
    return std::make_unique<ThreadedWriter>(totals, finishTime);
  };
}

class Counter final : public PreviewViewRecordDelegate {
 public:
  void recordStatusDidChange(int64_t status) override {
    ++told.at(size_t(status));
    if (status == kRecordingRunning) running.set_value();
  }
  std::array<std::atomic<int>, 6> told{};
  std::promise<void> running;
};

/// Passes frames on as the preview does, until it ends.
class FrameSource {
 public:
  explicit FrameSource(Recording& recording)
      : recording_(recording), thread_([this](const std::stop_token& stop) { run(stop); }) {}

 private:
  void run(const std::stop_token& stop) {
    const auto picture = std::make_shared<PixelBuffer>(TextureSize{4, 4});
    for (int64_t time = 0; !stop.stop_requested(); time += 33333) {
      if (recordingTakesFrames(recording_.recordingStatus())) {
        recording_.appendMovieFrame({picture, MediaTime(time)});
      }
      std::this_thread::yield();
    }
  }

  Recording& recording_;
  std::jthread thread_;
};

/// Runs the main queue until `counter` was told that its movie is finished.
testing::AssertionResult awaitFinished(ManualExecutor& mainQueue, const Counter& counter) {
  const auto end = std::chrono::steady_clock::now() + test::kWaitLimit;
  while (counter.told[kRecordingFinished] == 0) {
    if (std::chrono::steady_clock::now() > end) return test::neverCame("the end of a recording");
    mainQueue.runAll();
    std::this_thread::yield();
  }
  return testing::AssertionSuccess();
}

TEST(RecordingThreads, FramesFromOneThreadStartAndStopFromAnother) {
  const LogCapture log;
  Totals totals;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  Recording recording(threadedWriters(totals), mainQueue, failures);
  {
    const FrameSource frames(recording);
    for (int i = 0; i < 50; ++i) {
      const auto counter = std::make_shared<Counter>();
      recording.startRecord("/none/a.mp4", counter, kVga);
      ASSERT_TRUE(test::comes(counter->running.get_future(), "a recording that runs"));
      recording.stopRecord();
      ASSERT_TRUE(awaitFinished(mainQueue, *counter));
      EXPECT_EQ(counter->told[kRecordingFinished], 1);
      EXPECT_EQ(counter->told[kRecordingWaiting], 1);
      EXPECT_EQ(counter->told[kRecordingStopping], 1);
      EXPECT_EQ(recording.recordingStatus(), kRecordingFinished);
    }
  }
  EXPECT_EQ(totals.made, 50);
  EXPECT_EQ(totals.finished, 50);
  EXPECT_EQ(totals.mistakes, 0);
  EXPECT_GT(totals.frames, 0);
}

TEST(RecordingThreads, StartsAndStopsThatDoNotWaitForEachOther) {
  const LogCapture log;
  Totals totals;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  {
    Recording recording(threadedWriters(totals), mainQueue, failures);
    const FrameSource frames(recording);
    for (int i = 0; i < 300; ++i) {
      recording.startRecord("/none/a.mp4", {}, i % 7 == 0 ? TextureSize{} : kVga);
      if (i % 3 != 0) recording.stopRecord();
      if (i % 5 == 0) recording.stopRecord();
      mainQueue.runAll();
    }
    const auto counter = std::make_shared<Counter>();
    recording.startRecord("/none/b.mp4", counter, kVga);
    ASSERT_TRUE(test::comes(counter->running.get_future(), "a recording that runs"));
    recording.stopRecord();
    ASSERT_TRUE(awaitFinished(mainQueue, *counter));
    EXPECT_EQ(counter->told[kRecordingFinished], 1);
  }
  EXPECT_EQ(totals.made, 301);
  EXPECT_EQ(totals.destroyed, 301);
  EXPECT_EQ(totals.finished, 301 - 43);  // every seventh did not start
  EXPECT_EQ(totals.mistakes, 0);
}

TEST(RecordingThreads, TheEndWaitsForAMovieToBeFinished) {
  const LogCapture log;
  Totals totals;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  {
    Recording recording(threadedWriters(totals, 50ms), mainQueue, failures);
    const auto counter = std::make_shared<Counter>();
    recording.startRecord("/none/a.mp4", counter, kVga);
    {
      const FrameSource frames(recording);
      ASSERT_TRUE(test::comes(counter->running.get_future(), "a recording that runs"));
    }
    // No stop: the program is closed in the middle of a recording.
  }
  EXPECT_EQ(totals.finished, 1);
  EXPECT_EQ(totals.destroyed, 1);
  EXPECT_EQ(totals.mistakes, 0);
}

TEST(RecordingThreads, TheFrameQueueNeverWaitsForABusyWriter) {
  const LogCapture log;
  Totals totals;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  std::promise<void> release;
  std::promise<void> busy;
  auto queue = std::make_unique<SerialQueue>("com.tessary.record.session");
  SerialQueue& recordingQueue = *queue;
  Recording recording(threadedWriters(totals), mainQueue, failures, std::move(queue), 10s);
  recording.startRecord("/none/a.mp4", {}, kVga);
  recordingQueue.post([&] {
    busy.set_value();
    release.get_future().wait();
  });
  busy.get_future().wait();
  const auto picture = std::make_shared<PixelBuffer>(TextureSize{4, 4});
  for (int i = 0; i < 100; ++i) recording.appendMovieFrame({picture, MediaTime(i)});
  EXPECT_EQ(recording.lostFrames(), 100U - Recording::kFramesUnderWay);
  release.set_value();
  recordingQueue.drain();
  EXPECT_EQ(totals.frames, Recording::kFramesUnderWay);
  EXPECT_EQ(picture.use_count(), 1);
}

}  // namespace
}  // namespace tessary
