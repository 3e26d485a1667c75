#include <cstdlib>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "GuardedBytes.h"
#include "JpegFrames.h"
#include "jpeg/JpegFrameDecoder.h"

namespace tessary {
namespace {

using test::Bytes;

constexpr TextureSize kSmall{48, 32};

class JpegFrameDecoderTest : public testing::Test {
 protected:
  std::shared_ptr<PixelBuffer> decode(const Bytes& frame, TextureSize announced = kSmall) {
    const test::GuardedBytes guarded(frame);
    return decoder_.decode(guarded.bytes(), announced, 0, pool_);
  }

  PixelBufferPool pool_;
  JpegFrameDecoder decoder_;
};

/// The largest difference of a channel, and 1000 where an alpha byte is not 255.
int difference(const PixelBuffer& picture, const Bytes& expected) {
  int largest = 0;
  for (size_t i = 0; i < expected.size(); ++i) {
    if (i % 4 == 3 && picture.data()[i] != 255) return 1000;
    largest = std::max(largest, std::abs(int(picture.data()[i]) - int(expected[i])));
  }
  return largest;
}

/// What TurboJPEG itself makes of a frame, with its most exact settings.
Bytes reference(const Bytes& frame, TextureSize size) {
  const std::unique_ptr<void, int (*)(void*)> handle(tjInitDecompress(), tjDestroy);
  Bytes pixels(size_t(size.width) * size_t(size.height) * 4);
  EXPECT_EQ(tjDecompress2(handle.get(), frame.data(), frame.size(), pixels.data(), size.width, 0,
                          size.height, TJPF_BGRA, TJFLAG_ACCURATEDCT),
            0);
  return pixels;
}

TEST_F(JpegFrameDecoderTest, DecodesEverySubsamplingExactly) {
  for (const int subsampling :
       {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_GRAY, TJSAMP_440, TJSAMP_411}) {
    for (const TextureSize size : {TextureSize{48, 32}, {47, 31}, {1, 1}, {640, 480}}) {
      const Bytes frame = test::encode(size, subsampling);
      const auto picture = decode(frame, size);
      ASSERT_TRUE(picture) << subsampling << ", " << size.width << " by " << size.height;
      EXPECT_EQ(picture->size(), size);
      EXPECT_EQ(difference(*picture, reference(frame, size)), 0) << subsampling;
    }
  }
}

TEST_F(JpegFrameDecoderTest, BytesStandBlueGreenRedAlpha) {
  const auto picture = decode(test::encode(kSmall, TJSAMP_444));
  ASSERT_TRUE(picture);
  EXPECT_LT(difference(*picture, test::sceneOf(kSmall)), 30);
}

TEST_F(JpegFrameDecoderTest, AFrameWithoutHuffmanTablesTakesTheStandardOnes) {
  for (const int subsampling : {TJSAMP_422, TJSAMP_420, TJSAMP_444, TJSAMP_GRAY}) {
    const Bytes whole = test::encode(kSmall, subsampling);
    const Bytes bare = test::without(whole, 0xC4);
    ASSERT_LT(bare.size(), whole.size());
    JpegFrameDecoder fresh;
    const auto picture = fresh.decode(bare, kSmall, 0, pool_);
    ASSERT_TRUE(picture) << subsampling;
    EXPECT_EQ(difference(*picture, reference(whole, kSmall)), 0) << subsampling;
  }
}

TEST_F(JpegFrameDecoderTest, TablesOfAnEarlierFrameAreNotUsedAgain) {
  const Bytes standard = test::encode(kSmall, TJSAMP_422);
  setenv("TJ_OPTIMIZE", "1", 1);
  const Bytes optimised = test::encode(kSmall, TJSAMP_422);
  unsetenv("TJ_OPTIMIZE");
  const size_t tables = test::segments(standard, 0xC4).at(0).size;
  ASSERT_NE(test::segments(optimised, 0xC4).at(0).size, tables);

  for (int turn = 0; turn < 2; ++turn) {
    ASSERT_TRUE(decode(optimised));
    const auto picture = decode(test::without(standard, 0xC4));
    ASSERT_TRUE(picture);
    EXPECT_EQ(difference(*picture, reference(standard, kSmall)), 0);
  }
}

// The frame before, which has another quality and Huffman tables of its own, leaves nothing behind.
TEST_F(JpegFrameDecoderTest, ATableThatAFrameLacksIsNotTakenFromAnEarlierOne) {
  setenv("TJ_OPTIMIZE", "1", 1);
  const Bytes earlier = test::encode(kSmall, TJSAMP_422);
  unsetenv("TJ_OPTIMIZE");
  const Bytes whole = test::encode(kSmall, TJSAMP_422);
  const auto withoutOne = [&](uint8_t marker, size_t index) {
    const test::Found table = test::segments(whole, marker).at(index);
    Bytes frame = whole;
    const auto start = frame.begin() + ptrdiff_t(table.position);
    frame.erase(start, start + ptrdiff_t(table.size));
    return frame;
  };

  ASSERT_EQ(test::segments(whole, 0xDB).size(), 2U);
  for (size_t i = 0; i < 2; ++i) {
    ASSERT_TRUE(decode(earlier));
    EXPECT_FALSE(decode(withoutOne(0xDB, i))) << "quantisation table " << i;
  }
  ASSERT_EQ(test::segments(whole, 0xC4).size(), 4U);
  for (size_t i = 0; i < 4; ++i) {
    ASSERT_TRUE(decode(earlier));
    const auto picture = decode(withoutOne(0xC4, i));
    ASSERT_TRUE(picture) << "Huffman table " << i;
    EXPECT_EQ(difference(*picture, reference(whole, kSmall)), 0) << "Huffman table " << i;
  }
}

TEST_F(JpegFrameDecoderTest, WhatFollowsTheEndIsIgnored) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  Bytes tail(5000);
  std::mt19937 random(1);
  for (uint8_t& byte : tail) byte = uint8_t(random());
  for (const Bytes& after : {Bytes{0}, Bytes(4096, 0), Bytes(64, 0xFF), tail, frame}) {
    const auto picture = decode(test::inserted(frame, frame.size(), after));
    ASSERT_TRUE(picture) << after.size();
    EXPECT_EQ(difference(*picture, reference(frame, kSmall)), 0);
  }
}

TEST_F(JpegFrameDecoderTest, AFewBytesBeforeTheEndAreNoDamage) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  struct Row {
    Bytes padding;
    bool good;
  };
  const std::vector<Row> rows{
      {{0}, true},
      {{0, 0, 0}, true},
      {Bytes(16, 0), true},
      {Bytes(16, 0x5A), true},
      {Bytes(9, 0xFF), true},  // fill bytes, which the format allows
      {Bytes(25, 0), false},   // the decoder reads up to 8 ahead, which it doesn't count

      {Bytes(500, 0x5A), false},
  };
  for (const Row& row : rows) {
    const auto picture = decode(test::inserted(frame, frame.size() - 2, row.padding));
    EXPECT_EQ(picture != nullptr, row.good) << row.padding.size() << " bytes";
    if (row.good && picture) {
      EXPECT_EQ(difference(*picture, reference(frame, kSmall)), 0);
    }
  }
}

