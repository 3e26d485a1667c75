#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "Vertices.h"
#include "overlay/LinePrimitives.h"

namespace tessary::test {
namespace {

constexpr VertexColor kColor{0.1f, 0.2f, 0.3f, 1.0f};
constexpr double kHuge = 1e300;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class LinePrimitivesTest : public testing::Test {
 protected:
  TextureSize size{640, 480};
  LinePrimitives lines{size};
  Vertices target;
};

TEST_F(LinePrimitivesTest, ColoursAreAlwaysOpaque) {
  EXPECT_EQ(LinePrimitives::mtlColorFromColor({0.1, 0.9, 0.5, 0.5}),
            (VertexColor{0.1f, 0.9f, 0.5f, 1.0f}));
  EXPECT_EQ(LinePrimitives::mtlColorFromColor({-1.0, 2.0, 0.0, 0.0}),
            (VertexColor{-1.0f, 2.0f, 0.0f, 1.0f}));
}

TEST_F(LinePrimitivesTest, ALineAcrossTheImageGoesFromCornerToCorner) {
  for (const TextureSize each : {TextureSize{640, 480}, {1280, 720}, {2, 2}, {1920, 1080}}) {
    size = each;
    target.count = 0;
    const ImagePoint corner{static_cast<double>(each.width), static_cast<double>(each.height)};
    lines.addLineToLineVector(target, {0, 0}, corner, kColor);
    expectVertices(
        target, {{{-1, 1, 0, 1}, {0.1f, 0.2f, 0.3f, 1}}, {{1, -1, 0, 1}, {0.1f, 0.2f, 0.3f, 1}}});
  }
}

TEST_F(LinePrimitivesTest, AnOddSizeHasItsMiddleBesideTheOrigin) {
  size = {641, 481};
  lines.addLineToLineVector(target, {320, 240}, {0, 0}, kColor);
  EXPECT_EQ(target.data[0].position[0], 0.0f);
  EXPECT_EQ(target.data[0].position[1], 0.0f);
  EXPECT_EQ(target.data[1].position[0], static_cast<float>(-320.0 / 320.5));
  EXPECT_EQ(target.data[1].position[1], static_cast<float>(240.0 / 240.5));
}

// A compiler that keeps the numerator in double, as g++ 12 does where it packs x and y, gives other
// bits for a good part of these points.
TEST_F(LinePrimitivesTest, DistancesAreNarrowedBeforeTheyAreDivided) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> coordinate(-3000.0, 3000.0);
  int told = 0;
  for (const TextureSize each : {TextureSize{640, 480}, {1279, 719}, {1920, 1080}, {333, 77}}) {
    size = each;
    target.count = 0;
    std::vector<PointVertex> expected;
    for (int i = 0; i < 2000; ++i) {
      const ImagePoint from{coordinate(random), coordinate(random)};
      const ImagePoint to{coordinate(random), coordinate(random)};
      lines.addLineToLineVector(target, from, to, kColor);
      expected.push_back(vertexAt(from, size, kColor));
      expected.push_back(vertexAt(to, size, kColor));
      const double unnarrowed = (from.x - each.width / 2) / (each.width / 2.0);
      told += static_cast<float>(unnarrowed) != expected[expected.size() - 2].position[0];
    }
    expectVertices(target, expected);
  }
  EXPECT_GT(told, 100) << "these points can't tell whether the narrowing is there";
}

TEST_F(LinePrimitivesTest, CirclePixelsAreNarrowedBeforeTheyAreDivided) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> coordinate(-3000.0, 3000.0);
  std::uniform_int_distribution<int32_t> offset(-500, 500);
  size = {1279, 719};
  std::vector<PointVertex> expected;
  int told = 0;
  for (int i = 0; i < 4000; ++i) {
    const ImagePoint center{coordinate(random), coordinate(random)};
    const int32_t xx = offset(random);
    const int32_t yy = offset(random);
    lines.addCirclePlotPoint(target, center, xx, yy, kColor);
    expected.push_back(vertexAt(center.x + xx - 639, -center.y - yy + 359, size, kColor));
    told += static_cast<float>((-center.y - yy + 359) / 359.5) != expected.back().position[1];
  }
  expectVertices(target, expected);
  EXPECT_GT(told, 100) << "these points can't tell whether the narrowing is there";
}

