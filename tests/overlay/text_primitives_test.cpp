#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "OverlayFixture.h"
#include "overlay/TextPrimitives.h"

namespace tessary::test {
namespace {

using testing::ElementsAre;

constexpr Color kWhite{1.0, 1.0, 1.0, 1.0};
constexpr int32_t kW = TextPrimitives::kBitmapWidth;
constexpr int32_t kH = TextPrimitives::kBitmapHeight;

/// A letter is 10 by 20, so "abc" is 30 by 20 and covers 600 pixels.
class TextPrimitivesTest : public OverlayTest {
 protected:
  Vertices target;

  /// Places "abc" at `anchor` and answers with the pixels it covers.
  Box place(ImagePoint anchor, bool up = false) {
    target.count = 0;
    text.addTextToPointVector(target, "abc", anchor, up, kWhite);
    EXPECT_EQ(target.count, 600);
    return boxOf(target, size);
  }

  /// Three lines of 1, 3 and 2 letters; the pixels of each.
  std::vector<Box> place3(ImagePoint anchor, const std::string& third, bool up = false) {
    target.count = 0;
    text.add3TextToPointVector(target, "a", "abc", third, anchor, up, kWhite);
    std::vector<Box> boxes;
    int32_t at = 0;
    for (const int32_t pixels : {200, 600, 200 * FakeRasterizer::letters(third)}) {
      if (pixels > 0) boxes.push_back(boxOf(target.data + at, pixels, size));
      at += pixels;
    }
    EXPECT_EQ(target.count, at);
    return boxes;
  }
};

/// What the bitmap holds after a line has been drawn into a clean one, scanned pixel by pixel.
std::vector<PointVertex> plainScan(const std::vector<uint8_t>& bitmap, double width,
                                   ImagePoint point, TextureSize size) {
  std::vector<PointVertex> vertices;
  for (int32_t r = 0; r < kH; ++r) {
    for (int32_t c = 0; c <= static_cast<int32_t>(width) + 19; ++c) {
      const size_t at = size_t(r) * kW * 4 + size_t(c) * 4;
      if (at >= bitmap.size()) break;
      const uint8_t* p = bitmap.data() + at;
      if (!(p[0] > 0 || p[1] > 0 || p[2] > 0 || p[2] > 0)) continue;
      vertices.push_back(vertexAt(point.x + c - size.width / 2,
                                  -point.y - r + 256.0 + size.height / 2, size,
                                  {float(p[0]) / 256.0f, float(p[1]) / 256.0f, float(p[2]) / 256.0f,
                                   float(p[3]) / 256.0f}));
    }
  }
  return vertices;
}

TEST_F(TextPrimitivesTest, ALineIsDrawnInItsFontAtItsPlaceInTheBitmap) {
  preferences.font = {31};
  text.addTextToPointVector(target, "abc", {0, 0}, false, kWhite);
  EXPECT_EQ(rasterizer.lastFont.pixelSize, 31);
  EXPECT_EQ(rasterizer.lastX, 2.0);
  EXPECT_EQ(rasterizer.lastBaseline, 5.0);
  EXPECT_THAT(rasterizer.drawn, ElementsAre("abc"));
}

TEST_F(TextPrimitivesTest, TheBaselineIsFivePixelsAboveThePointAndTheTextTwoToTheRight) {
  const std::string letters = "abc";
  text.addTextLineToPointVector(target, {letters, preferences.font, kWhite}, {100, 200}, {30, 20});
  EXPECT_EQ(boxOf(target, size), (Box{102, 175, 131, 194}));
}

TEST_F(TextPrimitivesTest, ColoursAreBytesDividedBy256) {
  text.addTextToPointVector(target, "a", {0, 0}, false, {1.0, 0.5, 0.0, 1.0});
  ASSERT_EQ(target.count, 200);
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(target.data[i].color[0], 255.0f / 256.0f);
    EXPECT_EQ(target.data[i].color[1], 128.0f / 256.0f);
    EXPECT_EQ(target.data[i].color[2], 0.0f);
    EXPECT_EQ(target.data[i].color[3], 255.0f / 256.0f);
  }
}

TEST_F(TextPrimitivesTest, PureBlackAndTheBackgroundGiveNoVertices) {
  text.addTextToPointVector(target, "abc", {0, 0}, false, {0.0, 0.0, 0.0, 1.0});
  EXPECT_EQ(target.count, 0);
}

TEST_F(TextPrimitivesTest, TheDarkestColourOfEachChannelIsSeen) {
  constexpr double kOne = 1.0 / 255.0;
  for (const Color color : {Color{kOne, 0, 0, 1}, {0, kOne, 0, 1}, {0, 0, kOne, 1}}) {
    target.count = 0;
    text.addTextToPointVector(target, "abc", {0, 0}, false, color);
    EXPECT_EQ(target.count, 600);
  }
}

TEST_F(TextPrimitivesTest, AlphaAloneIsNotSeen) {
  rasterizer.paint = [](const TextRasterizer::Bitmap& bitmap) { bitmap.data[3] = 255; };
  text.addTextToPointVector(target, "abc", {0, 0}, false, kWhite);
  EXPECT_EQ(target.count, 0);
}

// Whatever earlier lines left behind, and however wide: each line is scanned as if on a clean
// bitmap.
TEST_F(TextPrimitivesTest, EveryLineIsScannedAsIfTheBitmapWereClean) {
  size = {1279, 719};
  std::mt19937 random(3);
  const double widths[] = {0,       30,  0.99,   200.5,  1899.9, 1900, 30,     1901, 1920, 1,
                           5000.25, 100, 491499, 491500, 1e6,    12,   3839.5, 1899, 7};
  int line = 0;
  for (const double width : widths) {
    std::vector<uint8_t> clean(size_t(kW) * kH * 4);
    std::vector<std::pair<size_t, uint32_t>> dots;
    for (int i = 0; i < 40; ++i) {
      dots.emplace_back(random() % (size_t(kW) * kH), random());
      dots.emplace_back(random() % 100 + size_t(kW) * (random() % kH), random());
      dots.emplace_back(size_t(kW) * kH - 1 - random() % 3000, random());
    }
    // The four corners too.
    for (const size_t at :
         {size_t{0}, size_t(kW) - 1, size_t(kW) * (kH - 1), size_t(kW) * kH - 1}) {
      dots.emplace_back(at, 0x01000000u * 255 + 7);
    }
    const auto paint = [&](uint8_t* data) {
      for (const auto& [at, value] : dots) std::memcpy(data + at * 4, &value, 4);
    };
    paint(clean.data());
    rasterizer.paint = [&](const TextRasterizer::Bitmap& bitmap) {
      ASSERT_EQ(bitmap.width, kW);
      ASSERT_EQ(bitmap.height, kH);
      ASSERT_EQ(bitmap.bytesPerRow, kW * 4);
      paint(bitmap.data);
    };
    const std::string another = std::to_string(++line);
    const ImagePoint point{123.456, 78.9};
    target.count = 0;
    text.addTextLineToPointVector(target, {another, {}, kWhite}, point, {width, 20});
    SCOPED_TRACE(width);
    expectVertices(target, plainScan(clean, width, point, size));
    ASSERT_FALSE(HasFatalFailure());
  }
}

TEST_F(TextPrimitivesTest, AScanPastTheRightEdgeReadsTheNextRowAndStopsAtTheEndOfTheBlock) {
  rasterizer.paint = [](const TextRasterizer::Bitmap& bitmap) {
    bitmap.data[1 * kW * 4] = 1;         // first pixel of the second row
    bitmap.data[(kH * kW - 1) * 4] = 1;  // last pixel of the last row
  };
  const std::string none;
  text.addTextLineToPointVector(target, {none, {}, kWhite}, {0, 256}, {1901, 20});
  ASSERT_EQ(target.count, 3);
  EXPECT_EQ(boxOf(target.data, 1, size), (Box{1920, 0, 1920, 0}));          // row 0, one past 1919
  EXPECT_EQ(boxOf(target.data + 1, 1, size), (Box{0, 1, 0, 1}));            // the same pixel, row 1
  EXPECT_EQ(boxOf(target.data + 2, 1, size), (Box{1919, 255, 1919, 255}));  // and no more
}

TEST_F(TextPrimitivesTest, SizesThatAreNoNumbersAreHarmless) {
  const std::string letters = "abc";
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double width : {-infinite, -1e300, -21.0, -20.0}) {
    text.addTextLineToPointVector(target, {letters, {}, kWhite}, {0, 0}, {width, 20});
    EXPECT_EQ(target.count, 0) << width;
  }
  text.addTextLineToPointVector(target, {letters, {}, kWhite}, {0, 0},
                                {std::numeric_limits<double>::quiet_NaN(), 20});
  EXPECT_EQ(target.count, 18 * 20);  // 20 columns, two of them before the text
}