TEST_F(JpegFrameDecoderTest, RestartMarkersAreFollowedAndOneMissingIsDamage) {
  setenv("TJ_RESTART", "1", 1);  // one after each row of blocks
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  unsetenv("TJ_RESTART");
  ASSERT_EQ(test::segments(frame, 0xDD).size(), 1U);
  const auto picture = decode(frame);
  ASSERT_TRUE(picture);
  EXPECT_EQ(difference(*picture, reference(frame, kSmall)), 0);

  EXPECT_TRUE(decode(test::inserted(frame, frame.size() - 2, {0, 0})));
  for (size_t at = test::scanStart(frame); at + 2 < frame.size(); ++at) {
    if (frame[at] != 0xFF || frame[at + 1] < 0xD0 || frame[at + 1] > 0xD7) continue;
    Bytes damaged = frame;
    damaged.erase(damaged.begin() + ptrdiff_t(at), damaged.begin() + ptrdiff_t(at + 2));
    EXPECT_FALSE(decode(damaged)) << at;
    damaged = frame;
    damaged[at + 1] = uint8_t(0xD0 | ((damaged[at + 1] + 3) & 7));
    EXPECT_FALSE(decode(damaged)) << at;
    // The last part is lost with its marker, and the end follows after a few bytes.
    damaged = Bytes(frame.begin(), frame.begin() + ptrdiff_t(at));
    damaged.insert(damaged.end(), {0, 0, 0xFF, 0xD9});
    EXPECT_FALSE(decode(damaged)) << at;
  }
}

