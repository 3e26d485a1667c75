#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "GuardedBytes.h"
#include "base/FourCharCode.h"
#include "yuv/YuvFrameDecoder.h"

namespace tessary {
namespace {

using Bytes = std::vector<uint8_t>;

struct Bgra {
  int blue;
  int green;
  int red;
  int alpha;
};

Bgra pixelAt(const PixelBuffer& picture, int x, int y) {
  const uint8_t* pixel = picture.data() + size_t(y) * picture.bytesPerRow() + size_t(x) * 4;
  return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

void expectNear(const Bgra& actual, const Bgra& expected, const std::string& where) {
  EXPECT_NEAR(actual.blue, expected.blue, 2) << where;
  EXPECT_NEAR(actual.green, expected.green, 2) << where;
  EXPECT_NEAR(actual.red, expected.red, 2) << where;
  EXPECT_EQ(actual.alpha, expected.alpha) << where;
}

/// A picture of one colour; what lies between the rows is 0xEE.
Bytes flat(uint32_t type, TextureSize size, size_t bytesPerRow, uint8_t y, uint8_t cb, uint8_t cr) {
  const auto pairs = size_t(size.width + 1) / 2;
  const auto rows = size_t(size.height);
  const bool planar = type == kMediaSubTypeNV12;
  Bytes bytes(bytesPerRow * (planar ? rows + (rows + 1) / 2 : rows), 0xEE);
  for (size_t row = 0; row < bytes.size() / bytesPerRow; ++row) {
    uint8_t* at = bytes.data() + row * bytesPerRow;
    for (size_t pair = 0; pair < pairs; ++pair) {
      if (planar) {
        const std::array<uint8_t, 2> two =
            row < rows ? std::array<uint8_t, 2>{y, y} : std::array<uint8_t, 2>{cb, cr};
        std::copy(two.begin(), two.end(), at + 2 * pair);
      } else {
        const std::array<uint8_t, 4> four = type == kMediaSubTypeYUYV
                                                ? std::array<uint8_t, 4>{y, cb, y, cr}
                                                : std::array<uint8_t, 4>{cb, y, cr, y};
        std::copy(four.begin(), four.end(), at + 4 * pair);
      }
    }
  }
  return bytes;
}

constexpr std::array kTypes{kMediaSubTypeYUYV, kMediaSubTypeUYVY, kMediaSubTypeNV12};

std::shared_ptr<PixelBuffer> decode(uint32_t type, const Bytes& bytes, TextureSize size,
                                    size_t bytesPerRow) {
  const test::GuardedBytes guarded(bytes);
  PixelBufferPool pool;
  return YuvFrameDecoder::make(type)->decode(guarded.bytes(), size, bytesPerRow, pool);
}

TEST(YuvFrameDecoder, ColoursAreVideoRangeByBT601) {
  struct Row {
    uint8_t y, cb, cr;
    Bgra expected;
  };
  const std::vector<Row> rows{
      {16, 128, 128, {0, 0, 0, 255}},        {235, 128, 128, {255, 255, 255, 255}},
      {126, 128, 128, {128, 128, 128, 255}}, {81, 90, 240, {0, 0, 255, 255}},
      {145, 54, 34, {0, 255, 0, 255}},       {41, 240, 110, {255, 0, 0, 255}},
  };
  for (const uint32_t type : kTypes) {
    for (const Row& row : rows) {
      const auto picture =
          decode(type, flat(type, {16, 4}, 64, row.y, row.cb, row.cr), {16, 4}, 64);
      ASSERT_TRUE(picture);
      expectNear(pixelAt(*picture, 7, 2), row.expected,
                 std::to_string(type) + " Y " + std::to_string(row.y));
    }
  }
}

TEST(YuvFrameDecoder, PixelsOfAPairKeepTheirOrder) {
  //                 left  right
  const Bytes yuyv{16, 128, 235, 128};
  const Bytes uyvy{128, 16, 128, 235};
  const Bytes nv12{16, 235, 128, 128};
  for (const auto& [type, bytes, stride] :
       {std::tuple(kMediaSubTypeYUYV, yuyv, 4), std::tuple(kMediaSubTypeUYVY, uyvy, 4),
        std::tuple(kMediaSubTypeNV12, nv12, 2)}) {
    const auto picture = decode(type, bytes, {2, 1}, size_t(stride));
    ASSERT_TRUE(picture);
    EXPECT_EQ(pixelAt(*picture, 0, 0).green, 0) << type;
    EXPECT_EQ(pixelAt(*picture, 1, 0).green, 255) << type;
  }
}

TEST(YuvFrameDecoder, RowsMayHaveAGap) {
  for (const uint32_t type : kTypes) {
    const auto picture = decode(type, flat(type, {6, 5}, 40, 126, 128, 128), {6, 5}, 40);
    ASSERT_TRUE(picture);
    for (int y = 0; y < 5; ++y) {
      for (int x = 0; x < 6; ++x) {
        expectNear(pixelAt(*picture, x, y), {128, 128, 128, 255}, std::to_string(y));
      }
    }
  }
}

TEST(YuvFrameDecoder, AnySizeReadsNoByteTooMany) {
  for (const uint32_t type : kTypes) {
    for (int width = 1; width <= 70; ++width) {
      for (const int height : {1, 2, 3, 5}) {
        const TextureSize size{width, height};
        const size_t pairs = size_t(width + 1) / 2;
        const size_t row = type == kMediaSubTypeNV12 ? pairs * 2 : pairs * 4;
        for (const size_t bytesPerRow : {row, row + 6}) {
          Bytes bytes = flat(type, size, bytesPerRow, 126, 128, 128);
          bytes.resize(bytes.size() -
                       (bytesPerRow - row));  // the last row ends with its last pixel
          const auto picture = decode(type, bytes, size, bytesPerRow);
          ASSERT_TRUE(picture) << width << " by " << height;
          expectNear(pixelAt(*picture, width - 1, height - 1), {128, 128, 128, 255},
                     std::to_string(width));
          bytes.pop_back();
          EXPECT_FALSE(decode(type, bytes, size, bytesPerRow)) << width << " by " << height;
        }
      }
    }
  }
}

TEST(YuvFrameDecoder, NoBytesPerRowMeansNoGap) {
  for (const uint32_t type : kTypes) {
    const size_t row = type == kMediaSubTypeNV12 ? 6 : 12;
    EXPECT_TRUE(decode(type, flat(type, {5, 4}, row, 126, 128, 128), {5, 4}, 0));
  }
}

TEST(YuvFrameDecoder, BytesBehindThePictureAreIgnored) {
  for (const uint32_t type : kTypes) {
    Bytes bytes = flat(type, {8, 2}, 16, 126, 128, 128);
    bytes.resize(bytes.size() + 4096, 0xFF);
    EXPECT_TRUE(decode(type, bytes, {8, 2}, 16));
  }
}

TEST(YuvFrameDecoder, ImpossibleFramesGiveNoPicture) {
  struct Row {
    TextureSize size;
    size_t byteCount;
    size_t bytesPerRow;
  };
  const std::vector<Row> rows{
      {{8, 2}, 0, 16},
      {{8, 2}, 1, 16},
      {{8, 2}, 4096, 7},  // a row does not hold its pixels
      {{0, 2}, 4096, 16},
      {{8, 0}, 4096, 16},
      {{-8, 2}, 4096, 16},
      {{8, -2}, 4096, 16},
      {{40000, 2}, 4096, 0},
      {{2147483647, 2147483647}, 4096, 0},
      {{8, 2}, 4096, SIZE_MAX},
      {{8, 2}, 4096, SIZE_MAX / 2 + 9},
      {{1920, 1080}, 1920 * 1080, 3840},  // the first quarter or half of a picture
  };
  for (const uint32_t type : kTypes) {
    for (const Row& row : rows) {
      EXPECT_FALSE(decode(type, Bytes(row.byteCount, 128), row.size, row.bytesPerRow))
          << row.size.width << " by " << row.size.height << ", " << row.byteCount << " bytes, "
          << row.bytesPerRow << " a row";
    }
  }
}

TEST(YuvFrameDecoder, OtherSubtypesHaveNoDecoder) {
  EXPECT_FALSE(YuvFrameDecoder::make(kMediaSubTypeMJPEG));
  EXPECT_FALSE(YuvFrameDecoder::make(0));
}

}  // namespace
}  // namespace tessary