TEST_F(TextPrimitivesTest, ASecondRedrawAllocatesNothing) {
  text.addTextToPointVector(target, "abc", {0, 0}, false, kWhite);
  const PointVertex* const block = target.data;
  const int32_t room = target.size;
  for (int i = 0; i < 10; ++i) {
    target.count = 0;
    text.addTextToPointVector(target, "abc", {0, 0}, false, kWhite);
  }
  EXPECT_EQ(target.data, block);
  EXPECT_EQ(target.size, room);
}

TEST_F(TextPrimitivesTest, ALabelIsRasterisedOnceForAllItsPlaces) {
  place({100, 100});
  place({100, 100});
  const Box moved = place({333.25, 7});
  EXPECT_THAT(rasterizer.drawn, ElementsAre("abc"));
  EXPECT_THAT(rasterizer.measured, ElementsAre("abc"));
  EXPECT_EQ(moved.left, 333 + 4);
}

TEST_F(TextPrimitivesTest, AnotherFontColourOrWidthIsAnotherLabel) {
  place({100, 100});
  preferences.font.pixelSize = 40;
  place({100, 100});
  EXPECT_THAT(rasterizer.drawn, ElementsAre("abc", "abc"));
  EXPECT_EQ(rasterizer.lastFont.pixelSize, 40);

  target.count = 0;
  text.addTextToPointVector(target, "abc", {100, 100}, false, {0.5, 0, 0, 1});
  EXPECT_EQ(rasterizer.drawn.size(), 3U);
  EXPECT_EQ(target.data[0].color[0], 128.0f / 256.0f);
  EXPECT_EQ(target.data[0].color[1], 0.0f);

  const std::string abc = "abc";
  target.count = 0;
  text.addTextLineToPointVector(target, {abc, preferences.font, kWhite}, {100, 100}, {0, 20});
  EXPECT_EQ(rasterizer.drawn.size(), 4U);
  EXPECT_EQ(target.count, 18 * 20) << "of another width: only 20 columns are scanned";
}