TEST_F(JpegFrameDecoderTest, OddHeadersOfCheapCamerasAreNoDamage) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  const Bytes expected = reference(frame, kSmall);
  const size_t scan = test::scanStart(frame);

  Bytes oddScan = frame;
  oddScan[scan - 3] = 0;
  oddScan[scan - 2] = 0;
  oddScan[scan - 1] = 0;
  Bytes oddRevision = frame;
  const test::Found jfif = test::segments(frame, 0xE0).at(0);
  oddRevision[jfif.position + 9] = 7;
  const Bytes videoMarker{0xFF, 0xE0, 0x00, 0x10, 'A', 'V', 'I', '1', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Bytes comment{0xFF, 0xFE, 0x00, 0x05, 'x', 'y', 'z'};
  const Bytes fill{0xFF, 0xFF, 0xFF};

  const std::vector<std::pair<std::string, Bytes>> rows{
      {"scan parameters of 0", oddScan},
      {"unknown JFIF revision", oddRevision},
      {"an AVI1 segment", test::inserted(frame, 2, videoMarker)},
      {"no JFIF segment", test::without(frame, 0xE0)},
      {"a comment", test::inserted(frame, jfif.position + jfif.size, comment)},
      {"fill bytes", test::inserted(frame, jfif.position + jfif.size, fill)},
      {"odd scan after a comment", test::inserted(oddScan, 2, comment)},
  };
  for (const auto& [name, bytes] : rows) {
    for (int turn = 0; turn < 2; ++turn) {
      const auto picture = decode(bytes);
      ASSERT_TRUE(picture) << name;
      EXPECT_EQ(difference(*picture, expected), 0) << name;
    }
  }
  // An odd header hides no damage.
  oddScan.resize(oddScan.size() - 40);
  oddRevision.resize(oddRevision.size() - 40);
  EXPECT_FALSE(decode(oddScan));
  EXPECT_FALSE(decode(oddRevision));
}

TEST_F(JpegFrameDecoderTest, AnotherSizeThanAnnouncedGivesNoPicture) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  for (const TextureSize announced :
       {TextureSize{47, 32}, {48, 31}, {96, 64}, {24, 16}, {32, 48}, {0, 0}, {-48, -32}}) {
    EXPECT_FALSE(decode(frame, announced)) << announced.width << " by " << announced.height;
  }
  EXPECT_TRUE(decode(frame));
}

TEST_F(JpegFrameDecoderTest, AHugeClaimedSizeAsksForNoMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers need more address space than this test leaves";
#endif
  Bytes frame = test::encode(kSmall, TJSAMP_422);
  const size_t start = test::segments(frame, 0xC0).at(0).position;
  for (size_t i = 5; i < 9; ++i) frame[start + i] = 0xFF;
  EXPECT_FALSE(decode(frame));
  const auto decodeInLittleMemory = [&] {
    const rlimit limit{rlim_t(1) << 30, rlim_t(1) << 30};
    setrlimit(RLIMIT_AS, &limit);
    std::_Exit(decode(frame, {65535, 65535}) ? 1 : 0);
  };
  EXPECT_EXIT(decodeInLittleMemory(), testing::ExitedWithCode(0), "");
}

TEST_F(JpegFrameDecoderTest, KindsThatNoCameraSendsGiveNoPicture) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  EXPECT_FALSE(decode(test::encode(kSmall, TJSAMP_422, TJFLAG_PROGRESSIVE)));
  EXPECT_FALSE(decode(test::without(frame, 0xDB)));  // no quantisation tables
  EXPECT_FALSE(decode(test::without(frame, 0xC0)));  // no frame header
  EXPECT_FALSE(decode(test::without(frame, 0xDA)));  // no scan header
  Bytes twelveBits = frame;
  twelveBits[test::segments(frame, 0xC0).at(0).position + 4] = 12;
  EXPECT_FALSE(decode(twelveBits));
  // Two frame headers.
  const test::Found header = test::segments(frame, 0xC0).at(0);
  const Bytes copy(frame.begin() + ptrdiff_t(header.position),
                   frame.begin() + ptrdiff_t(header.position + header.size));
  EXPECT_FALSE(decode(test::inserted(frame, header.position, copy)));
}

