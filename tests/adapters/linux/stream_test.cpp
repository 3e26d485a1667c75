// Frames on their way from the driver to the sink, and what happens when they don't come.
#include <cerrno>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "StreamRig.h"
#include "base/FourCharCode.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::FakeVideoDriver;
using test::StreamRig;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Received = test::RecordingSink::Received;

constexpr TextureSize kYuyvSize{8, 4};

// A whole 'yuvs' frame of the fake camera, which is what it starts with.
FakeVideoDriver::Frame yuyv(char first, MediaTime stamp = 1us) {
  std::vector<uint8_t> bytes(8 * 4 * 2, 0x80);
  bytes[0] = uint8_t(first);
  return {std::move(bytes), stamp};
}

FakeVideoDriver::Frame flagged(FakeVideoDriver::Frame frame) {
  frame.flags = V4L2_BUF_FLAG_ERROR;
  return frame;
}

TEST(Stream, FramesArriveInOrderWithTheirExactTimeStamps) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a', 5s + 999'999us)));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  ASSERT_TRUE(rig.driver->push(yuyv('b', 6s + 33'334us)));
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  rig.input->stopStreaming();
  EXPECT_THAT(rig.sink.frames(), ElementsAre(Received{kYuyvSize, 'a', 5'999'999us},
                                             Received{kYuyvSize, 'b', 6'033'334us}));
  EXPECT_EQ(rig.input->counters(), StreamCounters{.delivered = 2});
  EXPECT_THAT(rig.driver->violations(), IsEmpty());
}

TEST(Stream, AFrameWithoutTimeStampGetsTheTimeOfItsArrival) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  const auto before = std::chrono::steady_clock::now().time_since_epoch();
  ASSERT_TRUE(rig.driver->push(yuyv('a', 0us)));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_GE(rig.sink.frames()[0].stamp, std::chrono::floor<MediaTime>(before));
  EXPECT_LE(rig.sink.frames()[0].stamp, std::chrono::steady_clock::now().time_since_epoch());
}

TEST(Stream, EveryBufferGoesBackToTheDriver) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(rig.driver->push(yuyv('a')));
    ASSERT_TRUE(rig.sink.waitForFrames(size_t(i) + 1));
  }
  EXPECT_EQ(rig.input->counters().gaps, 0u);
}

TEST(Stream, TheDecoderGetsWhatTheDriverFilledAndItsRowLength) {
  StreamRig rig;
  rig.driver->paddingPerRow = 48;
  ASSERT_TRUE(rig.start());
  auto frame = yuyv('a');
  frame.bytes.resize(64 * 4, 0);
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_THAT(rig.decoding.calls(), ElementsAre(test::Decoding::Call{256, kYuyvSize, 64}));
  EXPECT_THAT(rig.decoding.subTypes(), ElementsAre(kMediaSubTypeYUYV));
}

TEST(Stream, NewestWinsWhenSeveralFramesWait) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  rig.decoding.shutGate();
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.decoding.waitUntilSomethingWaits());
  ASSERT_TRUE(rig.driver->push(yuyv('b')));
  ASSERT_TRUE(rig.driver->push(yuyv('c')));
  ASSERT_TRUE(rig.driver->push(yuyv('d')));
  rig.decoding.openGate();
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  EXPECT_EQ(rig.sink.frames()[1].firstByte, 'd');
  EXPECT_EQ(rig.input->counters(), (StreamCounters{.delivered = 2, .late = 2}));
}

TEST(Stream, ADamagedFrameIsNoReasonToDropAnOlderGoodOne) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  rig.decoding.shutGate();
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.decoding.waitUntilSomethingWaits());
  ASSERT_TRUE(rig.driver->push(yuyv('b')));
  ASSERT_TRUE(rig.driver->push(flagged(yuyv('c'))));
  rig.decoding.openGate();
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  EXPECT_EQ(rig.sink.frames()[1].firstByte, 'b');
  EXPECT_EQ(rig.input->counters(), (StreamCounters{.delivered = 2, .flagged = 1}));
}

