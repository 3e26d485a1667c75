#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "preview/FrameRing.h"

namespace tessary::test {
namespace {

FrameRing::Frame makeFrame() { return std::make_shared<PixelBuffer>(TextureSize{2, 2}); }

TEST(FrameRing, StartsEmptyAtSlotNought) {
  const FrameRing ring;
  EXPECT_EQ(ring.cvLastTexture(), 0);
  EXPECT_EQ(ring.newest().frame, nullptr);
  for (int32_t slot = 0; slot < FrameRing::kSlots; ++slot) EXPECT_EQ(ring.slot(slot), nullptr);
}

TEST(FrameRing, TheFirstFrameLandsInSlotOneAndTheFourthThereAgain) {
  FrameRing ring;
  const int32_t slots[] = {1, 2, 0, 1, 2};
  for (const int32_t slot : slots) {
    const FrameRing::Frame frame = makeFrame();
    ring.push(frame);
    EXPECT_EQ(ring.cvLastTexture(), slot);
    EXPECT_EQ(ring.slot(slot), frame);
    EXPECT_EQ(ring.newest().frame, frame);
  }
}

TEST(FrameRing, TheFirstFrameAfterClearingShowsFromSlotOneAndTheOthersAreEmpty) {
  FrameRing ring;
  for (int i = 0; i < 4; ++i) ring.push(makeFrame());
  ring.clear();
  EXPECT_EQ(ring.cvLastTexture(), 0);
  EXPECT_EQ(ring.newest().frame, nullptr);
  ring.push(makeFrame());
  EXPECT_EQ(ring.cvLastTexture(), 1);
  EXPECT_EQ(ring.slot(0), nullptr);
  EXPECT_NE(ring.slot(1), nullptr);
  EXPECT_EQ(ring.slot(2), nullptr);
}

TEST(FrameRing, TheSameMemoryPushedTwiceIsTwoFrames) {
  FrameRing ring;
  const FrameRing::Frame frame = makeFrame();
  ring.push(frame);
  const uint64_t first = ring.newest().sequence;
  ring.clear();
  ring.push(frame);
  EXPECT_NE(ring.newest().sequence, first);
}

TEST(FrameRing, AnotherSizeAndAClearingBeginARunOfTheirOwn) {
  struct Row {
    TextureSize size;  // pushed; nothing for a clearing
    bool begins;
  };
  const Row rows[] = {{{2, 2}, true}, {{2, 2}, false}, {{4, 2}, true}, {{4, 2}, false},
                      {{2, 2}, true}, {{}, true},      {{2, 2}, true}, {{2, 2}, false}};
  FrameRing ring;
  for (const Row& row : rows) {
    const uint64_t before = ring.newest().run;
    if (row.size == TextureSize{})
      ring.clear();
    else
      EXPECT_EQ(ring.push(std::make_shared<PixelBuffer>(row.size)), row.begins);
    EXPECT_EQ(ring.newest().run != before, row.begins) << row.size.width;
  }
}

TEST(FrameRing, FramesOfAnotherSizeStartInSlotOneAndTheOthersGo) {
  FrameRing ring;
  for (int i = 0; i < 4; ++i) ring.push(makeFrame());
  ring.push(std::make_shared<PixelBuffer>(TextureSize{4, 2}));
  EXPECT_EQ(ring.cvLastTexture(), 1);
  EXPECT_EQ(ring.slot(0), nullptr);
  EXPECT_EQ(ring.slot(2), nullptr);
}

TEST(FrameRing, HoldsNoMoreThanThreeFrames) {
  FrameRing ring;
  const FrameRing::Frame first = makeFrame();
  ring.push(first);
  for (int i = 0; i < 2; ++i) ring.push(makeFrame());
  EXPECT_EQ(first.use_count(), 2);
  ring.push(makeFrame());
  EXPECT_EQ(first.use_count(), 1);
}

TEST(FrameRing, AReaderOnAnotherThreadOnlyEverSeesWholeFramesInOrder) {
  constexpr uint8_t kFrames = 200;
  FrameRing ring;
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int round = 0; round < 20; ++round) {
      for (uint8_t value = 1; value <= kFrames; ++value) {
        auto frame = std::make_shared<PixelBuffer>(TextureSize{4, 4});
        std::fill_n(frame->data(), frame->byteCount(), value);
        ring.push(std::move(frame));
      }
      ring.clear();
    }
    done = true;
  });
  uint64_t last = 0;
  bool whole = true;
  bool ordered = true;
  while (!done) {
    const FrameRing::Newest newest = ring.newest();
    ordered = ordered && newest.sequence >= last;
    last = newest.sequence;
    if (!newest.frame) continue;
    for (size_t i = 1; i < newest.frame->byteCount(); ++i) {
      whole = whole && newest.frame->data()[i] == newest.frame->data()[0];
    }
  }
  writer.join();
  EXPECT_TRUE(whole);
  EXPECT_TRUE(ordered);
  EXPECT_EQ(ring.newest().sequence, 20U * kFrames);
}

}  // namespace
}  // namespace tessary::test
