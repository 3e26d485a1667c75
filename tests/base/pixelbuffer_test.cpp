#include "base/PixelBuffer.h"

#include <cstring>
#include <deque>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessary {
namespace {

constexpr TextureSize kSmall{4, 3};
constexpr TextureSize kLarge{64, 48};

TEST(PixelBuffer, HoldsFourBytesAPixelWithoutGaps) {
  PixelBuffer buffer(TextureSize{5, 3});
  EXPECT_EQ(buffer.size(), (TextureSize{5, 3}));
  EXPECT_EQ(buffer.bytesPerRow(), 20U);
  EXPECT_EQ(buffer.byteCount(), 60U);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.data()) % 64, 0U);
  std::memset(buffer.data(), 1, buffer.byteCount());
}

TEST(PixelBuffer, WithoutASizeItHoldsNothing) {
  EXPECT_EQ(PixelBuffer(TextureSize{}).byteCount(), 0U);
  EXPECT_EQ(PixelBuffer(TextureSize{-4, 3}).byteCount(), 0U);
  EXPECT_EQ(PixelBuffer(TextureSize{4, -3}).byteCount(), 0U);
}

TEST(PixelBufferPool, BuffersInUseAreDistinct) {
  PixelBufferPool pool;
  const auto first = pool.take(kSmall);
  const auto second = pool.take(kSmall);
  EXPECT_NE(first->data(), second->data());
}

TEST(PixelBufferPool, AReturnedBufferIsHandedOutAgain) {
  PixelBufferPool pool;
  auto buffer = pool.take(kSmall);
  const uint8_t* data = buffer->data();
  auto other = buffer;
  buffer.reset();
  EXPECT_NE(pool.take(kSmall)->data(), data);  // `other` still uses it
  other.reset();
  std::set<const uint8_t*> seen;
  std::vector<std::shared_ptr<PixelBuffer>> taken{pool.take(kSmall), pool.take(kSmall)};
  for (const auto& each : taken) seen.insert(each->data());
  EXPECT_TRUE(seen.contains(data));
}

TEST(PixelBufferPool, AnotherSizeGetsAnotherBuffer) {
  PixelBufferPool pool;
  pool.take(kSmall).reset();
  const auto large = pool.take(kLarge);
  EXPECT_EQ(large->size(), kLarge);
  std::memset(large->data(), 1, large->byteCount());
  EXPECT_EQ(pool.take(kSmall)->size(), kSmall);
}

TEST(PixelBufferPool, BuffersMayOutliveThePool) {
  std::optional<PixelBufferPool> pool(std::in_place);
  const auto buffer = pool->take(kSmall);
  pool.reset();
  std::memset(buffer->data(), 1, buffer->byteCount());
  EXPECT_EQ(buffer->size(), kSmall);
}

TEST(PixelBufferPool, MoreBuffersThanItKeepsAreAllUsable) {
  PixelBufferPool pool;
  for (int round = 0; round < 3; ++round) {
    std::vector<std::shared_ptr<PixelBuffer>> taken;
    std::set<const uint8_t*> seen;
    for (int i = 0; i < 20; ++i) seen.insert(taken.emplace_back(pool.take(kSmall))->data());
    EXPECT_EQ(seen.size(), 20U);
  }
}

TEST(PixelBufferPool, WhatADelayMadeNecessaryIsGivenBackWhenManyPicturesDidWithout) {
  PixelBufferPool pool;
  {
    std::vector<std::shared_ptr<PixelBuffer>> late;
    for (int i = 0; i < 6; ++i) late.push_back(pool.take({64, 48}));
  }
  ASSERT_EQ(pool.idleBuffers(), 6U);
  std::deque<std::shared_ptr<PixelBuffer>> ring;
  const auto show = [&](int pictures) {
    for (int i = 0; i < pictures; ++i) {
      ring.push_back(pool.take({64, 48}));
      if (ring.size() > 3) ring.pop_front();
    }
  };
  show(250);
  EXPECT_EQ(pool.idleBuffers(), 3U) << "more delays may follow";
  show(400);
  EXPECT_EQ(pool.idleBuffers(), 1U) << "one for the picture that comes before the oldest goes";
  show(1000);
  EXPECT_EQ(pool.idleBuffers(), 1U) << "what is in use again and again stays";
}

TEST(PixelBufferPool, BuffersComeAndGoOnDifferentThreads) {
  PixelBufferPool pool;
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&pool, t] {
      for (int i = 0; i < 500; ++i) {
        const auto buffer = pool.take(t % 2 ? kSmall : kLarge);
        std::memset(buffer->data(), t, buffer->byteCount());
        ASSERT_EQ(buffer->data()[buffer->byteCount() - 1], t);
      }
    });
  }
}

}  // namespace
}  // namespace tessary