TEST_F(LinePrimitivesTest, WithoutAPictureNothingCrashes) {
  size = {0, 0};
  lines.addLineToLineVector(target, {1, 1}, {0, 0}, kColor);
  ASSERT_EQ(target.count, 2);
  EXPECT_EQ(target.data[0].position[0], std::numeric_limits<float>::infinity());
  EXPECT_EQ(target.data[0].position[1], -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(target.data[1].position[0]));
  lines._drawShapeCircle(target, {0, 0}, {3, 0}, kColor);
  lines.drawSmallFrame(target, {0, 0}, true, kColor);
  lines.drawLineAuxLine(target, {0, 0}, {3, 4}, 18, kColor);
}

TEST_F(LinePrimitivesTest, ACircleIsPlottedOnePixelInsideItsRadius) {
  struct Row {
    ImagePoint from, to;
    int radius;
  };
  const Row rows[] = {
      {{100, 100}, {110, 100}, 10},       // to the right
      {{100, 100}, {90, 100}, 10},        // to the left
      {{100, 100}, {100, 133}, 33},       // down
      {{100, 100}, {103, 104}, 5},        // slanted
      {{100, 100}, {102, 102}, 3},        // slanted: 2.83 is rounded to nearest
      {{100, 100}, {101, 102}, 2},        // slanted: 2.24
      {{100.5, 100}, {110.4, 100}, 9},    // straight: 9.9 loses its fraction
      {{100, 100.25}, {100, 98.5}, 1},    // 1.75
      {{100, 100}, {103.9, 104.9}, 5},    // slanted: the fractions go first, 3 and 4
      {{100, 100}, {100.5, 100.75}, 0},   // all fraction
      {{100, 100}, {100, 100}, 0},        // both points equal
      {{320.3, 240.7}, {500, 100}, 227},  // fractional centre: dx 179, dy 140
  };
  for (const Row& row : rows) {
    target.count = 0;
    lines._drawShapeCircle(target, row.from, row.to, kColor);
    SCOPED_TRACE(row.radius);
    expectVertices(target, circleVertices(row.from, row.radius, size, kColor));
  }
}

TEST_F(LinePrimitivesTest, ARadiusOfOneIsEightTimesTheCentreAndOfNoneNothing) {
  lines._drawShapeCircle(target, {320, 240}, {321, 240}, kColor);
  ASSERT_EQ(target.count, 8);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(target.data[i].position[0], 0.0f);
    EXPECT_EQ(target.data[i].position[1], 0.0f);
  }
  lines._drawShapeCircle(target, {320, 240}, {320, 240}, kColor);
  EXPECT_EQ(target.count, 8);
}

TEST_F(LinePrimitivesTest, ARadiusOfTenStartsAtNine) {
  lines._drawShapeCircle(target, {320, 240}, {330, 240}, kColor);
  EXPECT_EQ(boxOf(target.data, 1, size), (Box{329, 240, 329, 240}));
  EXPECT_EQ(boxOf(target, size), (Box{311, 231, 329, 249}));
  EXPECT_EQ(target.count % 8, 0);
}

TEST_F(LinePrimitivesTest, RadiiThatNoFrameCanShowPlotNothingAndEnd) {
  const ImagePoint far[] = {{kHuge, 0}, {0, kHuge},   {-kHuge, 0}, {2e9, 0},      {0, 46341},
                            {kNaN, 0},  {kNaN, kNaN}, {0, kNaN},   {40000, 40000}};
  for (const ImagePoint to : far) {  // the last one's sum wraps to below 0
    lines._drawShapeCircle(target, {0, 0}, to, kColor);
    EXPECT_EQ(target.count, 0) << to.x << "," << to.y;
  }
  lines._drawShapeCircle(target, {0, 0}, {46340, 0}, kColor);
  EXPECT_GT(target.count, 0);
}

TEST_F(LinePrimitivesTest, SlantedRadiiBeyond32BitsEnd) {
  for (const ImagePoint to :
       {ImagePoint{kHuge, kHuge}, {kHuge, 1}, {1, -kHuge}, {2e9, 2e9}, {3e5, 7e5}}) {
    lines._drawShapeCircle(target, {0, 0}, to, kColor);
    EXPECT_LE(target.count, 8 * 46340);
    target.count = 0;
  }
}