TEST(Stream, BadFramesAreCountedAndSkippedAndTheNextGoodOneComes) {
  const auto sized = [](size_t bytes) {
    auto frame = yuyv('a');
    frame.bytes.resize(bytes);
    return frame;
  };
  auto pretends = yuyv('a');
  pretends.bytesused = 4097;  // the buffers hold 4096
  const struct {
    const char* what;
    FakeVideoDriver::Frame frame;
    StreamCounters counters;
    const char* told;
  } rows[] = {
      {"flagged by the driver", flagged(yuyv('a')), {.flagged = 1}, "flagged as damaged"},
      {"flagged and empty", flagged(sized(0)), {.flagged = 1}, "flagged as damaged"},
      {"empty", sized(0), {.tooShort = 1}, "too short"},
      {"a byte short", sized(63), {.tooShort = 1}, "too short"},
      {"longer than its buffer", pretends, {.tooShort = 1}, "too short"},
      {"refused by the decoder", yuyv('X'), {.undecodable = 1}, "undecodable"},
      {"no memory to decode it", yuyv('M'), {.undecodable = 1}, "undecodable"},
  };
  for (const auto& row : rows) {
    StreamRig rig;
    ASSERT_TRUE(rig.start());
    ASSERT_TRUE(rig.driver->push(row.frame));
    ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.input->counters() == row.counters; }))
        << row.what;
    ASSERT_TRUE(rig.driver->push(yuyv('z'))) << row.what;
    ASSERT_TRUE(rig.sink.waitForFrames(1)) << row.what;
    EXPECT_EQ(rig.sink.frames()[0].firstByte, 'z') << row.what;
    rig.input->stopStreaming();
    EXPECT_EQ(rig.linesWith(std::string("Scope: frames lost: 1 ") + row.told), 1u) << row.what;
    EXPECT_THAT(rig.sink.failures(), IsEmpty()) << row.what;
    EXPECT_THAT(rig.driver->violations(), IsEmpty()) << row.what;
  }
}

TEST(Stream, ACompressedFrameMayHaveAnyLengthButNone) {
  StreamRig rig;
  rig.timing.configurationGrace = 1h;
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.configure(kMediaSubTypeMJPEG, 64, 48, {1, 30}));
  ASSERT_TRUE(rig.driver->waitForStreamOn(1));
  ASSERT_TRUE(rig.driver->push({{}}));
  ASSERT_TRUE(rig.waitForCounters([](const auto& now) { return now.tooShort == 1; }));
  ASSERT_TRUE(rig.driver->push({{'j'}}));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_EQ(rig.sink.frames()[0].size, (TextureSize{64, 48}));
}

TEST(Stream, TheLastRowOfARawFrameNeedsNoPadding) {
  StreamRig rig;
  rig.driver->paddingPerRow = 48;
  ASSERT_TRUE(rig.start());
  auto frame = yuyv('a');
  frame.bytes.resize(64 * 3 + 16 - 1);
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.waitForCounters([](const auto& now) { return now.tooShort == 1; }));
  frame.bytes.resize(64 * 3 + 16);
  ASSERT_TRUE(rig.driver->push(frame));
  EXPECT_TRUE(rig.sink.waitForFrames(1));
}

TEST(Stream, GapsInTheSequenceAreCounted) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  auto frame = yuyv('a');
  frame.lost = 7;  // before the first frame: nothing to compare with
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  frame.lost = 3;
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  frame.lost = 0;
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.sink.waitForFrames(3));
  frame.lost = uint32_t(-2);  // a driver whose count steps back
  ASSERT_TRUE(rig.driver->push(frame));
  ASSERT_TRUE(rig.sink.waitForFrames(4));
  EXPECT_EQ(rig.input->counters(), (StreamCounters{.delivered = 4, .gaps = 3}));
}

TEST(Stream, WhatTheStreamEndsWithIsSummedUpInOneLine) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  rig.input->stopStreaming();
  EXPECT_EQ(rig.linesWith("Scope: stream ended, 1 frames delivered, 0 flagged, 0 too short, 0 "
                          "undecodable, 0 late, 0 missing, 0 restarts"),
            1u);
}

