// Cameras that stream from their own threads while the main thread does with them what a user does.

#include <condition_variable>

#include "CaptureControllerFixture.h"
#include "WaitLimit.h"

namespace tessary {
namespace {

class CaptureThreadsTest : public test::CaptureControllerFixture {
 protected:
  CaptureThreadsTest() {
    host.onFrame = [this](const SampleBuffer& frame) {
      const std::lock_guard lock(mutex_);
      last_ = frame.imageBuffer->size();
      ++shown_;
      changed_.notify_all();
    };
  }
  ~CaptureThreadsTest() override { controller = nullptr; }

  std::shared_ptr<test::FakeDevice> plugStreaming(const std::string& id) {
    auto device = std::make_shared<test::FakeDevice>(callLog, id);
    device->formats_ = {test::format(kMediaSubTypeMJPEG, 320, 240),
                        test::format(kMediaSubTypeMJPEG, 400, 300),
                        test::format(kMediaSubTypeMJPEG, 640, 480)};
    device->streams_ = true;
    return system.plug(device);
  }
  /// Waits until `count` more frames were shown.
  testing::AssertionResult awaitFrames(int count) {
    std::unique_lock lock(mutex_);
    const auto shown = [this, goal = shown_ + count] { return shown_ >= goal; };
    if (changed_.wait_for(lock, test::kWaitLimit, shown)) return testing::AssertionSuccess();
    return test::neverCame("a frame of the running session");
  }
  testing::AssertionResult awaitFrameOf(TextureSize size) {
    std::unique_lock lock(mutex_);
    const auto shown = [&] { return last_ == size; };
    if (changed_.wait_for(lock, test::kWaitLimit, shown)) return testing::AssertionSuccess();
    return test::neverCame(fmt::format("a frame of {} by {}", size.width, size.height));
  }
  /// Runs the main queue until something was posted to it.
  testing::AssertionResult awaitMainQueue() {
    const auto end = std::chrono::steady_clock::now() + test::kWaitLimit;
    while (mainQueue.runAll() == 0) {
      if (std::chrono::steady_clock::now() > end) {
        return test::neverCame("anything for the main queue");
      }
      std::this_thread::yield();
    }
    return testing::AssertionSuccess();
  }
  int shown() const {
    const std::lock_guard lock(mutex_);
    return shown_;
  }

 private:
  mutable std::mutex mutex_;  // guards last_ and shown_
  std::condition_variable changed_;
  TextureSize last_;
  int shown_ = 0;
};

TEST_F(CaptureThreadsTest, ChangesSizeWhileItStreams) {
  plugStreaming("m1");
  preferences.uniqueID = "m1";
  launch();
  for (int round = 0; round < 5; ++round) {
    for (size_t i = 0; i < 3; ++i) {
      start(0, i);
      const Resolution wanted = *microscopes[0]->resolutions[i];
      ASSERT_TRUE(awaitFrameOf({wanted.width, wanted.height}));
    }
  }
  EXPECT_EQ(state(), State::Running);
}

TEST_F(CaptureThreadsTest, NoFrameIsShownAfterTheSessionHasStopped) {
  plugStreaming("m1");
  preferences.uniqueID = "m1";
  launch();
  for (int round = 0; round < 10; ++round) {
    ASSERT_TRUE(awaitFrames(2));
    controller->stopCaptureSession();
    const int atStop = shown();
    const uint32_t counted = controller->framesCaptured;
    controller->capVideoDataOutputQueue->drain();
    EXPECT_EQ(shown(), atStop);
    EXPECT_EQ(controller->framesCaptured, counted);
    start(0, 0);
  }
}

TEST_F(CaptureThreadsTest, IsPulledAndReturnsWhileItStreams) {
  plugStreaming("m1");
  plugStreaming("m2");
  preferences.uniqueID = "m1";
  launch();
  for (int round = 0; round < 10; ++round) {
    ASSERT_TRUE(awaitFrames(2));
    system.pull("m1");
    system.tellDisconnected();
    EXPECT_EQ(state(), State::Idle);
    const int atPull = shown();
    controller->capVideoDataOutputQueue->drain();
    EXPECT_EQ(shown(), atPull);
    plugStreaming("m1");
    system.tellConnected();
    EXPECT_EQ(state(), State::Running);
  }
  ASSERT_TRUE(awaitFrames(1));
}

TEST_F(CaptureThreadsTest, MayBeCoveredAtAnyMoment) {
  plugStreaming("m1");
  preferences.uniqueID = "m1";
  launch();
  for (int round = 0; round < 50; ++round) {
    controller->wndExposed = false;
    controller->wndExposed = true;
    ASSERT_TRUE(awaitFrames(1));
  }
  controller->windowWillClose();
  EXPECT_EQ(controller->capSession, nullptr);
}

TEST_F(CaptureThreadsTest, FailsWhileItStreamsAndStartsAgain) {
  plugStreaming("m1")->failsAfter_ = 3;
  preferences.uniqueID = "m1";
  launch();
  for (int round = 0; round < 10; ++round) {
    ASSERT_TRUE(awaitMainQueue());
    EXPECT_EQ(state(), State::Failed);
    EXPECT_EQ(std::ranges::count(lines(), "!!!AVCaptureSessionRuntimeErrorNotification!!!"),
              round + 1);
    start(0, 0);
  }
  EXPECT_GE(shown(), 10);
}

TEST_F(CaptureThreadsTest, ClosesWhileItStreams) {
  plugStreaming("m1");
  preferences.uniqueID = "m1";
  launch();
  ASSERT_TRUE(awaitFrames(1));
  calls();
  controller = nullptr;
  EXPECT_THAT(calls(), testing::ElementsAre("m1.stopStreaming", "m1.close"));
}

}  // namespace
}  // namespace tessary
