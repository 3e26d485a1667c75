#include <future>

#include <gmock/gmock.h>

#include "FakeCaptureSystem.h"
#include "WaitLimit.h"
#include "capture/CaptureVideoDataOutput.h"

namespace tessary {
namespace {

using test::frameOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes the time stamps of frames, and holds the queue up at stamp 0 until it is let go.
class Delegate final : public CaptureVideoDataOutputSampleBufferDelegate {
 public:
  void captureOutputDidOutputSampleBuffer(const SampleBuffer& frame) override {
    handled.push_back(frame.presentationTimeStamp.count());
    thread = std::this_thread::get_id();
    if (handled.back() != 0) return;
    begun.set_value();
    letGo.get_future().wait();
  }
  void captureOutputDidDropSampleBuffer(const SampleBuffer& frame) override {
    dropped.push_back(frame.presentationTimeStamp.count());
  }

  std::vector<int64_t> handled;  // read after the output was drained
  std::vector<int64_t> dropped;
  std::thread::id thread;
  std::promise<void> begun;
  std::promise<void> letGo;
};

class CaptureVideoDataOutputTest : public testing::Test {
 protected:
  CaptureVideoDataOutputTest() { output.setSampleBufferDelegate(&delegate, queue); }

  /// Delivers frame 0 and waits until the delegate is busy with it.
  void holdTheQueueUp() {
    output.deliver(frameOf(1, 1, 0));
    ASSERT_TRUE(test::comes(delegate.begun.get_future(), "the delivered frame"));
  }
  void letTheQueueGo() {
    delegate.letGo.set_value();
    output.drain();
  }

  Delegate delegate;
  std::shared_ptr<SerialQueue> queue = std::make_shared<SerialQueue>("frames");
  CaptureVideoDataOutput output;
};

TEST_F(CaptureVideoDataOutputTest, HandsFramesOverOnItsQueueInTheirOrder) {
  for (int64_t time = 1; time <= 3; ++time) {
    output.deliver(frameOf(1, 1, time));
    output.drain();
  }
  EXPECT_THAT(delegate.handled, ElementsAre(1, 2, 3));
  EXPECT_THAT(delegate.dropped, IsEmpty());
  EXPECT_NE(delegate.thread, std::this_thread::get_id());
  EXPECT_EQ(output.droppedFrames(), 0u);
}

TEST_F(CaptureVideoDataOutputTest, AFrameThatComesWhileOneIsHandledWaits) {
  holdTheQueueUp();
  output.deliver(frameOf(1, 1, 1));
  letTheQueueGo();
  EXPECT_THAT(delegate.handled, ElementsAre(0, 1));
  EXPECT_EQ(output.droppedFrames(), 0u);
}

TEST_F(CaptureVideoDataOutputTest, TheNewestTakesThePlaceOfTheOneThatWaits) {
  holdTheQueueUp();
  for (int64_t time = 1; time <= 4; ++time) output.deliver(frameOf(1, 1, time));
  letTheQueueGo();
  EXPECT_THAT(delegate.handled, ElementsAre(0, 4));
  EXPECT_THAT(delegate.dropped, ElementsAre(1, 2, 3));
  EXPECT_EQ(output.droppedFrames(), 3u);
}

TEST_F(CaptureVideoDataOutputTest, ADroppedFrameIsLetGoAtOnce) {
  holdTheQueueUp();
  SampleBuffer frame = frameOf(1, 1, 1);
  const std::weak_ptr<const PixelBuffer> picture = frame.imageBuffer;
  output.deliver(frame);
  frame.imageBuffer = nullptr;
  EXPECT_FALSE(picture.expired());
  output.deliver(frameOf(1, 1, 2));
  EXPECT_TRUE(picture.expired());
  letTheQueueGo();
}

TEST_F(CaptureVideoDataOutputTest, EndingItWaitsForTheFramesItHas) {
  auto ending = std::make_unique<CaptureVideoDataOutput>();
  ending->setSampleBufferDelegate(&delegate, queue);
  ending->deliver(frameOf(1, 1, 7));
  ending = nullptr;
  EXPECT_THAT(delegate.handled, ElementsAre(7));
}

TEST(CaptureVideoDataOutput, WithoutADelegateFramesGoNowhere) {
  CaptureVideoDataOutput output;
  output.deliver(frameOf(1, 1));
  output.streamFailed("nobody listens");
  output.drain();
  EXPECT_EQ(output.droppedFrames(), 0u);
}

TEST(CaptureVideoDataOutput, PassesTheReasonOfAFailureOn) {
  CaptureVideoDataOutput output;
  std::vector<std::string> reasons;
  output.setStreamFailedHandler([&](const std::string& reason) { reasons.push_back(reason); });
  output.streamFailed("no bandwidth");
  EXPECT_THAT(reasons, ElementsAre("no bandwidth"));
}

}  // namespace
}  // namespace tessary