TEST(Stream, FaultsInARowMakeOneLine) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  for (uint64_t i = 1; i <= 20; ++i) {
    ASSERT_TRUE(rig.driver->push(flagged(yuyv('a'))));
    ASSERT_TRUE(rig.waitForCounters([&](const auto& now) { return now.flagged == i; }));
  }
  rig.input->stopStreaming();
  EXPECT_EQ(rig.linesWith("Scope: frames lost: "), 1u);
  EXPECT_EQ(rig.linesWith("20 flagged"), 1u);
}

// ---- Starting and configuring

TEST(StreamStart, TheUsualSequenceStartsTheVideoOnceAsConfigured) {
  StreamRig rig;
  rig.timing.configurationGrace = 1h;
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.configure(kMediaSubTypeMJPEG, 32, 24, {1, 25}));
  ASSERT_TRUE(rig.driver->waitForStreamOn(1));
  rig.input->stopStreaming();
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_S_FMT), 1);
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_STREAMON), 1);
  EXPECT_EQ(rig.driver->formatSet()->pixelformat, V4L2_PIX_FMT_MJPEG);
  EXPECT_EQ(rig.driver->formatSet()->width, 32u);
  EXPECT_EQ(rig.driver->intervalSet()->numerator, 1u);
  EXPECT_EQ(rig.driver->intervalSet()->denominator, 25u);
}

TEST(StreamStart, WithoutConfigurationItStartsAfterAWhileAtTheDefault) {
  StreamRig rig;
  rig.timing.configurationGrace = 1ms;
  ASSERT_TRUE(rig.start());
  EXPECT_EQ(rig.driver->formatSet()->pixelformat, V4L2_PIX_FMT_YUYV);
  EXPECT_FALSE(rig.driver->intervalSet());
}

TEST(StreamStart, ALockHoldsTheStartBackForAsLongAsItTakes) {
  StreamRig rig;
  rig.timing.configurationGrace = 1ms;
  ASSERT_TRUE(rig.open());
  ASSERT_TRUE(rig.device->lockForConfiguration());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.driver->waitsWithoutLimit(); }));
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_S_FMT), 0);
  rig.device->setActiveFormat({kMediaSubTypeMJPEG, 64, 48, {}});
  rig.device->unlockForConfiguration();
  ASSERT_TRUE(rig.driver->waitForStreamOn(1));
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_S_FMT), 1);
  EXPECT_EQ(rig.driver->formatSet()->pixelformat, V4L2_PIX_FMT_MJPEG);
}

TEST(StreamStart, ItCanBeStoppedWhileItWaits) {
  StreamRig rig;
  rig.timing.configurationGrace = 1h;
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  rig.input->stopStreaming();
  ASSERT_TRUE(rig.device->lockForConfiguration());
  rig.input->startStreaming(rig.sink);
  rig.input.reset();
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_S_FMT), 0);
  EXPECT_TRUE(rig.leakFree());
}

TEST(StreamStart, AChangeWhileItRunsReconfiguresIt) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  ASSERT_TRUE(rig.configure(kMediaSubTypeMJPEG, 64, 48, {1, 30}));
  ASSERT_TRUE(rig.driver->waitForStreamOn(2));
  ASSERT_TRUE(rig.driver->push({{'b'}}));
  ASSERT_TRUE(rig.sink.waitForFrames(2));
  EXPECT_EQ(rig.sink.frames()[1].size, (TextureSize{64, 48}));
  EXPECT_THAT(rig.decoding.subTypes(), ElementsAre(kMediaSubTypeYUYV, kMediaSubTypeMJPEG));
  EXPECT_EQ(rig.input->counters(), StreamCounters{.delivered = 2});
  EXPECT_THAT(rig.driver->violations(), IsEmpty());
}

TEST(StreamStart, AnUnlockThatChangesNothingLeavesTheStreamAlone) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  const auto now = rig.device->activeFormat();
  for (int i = 0; i < 3; ++i) {
    rig.device->lockForConfiguration();
    rig.device->setActiveFormat(now);
    rig.device->unlockForConfiguration();
  }
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_STREAMON), 1);
}

TEST(StreamStart, AFormatThatTheCameraDoesNotOfferIsIgnored) {
  StreamRig rig;
  rig.discover();
  const auto before = rig.device->activeFormat();
  rig.device->setActiveFormat({kMediaSubTypeMJPEG, 65, 48, {}});
  rig.device->setActiveFormat({kMediaSubTypeNV12, 64, 48, {}});
  EXPECT_EQ(rig.device->activeFormat(), before);
}

