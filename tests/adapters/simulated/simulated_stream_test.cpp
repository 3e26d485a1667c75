#include <atomic>
#include <semaphore>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SimulatedRig.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::SimulatedRig;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kMjpeg = kMediaSubTypeMJPEG;
constexpr uint32_t kRaw = kMediaSubTypeYUYV;

TEST(SimulatedStream, EveryFormatArrivesInItsSize) {
  const std::vector<CaptureFormat> formats =
      SimulatedRig(test::kAllSubTypes).microscope()->formats();
  for (const CaptureFormat& format : formats) {
    SimulatedRig rig(test::kAllSubTypes);
    rig.start(format);
    ASSERT_TRUE(rig.sink.waitForFrames(2)) << format.width;
    rig.input->stopStreaming();
    EXPECT_THAT(rig.sink.sizes(), ElementsAre(TextureSize{format.width, format.height}));
    EXPECT_EQ(rig.system.droppedFrames(), 0U);
  }
}

TEST(SimulatedStream, TheFormatThatFollowsTheStartIsTheFirstToArrive) {
  SimulatedRig rig;
  ASSERT_NE(rig.microscope()->activeFormat(), rig.format(kMjpeg, 1280));
  rig.open();
  rig.input->startStreaming(rig.sink);
  rig.configure(rig.format(kMjpeg, 1280));
  ASSERT_TRUE(rig.sink.waitForFrames(3));
  EXPECT_THAT(rig.sink.sizes(), ElementsAre(TextureSize{1280, 720}));
}

TEST(SimulatedStream, StartsByItselfWhenNoConfigurationFollows) {
  SimulatedRig rig;
  rig.open();
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_THAT(rig.sink.sizes(), ElementsAre(TextureSize{640, 480}));
}

TEST(SimulatedStream, AChangeWhileRunningSwitchesTheSize) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  for (const auto& [type, width, height] : {std::tuple(kRaw, 1280, 720),
                                            {kMjpeg, 1920, 1080},
                                            {kMjpeg, 640, 480},
                                            {kRaw, 1920, 1080}}) {
    rig.configure(rig.format(type, width));
    ASSERT_TRUE(rig.sink.waitForSize({width, height})) << width;
  }
  EXPECT_EQ(rig.system.droppedFrames(), 0U);
}

TEST(SimulatedStream, TimeStampsFollowTheFrameRateAndTheMonotonicClock) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  ASSERT_TRUE(rig.sink.waitForFrames(20));
  rig.input->stopStreaming();
  const auto arrivals = rig.sink.arrivals();
  const MediaTime first = arrivals.front().frame.presentationTimeStamp;
  int64_t slot = -1;
  for (const auto& arrival : arrivals) {
    const MediaTime stamp = arrival.frame.presentationTimeStamp;
    EXPECT_LE(stamp, arrival.time.time_since_epoch()) << "a frame can't arrive before it was taken";
    // A slow machine loses frames, but each has its place in the same even time.
    const int64_t number = ((stamp - first).count() * 30 + 999'999) / 1'000'000;
    EXPECT_EQ((stamp - first).count(), number * 1'000'000 / 30);
    EXPECT_GT(number, slot);
    slot = number;
  }
}

TEST(SimulatedStream, TheFrameDurationIsKept) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640), Fraction{1, 10});
  ASSERT_TRUE(rig.sink.waitForFrames(3));
  const auto arrivals = rig.sink.arrivals();
  for (size_t i = 1; i < arrivals.size(); ++i) {
    const auto gap =
        arrivals[i].frame.presentationTimeStamp - arrivals[i - 1].frame.presentationTimeStamp;
    EXPECT_EQ(gap.count() % 100'000, 0) << i;
  }
}

TEST(SimulatedStream, TimeStampsRiseAcrossChanges) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  for (size_t change = 1; change <= 8; ++change) {
    ASSERT_TRUE(rig.sink.waitForFrames(2 * change));
    rig.configure(rig.format(change % 2 == 0 ? kMjpeg : kRaw, 640));
  }
  rig.input->stopStreaming();
  const auto arrivals = rig.sink.arrivals();
  for (size_t i = 1; i < arrivals.size(); ++i) {
    EXPECT_GE(arrivals[i].frame.presentationTimeStamp - arrivals[i - 1].frame.presentationTimeStamp,
              33'333us);
  }
}

TEST(SimulatedStream, NothingArrivesAfterStopping) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  rig.input->stopStreaming();
  const size_t count = rig.sink.frameCount();
  rig.configure(rig.format(kMjpeg, 1280));
  EXPECT_EQ(rig.sink.frameCount(), count);
  rig.input->stopStreaming();  // twice is harmless

  rig.input->startStreaming(rig.sink);
  rig.configure(rig.format(kMjpeg, 640));
  EXPECT_TRUE(rig.sink.waitForFrames(count + 2));
}

