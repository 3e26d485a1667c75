#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <png.h>

#include "png/PngImageEncoder.h"

namespace tessary {
namespace {

struct Decoded {
  TextureSize size;
  int bitDepth = 0;
  int colourType = -1;
  int interlaced = -1;
  std::vector<uint8_t> pixels;  // RGB
  std::string xmp;
  bool hasResolution = false;
};

struct Source {
  const std::vector<uint8_t>& bytes;
  size_t position = 0;
};

void readFrom(png_structp png, png_bytep target, size_t count) {
  auto& source = *static_cast<Source*>(png_get_io_ptr(png));
  if (count > source.bytes.size() - source.position) png_error(png, "too short");
  std::memcpy(target, source.bytes.data() + source.position, count);
  source.position += count;
}

[[noreturn]] void fail(png_structp png, png_const_charp text) {
  ADD_FAILURE() << text;
  png_longjmp(png, 1);
}

void complain(png_structp /*png*/, png_const_charp text) { ADD_FAILURE() << text; }

/// Reads the whole file the way any program would, down to its last chunk; a complaint of the
/// library is a failure.
void decode(const std::vector<uint8_t>& bytes, Decoded& decoded) {
  Source source{bytes};
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, complain);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png)) == 0) {
    png_set_read_fn(png, &source, readFrom);
    png_read_info(png, info);
    decoded.size = {int32_t(png_get_image_width(png, info)),
                    int32_t(png_get_image_height(png, info))};
    decoded.bitDepth = png_get_bit_depth(png, info);
    decoded.colourType = png_get_color_type(png, info);
    decoded.interlaced = png_get_interlace_type(png, info);
    decoded.hasResolution = png_get_valid(png, info, PNG_INFO_pHYs) != 0;
    png_textp texts = nullptr;  // those before the pixels
    const int textCount = png_get_text(png, info, &texts, nullptr);
    for (int i = 0; i < textCount; ++i) {
      EXPECT_STREQ(texts[i].key, "XML:com.adobe.xmp");
      EXPECT_EQ(texts[i].compression, PNG_ITXT_COMPRESSION_NONE);
      decoded.xmp.append(texts[i].text, texts[i].itxt_length);
    }
    const size_t row = png_get_rowbytes(png, info);
    decoded.pixels.resize(row * size_t(decoded.size.height));
    for (int32_t y = 0; y < decoded.size.height; ++y) {
      png_read_row(png, decoded.pixels.data() + size_t(y) * row, nullptr);
    }
    png_read_end(png, info);
    EXPECT_EQ(source.position, bytes.size());
  }
  png_destroy_read_struct(&png, &info, nullptr);
}

enum class Content { grain, flat, ramp };

PixelBuffer makePicture(TextureSize size, Content content, uint8_t alpha = 255) {
  PixelBuffer picture(size);
  uint32_t random = 12345;
  for (size_t i = 0; i < picture.byteCount(); ++i) {
    random = random * 1664525 + 1013904223;
    const auto noise = uint8_t(random >> 24);
    const auto step = uint8_t(i / 7);
    picture.data()[i] = content == Content::grain ? noise : content == Content::flat ? 77 : step;
    if (i % 4 == 3) picture.data()[i] = alpha;
  }
  return picture;
}

std::vector<uint8_t> rgbOf(const PixelBuffer& picture) {
  std::vector<uint8_t> rgb;
  for (size_t i = 0; i < picture.byteCount(); i += 4) {
    rgb.insert(rgb.end(), {picture.data()[i + 2], picture.data()[i + 1], picture.data()[i]});
  }
  return rgb;
}

TEST(PngImageEncoder, EveryPixelComesBack) {
  const TextureSize sizes[] = {{1, 1},   {2, 3},    {1, 200},  {3000, 1}, {64, 63},   {64, 64},
                               {64, 65}, {33, 127}, {33, 128}, {33, 129}, {640, 480}, {1921, 331}};
  for (const TextureSize size : sizes) {
    for (const Content content : {Content::grain, Content::flat, Content::ramp}) {
      SCOPED_TRACE(std::to_string(size.width) + " by " + std::to_string(size.height));
      const PixelBuffer picture = makePicture(size, content);
      PngImageEncoder encoder(3);
      Decoded decoded;
      decode(encoder.encode(picture), decoded);
      EXPECT_EQ(decoded.size, size);
      EXPECT_EQ(decoded.pixels, rgbOf(picture));
    }
  }
}

TEST(PngImageEncoder, IsPlainRgbWithoutAlpha) {
  PngImageEncoder encoder;
  Decoded decoded;
  decode(encoder.encode(makePicture({20, 10}, Content::ramp)), decoded);
  EXPECT_EQ(decoded.bitDepth, 8);
  EXPECT_EQ(decoded.colourType, PNG_COLOR_TYPE_RGB);
  EXPECT_EQ(decoded.interlaced, PNG_INTERLACE_NONE);
}

TEST(PngImageEncoder, AlphaMakesNoDifference) {
  PngImageEncoder encoder;
  EXPECT_EQ(encoder.encode(makePicture({64, 100}, Content::grain, 0)),
            encoder.encode(makePicture({64, 100}, Content::grain, 200)));
}

TEST(PngImageEncoder, TheNumberOfThreadsMakesNoDifference) {
  const PixelBuffer picture = makePicture({320, 1000}, Content::grain);
  const std::vector<uint8_t> alone = PngImageEncoder(1).encode(picture);
  ASSERT_FALSE(alone.empty());
  for (const unsigned threads : {0U, 2U, 3U, 16U, 100U}) {
    EXPECT_EQ(PngImageEncoder(threads).encode(picture), alone) << threads;
  }
}

TEST(PngImageEncoder, AnXmpPacketTravelsAlongAndLeavesThePixelsAsTheyWere) {
  const PixelBuffer picture = makePicture({64, 100}, Content::grain);
  PngImageEncoder encoder;
  Decoded plain;
  decode(encoder.encode(picture), plain);
  EXPECT_EQ(plain.xmp, "");
  for (const size_t length : {size_t(1), size_t(5000), encoder.xmpRoom()}) {
    const std::string xmp = std::string(length - 1, 'x') + "\n";
    Decoded decoded;
    decode(encoder.encode(picture, xmp), decoded);
    EXPECT_EQ(decoded.xmp, xmp);
    EXPECT_EQ(decoded.pixels, plain.pixels);
    EXPECT_FALSE(decoded.hasResolution);
  }
  EXPECT_EQ(encoder.encode(picture, std::string(encoder.xmpRoom() + 1, 'x')),
            encoder.encode(picture))
      << "one that is too long is left out";
}

TEST(PngImageEncoder, AFlatPictureBecomesSmall) {
  PngImageEncoder encoder;
  EXPECT_LT(encoder.encode(makePicture({1920, 1080}, Content::flat)).size(), 60'000U);
}

TEST(PngImageEncoder, WhatCanNotBeEncodedGivesNothing) {
  PngImageEncoder encoder;
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{0, 0})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{640, 0})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{0, 480})).empty());
  EXPECT_TRUE(encoder.encode(PixelBuffer(TextureSize{1'000'001, 1})).empty());
}

}  // namespace
}  // namespace tessary