TEST(StreamStart, TheFormatStaysWithTheDeviceWhenItIsClosedAndOpened) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.configure(kMediaSubTypeMJPEG, 64, 48, {1, 30}));
  rig.input.reset();
  EXPECT_EQ(rig.device->activeFormat().mediaSubType, kMediaSubTypeMJPEG);
}

TEST(StreamStart, TheDriverMayAnswerWithAnotherSize) {
  StreamRig rig;
  rig.driver->answeredSize = {4, 2};
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push({std::vector<uint8_t>(16, 'a')}));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  EXPECT_EQ(rig.sink.frames()[0].size, (TextureSize{4, 2}));
  EXPECT_EQ(rig.linesWith("Scope: asked for 8x4, it sends 4x2"), 1u);
}

TEST(StreamStart, ACameraThatKnowsNoRatesStreams) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.discover();
  rig.device->setActiveVideoMinFrameDuration({1, 30});
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  EXPECT_TRUE(rig.sink.waitForFrames(1));
}

TEST(StreamStart, AStoppedStreamCanBeStartedAgain) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  for (int i = 2; i <= 4; ++i) {
    rig.input->stopStreaming();
    EXPECT_FALSE(rig.driver->streaming());
    EXPECT_EQ(rig.driver->mappings(), 0);
    rig.input->startStreaming(rig.sink);
    ASSERT_TRUE(rig.driver->waitForStreamOn(i));
  }
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  rig.input.reset();
  EXPECT_TRUE(rig.leakFree());
  EXPECT_THAT(rig.driver->violations(), IsEmpty());
}

// ---- Failing to open or to start

TEST(StreamFailure, ACameraThatCantBeOpenedIsToldInPlainWords) {
  const struct {
    int error;
    const char* text;
  } rows[] = {
      {EACCES, "You have no permission to use /dev/video7. Add yourself to the group \"video\""},
      {EBUSY, "Another program is using the camera. Close that program"},
      {ENODEV, "The camera is not connected any more. Plug it in again."},
      {ENOENT, "The camera is not connected any more. Plug it in again."},
      {EMFILE, "Too many files are open."},
      {EIO, "/dev/video7 can't be opened: Input/output error. Unplug the camera"},
  };
  for (const auto& row : rows) {
    StreamRig rig;
    rig.discover();
    rig.driver->setOpenError(row.error);
    EXPECT_FALSE(rig.open());
    EXPECT_THAT(rig.error, HasSubstr(row.text));
    EXPECT_TRUE(rig.leakFree());
  }
}

TEST(StreamFailure, AnotherProgramsCameraIsNoticedWhenItIsOpened) {
  StreamRig rig;
  rig.driver->setOtherProgramStreams(true);
  EXPECT_FALSE(rig.open());
  EXPECT_THAT(rig.error, HasSubstr("Another program is using the camera."));
  EXPECT_TRUE(rig.leakFree());
}

TEST(StreamFailure, WhatKeepsTheVideoFromStartingIsToldOnce) {
  const struct {
    unsigned long request;
    int error;
    const char* text;
  } rows[] = {
      {VIDIOC_S_FMT, EBUSY, "Another program is using Scope. Close that program"},
      {VIDIOC_STREAMON, EBUSY, "Another program is using Scope. Close that program"},
      {VIDIOC_STREAMON, ENOSPC, "The USB bus has no room for the pictures of Scope. Plug it into"},
      {VIDIOC_S_FMT, EINVAL, "Scope can't send pictures: Invalid argument. Choose another"},
      {VIDIOC_QUERYBUF, ENOMEM, "There is no memory for the pictures of Scope."},
  };
  for (const auto& row : rows) {
    StreamRig rig;
    ASSERT_TRUE(rig.open());
    rig.driver->failIoctl(row.request, row.error, 1000);
    rig.input->startStreaming(rig.sink);
    ASSERT_TRUE(rig.sink.waitForFailure()) << row.text;
    rig.input.reset();
    ASSERT_EQ(rig.sink.failures().size(), 1u);
    EXPECT_THAT(rig.sink.failures()[0], HasSubstr(row.text));
    EXPECT_EQ(rig.linesWith(row.text), 1u);
    EXPECT_TRUE(rig.leakFree());
  }
}