TEST_F(TextPrimitivesTest, LabelsThatWereNotUsedForLongAreForgottenAndThoseInUseAreNot) {
  const auto use = [this](const std::string& label) {
    target.count = 0;
    text.addTextToPointVector(target, label, {0, 0}, false, kWhite);
  };
  use("once");
  for (int i = 0; i < 5000; ++i) {
    use("always");
    use(std::to_string(i));
  }
  EXPECT_EQ(std::count(rasterizer.drawn.begin(), rasterizer.drawn.end(), "always"), 1);
  use("once");
  EXPECT_EQ(std::count(rasterizer.drawn.begin(), rasterizer.drawn.end(), "once"), 2);
}

// The pixels of "abc" at (x, y) lie from x + 2 to x + 31 and from y - 25 to y - 6.
TEST_F(TextPrimitivesTest, ALabelStandsToTheLowerRightOfItsAnchorWhereThereIsRoom) {
  struct Row {
    ImagePoint anchor;
    ImagePoint corner;  // where the line's lower left corner goes
  };
  const Row rows[] = {
      {{100, 100}, {102, 128}},  // right and below
      {{608, 100}, {610, 128}},  // exactly room on the right: 608 + 30 + 2 is 640
      {{609, 100}, {575, 128}},  // one pixel short: to the left
      {{639, 100}, {605, 128}},  // one pixel from the edge
      {{100, 448}, {102, 476}},  // exactly room below: 448 + 40 - 8 is 480
      {{100, 449}, {102, 451}},  // one pixel short: above
      {{639, 479}, {605, 481}},  // both
      {{100, 0}, {102, 28}},     // at the very top: below, as always
      {{-50, -50}, {-48, -22}},  // outside
  };
  for (const Row& row : rows) {
    const auto x = static_cast<int>(row.corner.x);
    const auto y = static_cast<int>(row.corner.y);
    EXPECT_EQ(place(row.anchor), (Box{x + 2, y - 25, x + 31, y - 6}))
        << row.anchor.x << "," << row.anchor.y;
  }
}