TEST_F(LinePrimitivesTest, ASumThatWrapsToAPositiveNumberGivesThatRadius) {
  // 65536 squared is 0 in 32 bits, so 3 squared is left.
  lines._drawShapeCircle(target, {0, 0}, {65536, 3}, kColor);
  expectVertices(target, circleVertices({0, 0}, 3, size, kColor));
}

TEST_F(LinePrimitivesTest, AHandleIsAThinFrameOrAThickOne) {
  const std::vector<Segment> thin = {
      {95, 45, 95, 55}, {95, 55, 105, 55}, {105, 55, 105, 45}, {105, 45, 95, 45}};
  lines.drawSmallFrame(target, {100, 50}, false, kColor);
  expectLines(target, thin, size, kColor);

  std::vector<Segment> thick = thin;
  for (const Segment s : {Segment{96, 46, 96, 54},
                          {96, 54, 104, 54},
                          {104, 54, 104, 46},
                          {104, 46, 96, 46},
                          {97, 47, 97, 53},
                          {97, 53, 103, 53},
                          {103, 53, 103, 47},
                          {103, 47, 97, 47}}) {
    thick.push_back(s);
  }
  target.count = 0;
  lines.drawSmallFrame(target, {100, 50}, true, kColor);
  EXPECT_EQ(target.count, 24);
  expectLines(target, thick, size, kColor);
}

TEST_F(LinePrimitivesTest, TicksStandSquareToTheirSegment) {
  struct Row {
    ImagePoint from, to;
    int32_t length;
    std::vector<Segment> ticks;
  };
  const Row rows[] = {
      {{100, 50}, {100, 90}, 18, {{82, 50, 118, 50}, {82, 90, 118, 90}}},    // vertical
      {{100, 50}, {100, 50}, 18, {{82, 50, 118, 50}, {82, 50, 118, 50}}},    // no length
      {{100, 50}, {160, 50}, 38, {{100, 12, 100, 88}, {160, 12, 160, 88}}},  // horizontal
      {{160, 50}, {100, 50}, 38, {{160, 12, 160, 88}, {100, 12, 100, 88}}},  // and back
      {{100, 50}, {130, 90}, 18, {{86, 60, 114, 40}, {116, 100, 144, 80}}},  // 3 by 4
      {{130, 90}, {100, 50}, 18, {{144, 80, 116, 100}, {114, 40, 86, 60}}},  // and back
      {{100, 50}, {130, 20}, 38, {{126, 76, 74, 24}, {156, 46, 104, -6}}},   // 45 degrees
      {{0.5, 0.25}, {0.5, 9.75}, 4, {{-3.5, 0.25, 4.5, 0.25}, {-3.5, 9.75, 4.5, 9.75}}},
  };
  for (const Row& row : rows) {
    target.count = 0;
    lines.drawLineAuxLine(target, row.from, row.to, row.length, kColor);
    SCOPED_TRACE(testing::Message()
                 << row.from.x << "," << row.from.y << " to " << row.to.x << "," << row.to.y);
    expectLines(target, row.ticks, size, kColor);
  }
}

TEST_F(LinePrimitivesTest, TicksOfAnEndlessSegmentDoNotCrash) {
  lines.drawLineAuxLine(target, {kNaN, 0}, {1, kHuge}, 18, kColor);
  EXPECT_EQ(target.count, 4);
}

TEST_F(LinePrimitivesTest, ATrianglePointsAtItsTip) {
  lines.drawSmallTriangle(target, {100, 50}, true, 4, kColor);
  expectLines(target, {{100, 50, 96, 46}, {96, 46, 96, 54}, {96, 54, 100, 50}}, size, kColor);
  target.count = 0;
  lines.drawSmallTriangle(target, {100, 50}, false, 6, kColor);
  expectLines(target, {{100, 50, 106, 44}, {106, 44, 106, 56}, {106, 56, 100, 50}}, size, kColor);
}

}  // namespace
}  // namespace tessary::test