TEST(StreamFailure, ACameraThatOffersNothingFails) {
  StreamRig rig;
  rig.driver->formats = {};
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.sink.waitForFailure());
  EXPECT_THAT(rig.sink.failures()[0], HasSubstr("offers no picture format"));
}

TEST(StreamFailure, AFormatThatNothingDecodesFails) {
  StreamRig rig;
  rig.decoding.knowNothing();
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.sink.waitForFailure());
  EXPECT_THAT(rig.sink.failures()[0], HasSubstr("sends pictures that can't be read"));
}

TEST(StreamFailure, TooFewBuffersFail) {
  StreamRig rig;
  rig.driver->bufferCount = 1;
  ASSERT_TRUE(rig.open());
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.sink.waitForFailure());
  EXPECT_THAT(rig.sink.failures()[0], HasSubstr("There is no memory"));
}

// ---- Silence and trouble

TEST(StreamRecovery, ASilentCameraIsRestartedUntilItSpeaks) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.timing.silence = 5ms;
  rig.timing.longestSilence = 20ms;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->waitForStreamOn(6));
  rig.driver->runFreely(yuyv('a').bytes);
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  rig.input->stopStreaming();
  EXPECT_GE(rig.input->counters().restarts, 5u);
  // The format is set once: it is not lost by a restart.
  EXPECT_EQ(rig.linesWith("Scope: no picture for 0."), rig.input->counters().restarts);
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_S_FMT), 1);
  EXPECT_THAT(rig.driver->violations(), IsEmpty());
  EXPECT_THAT(rig.sink.failures(), IsEmpty());
}

TEST(StreamRecovery, TheWaitForAFrameDoublesUpToItsLimit) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.timing.silence = 10ms;
  rig.timing.longestSilence = 40ms;
  const auto began = std::chrono::steady_clock::now();
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->waitForStreamOn(6));
  // 10, 20, 40, 40 and 40; a busy machine is slower at will.
  EXPECT_GE(std::chrono::steady_clock::now() - began, 150ms);
}

TEST(StreamRecovery, SilenceAfterADamagedBufferIsEndedSooner) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.timing.silenceAfterFault = 5ms;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  ASSERT_TRUE(rig.driver->push(flagged(yuyv('b'))));
  ASSERT_TRUE(rig.driver->waitForStreamOn(2));
  ASSERT_TRUE(rig.driver->push(yuyv('c')));
  EXPECT_TRUE(rig.sink.waitForFrames(2));
}

TEST(StreamRecovery, ASlowCameraIsNotASilentOne) {
  StreamRig rig;
  rig.discover();
  rig.device->setActiveVideoMinFrameDuration({100, 1});
  rig.timing.silence = 1ms;
  rig.timing.silenceAfterFault = 1ms;
  ASSERT_TRUE(rig.start());
  const auto end = std::chrono::steady_clock::now() + 50ms;
  ASSERT_TRUE(rig.driver->waitUntil([&] { return std::chrono::steady_clock::now() > end; }));
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_STREAMON), 1);
}

TEST(StreamRecovery, DamagedBuffersAreSilenceToo) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.timing.silence = 5ms;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->waitUntil([&] {
    rig.driver->push(flagged(yuyv('a')));
    return rig.driver->ioctls(VIDIOC_STREAMON) >= 2;
  }));
  EXPECT_EQ(rig.input->counters().delivered, 0u);
}

TEST(StreamRecovery, FramesThatOnlyTheDecoderRefusesAreNoSilence) {
  StreamRig rig;
  rig.driver->knowsFrameRates = false;
  rig.timing.silence = 500ms;
  ASSERT_TRUE(rig.start());
  rig.driver->runFreely(yuyv('X').bytes);
  const auto end = std::chrono::steady_clock::now() + 600ms;
  ASSERT_TRUE(rig.driver->waitUntil([&] { return std::chrono::steady_clock::now() > end; }));
  EXPECT_GT(rig.input->counters().undecodable, 0u);
  EXPECT_EQ(rig.input->counters().restarts, 0u);
}