TEST(SimulatedStream, StoppingDoesNotWaitForTheNextFrame) {
  // With a frame every 200 ms, even the quickest of the stops would be seen to wait.
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640), Fraction{1, 5});
  auto quickest = std::chrono::steady_clock::duration::max();
  for (int turn = 0; turn < 4; ++turn) {
    ASSERT_TRUE(rig.sink.waitForFrames(rig.sink.frameCount() + 1));
    const auto before = std::chrono::steady_clock::now();
    rig.input->stopStreaming();
    quickest = std::min(quickest, std::chrono::steady_clock::now() - before);
    rig.input->startStreaming(rig.sink);
  }
  EXPECT_LT(quickest, 100ms);
}

TEST(SimulatedStream, DamagedFramesAreSkippedAndCounted) {
  for (const uint32_t type : {kMjpeg, kRaw}) {
    SimulatedRig rig;
    rig.system.damageNext(3);
    rig.start(rig.format(type, 640));
    ASSERT_TRUE(rig.sink.waitForFrames(2));
    EXPECT_EQ(rig.system.droppedFrames(), 3U);
    EXPECT_THAT(rig.sink.failures(), IsEmpty());
  }
}

TEST(SimulatedStream, AFreezeIsAGapInTime) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  rig.system.freeze(250ms);
  const size_t before = rig.sink.frameCount();
  ASSERT_TRUE(rig.sink.waitForFrames(before + 3));
  rig.input->stopStreaming();
  const auto arrivals = rig.sink.arrivals();
  MediaTime longest{0};
  for (size_t i = 1; i < arrivals.size(); ++i) {
    longest = std::max(longest, arrivals[i].frame.presentationTimeStamp -
                                    arrivals[i - 1].frame.presentationTimeStamp);
  }
  EXPECT_GE(longest, 200ms);
}

TEST(SimulatedStream, NothingArrivesAfterAFreezeNotEvenWhatWasBeingSent) {
  struct SlowSink final : FrameSink {
    void deliver(const SampleBuffer&) override {
      begun.release();
      std::this_thread::sleep_for(50ms);
      ++delivered;
    }
    void streamFailed(const std::string& reason) override { ADD_FAILURE() << reason; }

    std::counting_semaphore<> begun{0};
    std::atomic<int> delivered = 0;
  };
  SlowSink sink;
  SimulatedRig rig;
  rig.open();
  rig.input->startStreaming(sink);
  ASSERT_TRUE(sink.begun.try_acquire_for(60s));
  rig.system.freeze(1h);
  const int delivered = sink.delivered;
  rig.input->stopStreaming();
  EXPECT_EQ(sink.delivered, delivered);
}

TEST(SimulatedStream, UnpluggingEndsItQuietly) {
  SimulatedRig rig;
  rig.start(rig.format(kMjpeg, 640));
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  rig.system.unplug();
  rig.input->stopStreaming();
  EXPECT_THAT(rig.sink.failures(), IsEmpty());
}

TEST(SimulatedStream, UnpluggingBetweenStartAndConfigurationIsHarmless) {
  SimulatedRig rig;
  rig.open();
  const auto device = rig.microscope();
  rig.input->startStreaming(rig.sink);
  rig.system.unplug();
  EXPECT_FALSE(device->lockForConfiguration());
  device->unlockForConfiguration();  // the program goes on without the lock
  rig.input.reset();
  EXPECT_THAT(rig.sink.failures(), IsEmpty());
}

TEST(SimulatedStream, ComesBackAfterReplugging) {
  SimulatedRig rig;
  for (size_t turn = 1; turn <= 3; ++turn) {
    rig.start(rig.format(kMjpeg, 640));
    ASSERT_TRUE(rig.sink.waitForFrames(rig.sink.frameCount() + 2));
    rig.system.unplug();
    rig.input.reset();
    rig.system.plug();
  }
}

TEST(SimulatedStream, APictureThatCannotBeDecodedEndsItWithAReason) {
  test::ManualExecutor mainQueue;
  SimulatedCaptureSystem system(
      mainQueue, [](uint32_t) { return nullptr; }, test::cameraEncoder());
  test::CollectingSink sink;
  const auto input = *system.makeDeviceInput(system.devices().at(0));
  input->startStreaming(sink);
  ASSERT_TRUE(sink.waitForFailure());
  EXPECT_EQ(sink.failures().size(), 1U);
}

}  // namespace
}  // namespace tessary