TEST_F(JpegFrameDecoderTest, NoTruncationGivesAPicture) {
  for (const int subsampling : {TJSAMP_422, TJSAMP_420, TJSAMP_GRAY}) {
    const Bytes frame = test::encode(kSmall, subsampling);
    for (size_t length = 0; length < frame.size(); ++length) {
      ASSERT_FALSE(decode(Bytes(frame.begin(), frame.begin() + ptrdiff_t(length)))) << length;
    }
    ASSERT_TRUE(decode(frame));
  }
}

TEST_F(JpegFrameDecoderTest, AFrameCutOffAndEndedGivesNoPicture) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  // The last 8 bytes or so may be the padding bits of one block.
  for (size_t length = test::scanStart(frame); length + 10 < frame.size(); ++length) {
    Bytes cut(frame.begin(), frame.begin() + ptrdiff_t(length));
    cut.insert(cut.end(), {0xFF, 0xD9});
    ASSERT_FALSE(decode(cut)) << length;
  }
}

TEST_F(JpegFrameDecoderTest, AHoleInTheMiddleGivesNoPicture) {
  // What a lost transfer leaves of a frame.
  const TextureSize size{320, 240};
  const Bytes frame = test::encode(size, TJSAMP_422);
  const size_t start = test::scanStart(frame);
  for (const size_t hole : {200U, 512U, 1024U}) {
    for (size_t at = start; at + hole + 100 < frame.size(); at += 331) {
      Bytes damaged = frame;
      damaged.erase(damaged.begin() + ptrdiff_t(at), damaged.begin() + ptrdiff_t(at + hole));
      EXPECT_FALSE(decode(damaged, size)) << hole << " bytes from " << at;
    }
  }
}

TEST_F(JpegFrameDecoderTest, FlippedBytesNeverHarm) {
  std::mt19937 random(5);
  const Bytes frame = test::encode(kSmall, TJSAMP_420);
  const Bytes expected = reference(frame, kSmall);
  int pictures = 0;
  for (int turn = 0; turn < 6000; ++turn) {
    Bytes damaged = frame;
    const size_t range = turn % 2 == 0 ? test::scanStart(frame) : damaged.size();
    for (auto flips = 1 + random() % 3; flips > 0; --flips) {
      damaged[random() % range] = uint8_t(random());
    }
    const auto picture = decode(damaged);
    if (!picture) continue;
    ++pictures;
    ASSERT_EQ(picture->size(), kSmall);
    for (size_t i = 3; i < picture->byteCount(); i += 4) ASSERT_EQ(picture->data()[i], 255);
  }
  EXPECT_GT(pictures, 0);
  // And the decoder is none the worse for it.
  const auto picture = decode(frame);
  ASSERT_TRUE(picture);
  EXPECT_EQ(difference(*picture, expected), 0);
}

TEST_F(JpegFrameDecoderTest, RandomBytesNeverHarm) {
  std::mt19937 random(6);
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  for (int turn = 0; turn < 3000; ++turn) {
    Bytes noise(random() % 600);
    for (uint8_t& byte : noise) byte = uint8_t(random());
    // Some begin as a frame does.
    const size_t kept = turn % 3 == 0 ? 0 : turn % 3 == 1 ? 2 : random() % frame.size();
    noise.insert(noise.begin(), frame.begin(), frame.begin() + ptrdiff_t(kept));
    decode(noise);
  }
  EXPECT_FALSE(decode({}));
  EXPECT_FALSE(decode({0xFF}));
  EXPECT_FALSE(decode({0xFF, 0xD8}));
  EXPECT_FALSE(decode({0xFF, 0xD8, 0xFF, 0xD9}));
  EXPECT_FALSE(decode(Bytes(5000, 0xFF)));
  EXPECT_TRUE(decode(frame));
}

TEST_F(JpegFrameDecoderTest, ARunningStreamAllocatesNoPictures) {
  const Bytes frame = test::encode(kSmall, TJSAMP_422);
  const uint8_t* first = decode(frame)->data();
  Bytes damaged = frame;
  damaged.resize(damaged.size() / 2);
  EXPECT_FALSE(decode(damaged));  // gives its buffer back, too
  EXPECT_EQ(decode(frame)->data(), first);
}

}  // namespace
}  // namespace tessary