TEST_F(TextPrimitivesTest, AFlippedLabelEndsFourPixelsLeftOfItsAnchor) {
  EXPECT_EQ(place({639, 100}).right, 639 - 4 - 1 + 2);  // the text starts 2 into its bitmap
}

TEST_F(TextPrimitivesTest, ALabelThatIsToStandAboveDoesSoWhereThereIsRoom) {
  EXPECT_EQ(place({100, 100}, true), (Box{104, 77, 133, 96}));
  EXPECT_EQ(place({100, 25}, true), (Box{104, 2, 133, 21}));   // 25 - 20 - 4 is 1: room
  EXPECT_EQ(place({100, 24}, true), (Box{104, 27, 133, 46}));  // 0 is not
}

// Heights are 20 each, so three lines have a totalH of 72 and two (the third 0 high) of 50.
TEST_F(TextPrimitivesTest, ThreeLinesAreStackedDownward) {
  EXPECT_THAT(
      place3({100, 100}, "ab"),
      ElementsAre(Box{104, 103, 113, 122}, Box{104, 127, 133, 146}, Box{104, 151, 123, 170}));
}

TEST_F(TextPrimitivesTest, AFlippedBlockIsRightAligned) {
  // The widest line is 30, so the block goes from 606 to 636, and text starts 2 further right.
  EXPECT_THAT(
      place3({640, 100}, "ab"),
      ElementsAre(Box{628, 103, 637, 122}, Box{608, 127, 637, 146}, Box{618, 151, 637, 170}));
  EXPECT_EQ(place3({608, 100}, "ab")[1].left, 612);  // exactly room
  EXPECT_EQ(place3({609, 100}, "ab")[1].left, 577);  // one pixel short
}

TEST_F(TextPrimitivesTest, ABlockFlipsAboveWhereThereIsNoRoomBelow) {
  EXPECT_EQ(place3({100, 400}, "ab")[0].top, 400 + 28 - 25);         // 400 + 72 + 20 - 12 is 480
  EXPECT_EQ(place3({100, 401}, "ab")[0].top, 401 - (72 - 24) - 25);  // one pixel short
}

TEST_F(TextPrimitivesTest, WithoutAThirdTextABlockHasTwoLines) {
  EXPECT_THAT(place3({100, 100}, ""),
              ElementsAre(Box{104, 103, 113, 122}, Box{104, 127, 133, 146}));
  EXPECT_THAT(rasterizer.measured, ElementsAre("a", "abc", ""));
  EXPECT_THAT(rasterizer.drawn, ElementsAre("a", "abc"));
  EXPECT_EQ(place3({100, 422}, "")[0].top, 422 + 28 - 25);         // 422 + 50 + 20 - 12 is 480
  EXPECT_EQ(place3({100, 423}, "")[0].top, 423 - (50 - 24) - 25);  // one pixel short
}

TEST_F(TextPrimitivesTest, AnEmptyThirdTextTakesItsMeasuredHeightAndTwoMoreOff) {
  rasterizer.bounds = [](const std::string& t) {
    return Size{FakeRasterizer::letters(t) * 10.0, 20.0};
  };
  EXPECT_EQ(place3({100, 422}, "")[0].top, 422 + 28 - 25);  // 72 - 22 is 50 again
  EXPECT_EQ(place3({100, 423}, "")[0].top, 423 - 26 - 25);
}

