#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "jpeg/JpegImageEncoder.h"

namespace tessary {
namespace {

struct Decoded {
  TextureSize size;
  int subsampling = -1;
  std::vector<uint8_t> pixels;  // BGRX
};

Decoded decode(const std::vector<uint8_t>& bytes) {
  const std::unique_ptr<void, int (*)(void*)> handle(tjInitDecompress(), tjDestroy);
  Decoded decoded;
  int colourSpace = -1;
  EXPECT_EQ(tjDecompressHeader3(handle.get(), bytes.data(), bytes.size(), &decoded.size.width,
                                &decoded.size.height, &decoded.subsampling, &colourSpace),
            0);
  EXPECT_EQ(colourSpace, TJCS_YCbCr);
  decoded.pixels.resize(size_t(decoded.size.width) * size_t(decoded.size.height) * 4);
  EXPECT_EQ(tjDecompress2(handle.get(), bytes.data(), bytes.size(), decoded.pixels.data(),
                          decoded.size.width, 0, decoded.size.height, TJPF_BGRX, 0),
            0);
  return decoded;
}

/// A grey ramp with a cyan line one pixel wide down its middle.
PixelBuffer makePicture(TextureSize size, uint8_t alpha) {
  PixelBuffer picture(size);
  for (int32_t y = 0; y < size.height; ++y) {
    for (int32_t x = 0; x < size.width; ++x) {
      uint8_t* pixel = picture.data() + size_t(y) * picture.bytesPerRow() + size_t(x) * 4;
      const auto grey = uint8_t(64 + x * 128 / size.width);
      const bool line = x == size.width / 2;
      pixel[0] = line ? 255 : grey;
      pixel[1] = line ? 255 : grey;
      pixel[2] = line ? 0 : grey;
      pixel[3] = alpha;
    }
  }
  return picture;
}

/// The values that the standard's luminance table has at quality 80.
constexpr uint8_t kFirstQuantisersAt80[] = {6, 4, 5, 6, 5, 4, 6, 6};

TEST(JpegImageEncoder, KeepsSizeAndColours) {
  JpegImageEncoder encoder;
  for (const TextureSize size : {TextureSize{160, 120}, TextureSize{37, 21}, TextureSize{1, 1}}) {
    const PixelBuffer picture = makePicture(size, 255);
    const Decoded decoded = decode(encoder.encode(picture));
    ASSERT_EQ(decoded.size, size);
    int worst = 0;
    for (size_t i = 0; i < decoded.pixels.size(); ++i) {
      if (i % 4 != 3) worst = std::max(worst, std::abs(decoded.pixels[i] - picture.data()[i]));
    }
    EXPECT_LE(worst, 48) << size.width;
  }
}

TEST(JpegImageEncoder, ALineOnePixelWideKeepsItsColour) {
  JpegImageEncoder encoder;
  const TextureSize size{160, 120};
  const Decoded decoded = decode(encoder.encode(makePicture(size, 255)));
  EXPECT_EQ(decoded.subsampling, TJSAMP_444);
  for (int32_t y = 0; y < size.height; ++y) {
    const uint8_t* pixel = &decoded.pixels[(size_t(y) * 160 + 80) * 4];
    EXPECT_GT(pixel[0], 220) << y;
    EXPECT_GT(pixel[1], 220) << y;
    EXPECT_LT(pixel[2], 48) << y;
  }
}

TEST(JpegImageEncoder, HasQuality80) {
  JpegImageEncoder encoder;
  const std::vector<uint8_t> bytes = encoder.encode(makePicture({64, 64}, 255));
  const uint8_t marker[] = {0xff, 0xdb, 0x00, 0x43, 0x00};  // first quantisation table, 8 bit
  const auto table = std::ranges::search(bytes, marker);
  ASSERT_FALSE(table.empty());
  EXPECT_TRUE(
      std::equal(std::begin(kFirstQuantisersAt80), std::end(kFirstQuantisersAt80), table.end()));
}

TEST(JpegImageEncoder, ACamerasFrameHalvesTheColour) {
  JpegImageEncoder encoder(JpegImageEncoder::kCameraFrame);
  EXPECT_EQ(decode(encoder.encode(makePicture({160, 120}, 255))).subsampling, TJSAMP_422);
}

TEST(JpegImageEncoder, AlphaMakesNoDifference) {
  JpegImageEncoder encoder;
  EXPECT_EQ(encoder.encode(makePicture({64, 48}, 0)), encoder.encode(makePicture({64, 48}, 255)));
}

TEST(JpegImageEncoder, TheSamePictureMakesTheSameFile) {
  JpegImageEncoder encoder;
  const PixelBuffer picture = makePicture({320, 240}, 255);
  const std::vector<uint8_t> first = encoder.encode(picture);
  encoder.encode(makePicture({16, 16}, 255));
  EXPECT_EQ(encoder.encode(picture), first);
}

TEST(JpegImageEncoder, AnXmpPacketStandsBehindTheHeaderAndNothingElseChanges) {
  JpegImageEncoder encoder;
  const PixelBuffer picture = makePicture({160, 120}, 255);
  const std::vector<uint8_t> plain = encoder.encode(picture);
  constexpr std::ptrdiff_t kHeader = 20;  // the start, and the JFIF segment
  ASSERT_EQ(std::string(plain.begin() + 6, plain.begin() + 10), "JFIF");
  EXPECT_EQ(plain[13], 0) << "no unit: no resolution is claimed";
  for (const size_t length : {size_t(1), size_t(227), encoder.xmpRoom()}) {
    const std::string xmp(length, 'x');
    const std::vector<uint8_t> bytes = encoder.encode(picture, xmp);
    const std::string name("http://ns.adobe.com/xap/1.0/\0", 29);
    const size_t inside = 2 + name.size() + length;
    std::string segment{'\xFF', '\xE1', char(uint8_t(inside >> 8)), char(uint8_t(inside))};
    segment += name + xmp;
    ASSERT_EQ(bytes.size(), plain.size() + segment.size());
    EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + kHeader, bytes.begin()));
    EXPECT_EQ(std::string(bytes.begin() + kHeader,
                          bytes.begin() + kHeader + std::ptrdiff_t(segment.size())),
              segment);
    EXPECT_TRUE(std::equal(plain.begin() + kHeader, plain.end(),
                           bytes.begin() + kHeader + std::ptrdiff_t(segment.size())));
    EXPECT_EQ(decode(bytes).pixels, decode(plain).pixels);
  }
  EXPECT_EQ(encoder.encode(picture, std::string(encoder.xmpRoom() + 1, 'x')), plain)
      << "one that is too long is left out";
}

TEST(JpegImageEncoder, WhatCanNotBeEncodedGivesNothing) {
  JpegImageEncoder encoder;
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{0, 0})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{640, 0})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{0, 480})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{65501, 1})).empty());
}

}  // namespace
}  // namespace tessary