TEST(StreamRecovery, ATransferThatFailsIsOvercome) {
  for (const int error : {EIO, EPROTO, EPIPE, ETIMEDOUT, ESHUTDOWN}) {
    for (const unsigned long request :
         std::set<unsigned long>{VIDIOC_S_FMT, VIDIOC_G_PARM, VIDIOC_REQBUFS, VIDIOC_QUERYBUF,
                                 VIDIOC_QBUF, VIDIOC_STREAMON, VIDIOC_DQBUF}) {
      StreamRig rig;
      ASSERT_TRUE(rig.open());
      rig.driver->failIoctl(request, error, 3);
      rig.driver->runFreely(yuyv('a').bytes);
      rig.input->startStreaming(rig.sink);
      ASSERT_TRUE(rig.sink.waitForFrames(2)) << error << " " << request;
      rig.input.reset();
      EXPECT_THAT(rig.sink.failures(), IsEmpty()) << error << " " << request;
      EXPECT_THAT(rig.driver->violations(), IsEmpty()) << error << " " << request;
      EXPECT_TRUE(rig.leakFree());
    }
  }
}

TEST(StreamRecovery, WaitingToTryAgainCanBeStopped) {
  StreamRig rig;
  rig.timing.retry = 1h;
  ASSERT_TRUE(rig.open());
  rig.driver->failIoctl(VIDIOC_STREAMON, EIO, 1);
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.driver->ioctls(VIDIOC_STREAMON) == 1; }));
  rig.input.reset();
  EXPECT_EQ(rig.driver->ioctls(VIDIOC_STREAMON), 1);
  EXPECT_TRUE(rig.leakFree());
}

TEST(StreamRecovery, AChangeOfFormatIsSeenAfterTrouble) {
  StreamRig rig;
  rig.timing.retry = 1h;
  ASSERT_TRUE(rig.open());
  rig.driver->failIoctl(VIDIOC_STREAMON, EIO, 1);
  rig.input->startStreaming(rig.sink);
  ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.driver->ioctls(VIDIOC_STREAMON) == 1; }));
  ASSERT_TRUE(rig.configure(kMediaSubTypeMJPEG, 64, 48, {1, 30}));
  ASSERT_TRUE(rig.driver->waitForStreamOn(2));
  EXPECT_EQ(rig.driver->formatSet()->pixelformat, V4L2_PIX_FMT_MJPEG);
}

// ---- Unplugging

TEST(StreamUnplug, AnUnpluggedCameraEndsTheStreamQuietly) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.sink.waitForFrames(1));
  rig.driver->unplug();
  ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.driver->mappings() == 0; }));
  rig.input->stopStreaming();
  EXPECT_THAT(rig.sink.failures(), IsEmpty());
  EXPECT_EQ(rig.linesWith("Scope: stream ended by unplugging, 1 frames delivered"), 1u);
  EXPECT_EQ(rig.input->counters().restarts, 0u);
  rig.input.reset();
  EXPECT_TRUE(rig.leakFree());
}

TEST(StreamUnplug, TransfersThatFailBeforeTheCameraIsGoneEndQuietlyToo) {
  StreamRig rig;
  ASSERT_TRUE(rig.start());
  rig.driver->failIoctl(VIDIOC_DQBUF, EPROTO, 1000);
  rig.driver->failIoctl(VIDIOC_REQBUFS, EIO, 1000);
  ASSERT_TRUE(rig.driver->push(yuyv('a')));
  ASSERT_TRUE(rig.waitForCounters([](const auto& now) { return now.restarts >= 3; }));
  rig.driver->unplug();
  const int before = rig.driver->ioctls(VIDIOC_REQBUFS);
  ASSERT_TRUE(rig.driver->waitUntil([&] { return rig.driver->ioctls(VIDIOC_REQBUFS) > before; }));
  rig.input.reset();
  EXPECT_EQ(rig.linesWith("Scope: stream ended by unplugging"), 1u);
  EXPECT_THAT(rig.sink.failures(), IsEmpty());
  EXPECT_TRUE(rig.leakFree());
}

}  // namespace
}  // namespace tessary