TEST_F(TextPrimitivesTest, ABlockThatIsToStandAboveDoesSoWhereThereIsRoom) {
  EXPECT_EQ(place3({100, 77}, "ab", true)[0].top, 77 + 2 - 25);
  EXPECT_EQ(place3({100, 76}, "ab", true)[0].top, 76 + 72 + 8 - 25);
}

TEST_F(TextPrimitivesTest, BlockWidthAndHeightAreSinglePrecision) {
  const double wide = 30.1;  // not a float
  const double high = 20.3;
  rasterizer.bounds = [&](const std::string&) { return Size{wide, high}; };
  size = {1279, 719};
  target.count = 0;
  text.add3TextToPointVector(target, "a", "b", "c", {1270.3, 700.7}, false, kWhite);

  const auto maxW = static_cast<float>(wide);
  const auto totalH = static_cast<float>(high + high + high + 12.0);
  const double x = 1270.3 - (maxW + 4.0f);
  const double y = 700.7 - (totalH - high - 4);
  const double lineX = x + maxW - wide;
  ASSERT_EQ(target.count, 600);
  // The first pixel is column 2 of row 231.
  const VertexColor white{255.0f / 256, 255.0f / 256, 255.0f / 256, 255.0f / 256};
  const double tops[] = {y, y + high + 4, y + high + high + 8};
  for (int i = 0; i < 3; ++i) {
    const PointVertex wanted = vertexAt(lineX + 2 - 639, -tops[i] - 231 + 256.0 + 359, size, white);
    EXPECT_TRUE(sameBits(target.data[i * 200], wanted))
        << describe(target.data[i * 200]) << describe(wanted);
  }
}

// A totalH just below 256 loses its last bit when 8 is added to it in single precision; the line
// ends up near the middle of the picture, where a vertex tells even that.
TEST_F(TextPrimitivesTest, ABlockBelowItsAnchorIsPlacedInDoublePrecision) {
  const double high = 80.1;
  rasterizer.bounds = [&](const std::string&) { return Size{30, high}; };
  size = {1279, 719};
  target.count = 0;
  text.add3TextToPointVector(target, "a", "b", "c", {100, 123.4}, true, kWhite);

  const auto totalH = static_cast<float>(high + high + high + 12.0);
  ASSERT_NE(static_cast<double>(totalH + 8), static_cast<double>(totalH) + 8);
  const double y = 123.4 + totalH + 8;
  ASSERT_EQ(target.count, 600);
  const VertexColor white{255.0f / 256, 255.0f / 256, 255.0f / 256, 255.0f / 256};
  const PointVertex wanted = vertexAt(102 + 2 - 639, -y - 231 + 256.0 + 359, size, white);
  EXPECT_TRUE(sameBits(target.data[0], wanted)) << describe(target.data[0]) << describe(wanted);
}

TEST_F(TextPrimitivesTest, TextSizesHaveEightAddedToThem) {
  preferences.font = {48};
  EXPECT_EQ(text.getTextSize("abc"), (Size{38, 28}));
  EXPECT_EQ(rasterizer.lastFont.pixelSize, 48);
}

TEST_F(TextPrimitivesTest, AnEmptyTextHasTheSizeOfFourSampleLetters) {
  EXPECT_EQ(text.getTextSize(""), (Size{48, 28}));
  EXPECT_THAT(rasterizer.measured, ElementsAre("恭禧发财"));
  EXPECT_TRUE(rasterizer.drawn.empty());
}

TEST_F(TextPrimitivesTest, WithoutAPictureNothingCrashes) {
  size = {0, 0};
  text.addTextToPointVector(target, "abc", {0, 0}, false, kWhite);
  text.add3TextToPointVector(target, "abc", "", "d", {0, 0}, false, kWhite);
  EXPECT_EQ(target.count, 600 + 600 + 200);
}

}  // namespace
}  // namespace tessary::test
