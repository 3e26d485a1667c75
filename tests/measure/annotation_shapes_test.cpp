#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

SHAPE& addStroke(Desk& desk, const std::vector<ImagePoint>& points) {
  SHAPE& s = desk.shapes.newShape({1, 1});
  s.type = kOprPencil;
  desk.tool._iDrawingShape = -1;
  s.pencilPoints.push_back(points.data(), static_cast<int32_t>(points.size()));
  desk.shapes.redrawSelectedShape(desk.shapes.shapeCount() - 1);
  return s;
}

TEST(PencilShape, IsAChainOfLinesThatIsHeldByItsEnds) {
  const ImagePoint a{10, 20}, b{30, 25.5}, c{35, 60};
  const std::vector<Segment> chain = {{10, 20, 30, 25.5}, {30, 25.5, 35, 60}};
  const struct {
    const char* state;
    int32_t selected, hovered;
    std::vector<Segment> frames;
  } table[] = {
      {"idle", -1, -1, {}},
      {"hovered", -1, 0, thinFrame(a) + thinFrame(c)},
      {"selected", 0, -1, thickFrame(a) + thickFrame(c)},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    desk.overlay.setCalibration(1.0f, kUnitMillimetre);
    const SHAPE& s = addStroke(desk, {a, b, c});
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    expectLines(desk, s.lineVertices, chain + row.frames);
    EXPECT_THAT(s.hitRects, ElementsAre(handle(a), handle(c), kNoRect, kNoRect));
    EXPECT_EQ(s.pointVertices.count, 0);
  }
}

TEST(PencilShape, OfTwoPointsIsOneLineOfOneOrNoneNothing) {
  Desk desk;
  const SHAPE& stroke = addStroke(desk, {{1, 2}, {3, 4}});
  expectLines(desk, stroke.lineVertices, {{1, 2, 3, 4}});
  EXPECT_THAT(stroke.hitRects, ElementsAre(handle({1, 2}), handle({3, 4}), kNoRect, kNoRect));
  SHAPE& dot = addStroke(desk, {{5, 6}});
  EXPECT_EQ(dot.lineVertices.count, 0);
  EXPECT_THAT(dot.hitRects, Each(kNoRect));
  // A stroke that has shrunk to one point loses its handles; one without points keeps them.
  for (const int32_t count : {1, 0}) {
    SHAPE& s = addStroke(desk, {{1, 2}, {3, 4}});
    s.hitRects[2] = s.hitRects[3] = handle({9, 9});
    const auto before = s.hitRects;
    s.pencilPoints.count = count;
    desk.shapes.redrawSelectedShape(desk.shapes.shapeCount() - 1);
    if (count == 1) {
      EXPECT_THAT(s.hitRects, Each(kNoRect));
    } else {
      EXPECT_EQ(s.hitRects, before);
    }
    EXPECT_EQ(s.lineVertices.count, 0);
  }
}

TEST(PencilShape, TakesAnyNumberOfPoints) {
  Desk desk;
  std::vector<ImagePoint> points;
  for (int i = 0; i < 5000; ++i) points.push_back({i % 640 + 0.5, i % 480 + 0.25});
  EXPECT_EQ(addStroke(desk, points).lineVertices.count, 4999 * 2);
  expectRuns(desk);
}

TEST(TextShape, HasABoxOfItsSizeAndIsTakenAnywhereInIt) {
  const struct {
    const char* text;
    double width;
  } table[] = {
      // 10 pixels a letter, 8 around; at least 100
      {"a", 100},
      {"nine char", 100},
      {"ten chars.", 108},
      {"twenty characters ..", 208},
      {"\u6E2C\u91CF\u6E2C\u91CF\u6E2C\u91CF\u6E2C\u91CF\u6E2C\u91CF", 108},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    Desk desk;
    desk.shapes.setInputText(row.text);
    const SHAPE& s = desk.shapes.shape(0);
    EXPECT_EQ(s.pt1, (ImagePoint{330, 202}));
    EXPECT_EQ(s.pt2, (ImagePoint{330 + row.width + 4, 202 + 28 + 4}));
    EXPECT_THAT(s.hitRects,
                ElementsAre(ImageRect{s.pt1, {row.width + 4, 32}}, kNoRect, kNoRect, kNoRect));
    EXPECT_EQ(s.lineVertices.count, 0);  // no box while idle
    EXPECT_EQ(s.pointVertices.count, DottedRasterizer::letters(row.text));
    EXPECT_THAT(desk.rasterizer.take(), ElementsAre(row.text));
    const PointVertex first =
        vertexAt({334, 224}, desk.texture, {0.0f, 255 / 256.0f, 128 / 256.0f, 255 / 256.0f});
    EXPECT_TRUE(sameBits(s.pointVertices.data, &first, 1));
  }
}

TEST(TextShape, ShowsItsBoxAndFourHandlesWhenMarked) {
  Desk desk;
  desk.shapes.setInputText("text");
  const ImagePoint a{330, 202}, b{434, 234};
  const struct {
    int32_t selected, hovered;
    std::vector<Segment> (*frame)(ImagePoint);
  } table[] = {{-1, 0, thinFrame}, {0, -1, thickFrame}, {0, 0, thickFrame}};
  for (const auto& row : table) {
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    expectLines(
        desk, desk.shapes.shape(0).lineVertices,
        box(a, b) + row.frame(a) + row.frame(b) + row.frame({a.x, b.y}) + row.frame({b.x, a.y}));
  }
}

TEST(TextShape, FollowsTheFontAtItsNextRedrawFromTheSameCorner) {
  Desk desk;
  desk.shapes.setInputText("twenty characters ..");
  desk.preferences.font.pixelSize = 13;
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).pt1, (ImagePoint{330, 202}));
  EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{330 + 108 + 4, 234}));
}

TEST(TextShape, MovedHasItsLowerCornerPutRightByTheDraw) {
  Desk desk;
  desk.shapes.setInputText("text");
  desk.shapes.shape(0).pt2 = {0, 0};
  desk.shapes.moveShape(0, -100, 50);
  EXPECT_EQ(desk.shapes.shape(0).pt1, (ImagePoint{230, 252}));
  EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{334, 284}));
}

TEST(TextShape, AtTheRightEdgeStandsLeftOfItsBox) {
  Desk desk;
  desk.shapes.setInputText("text");
  desk.shapes.moveShape(0, 610 - 330, 0);
  const SHAPE& s = desk.shapes.shape(0);
  EXPECT_EQ(s.hitRects[0], (ImageRect{{610, 202}, {104, 32}}));
  const PointVertex first =
      vertexAt({610 - 44 + 2, 224}, desk.texture, {0.0f, 255 / 256.0f, 128 / 256.0f, 255 / 256.0f});
  EXPECT_TRUE(sameBits(s.pointVertices.data, &first, 1));
}

TEST(TextShape, InPureBlackIsOnlyItsBoxAndCanStillBeTaken) {
  Desk desk;
  desk.preferences.textColor = {0, 0, 0, 1};
  desk.shapes.setInputText("text");
  EXPECT_EQ(desk.shapes.shape(0).pointVertices.count, 0);
  desk.move({350, 210});
  EXPECT_EQ(desk.tool._iHoverShape, 0);
  EXPECT_GT(desk.shapes.shape(0).lineVertices.count, 0);
}

TEST(Annotations, IgnoreTheCalibration) {
  Desk desk;
  addStroke(desk, {{1, 2}, {3, 4}});
  desk.shapes.setInputText("text");
  const int32_t points = desk.totalPoints.count;
  desk.overlay.setCalibration(10.0f, kUnitMillimetre);
  EXPECT_EQ(desk.totalPoints.count, points);
}

TEST(UnknownShape, DrawsNothingAndForgetsItsVertices) {
  Desk desk;
  desk.labelsOf(kOprLine, {1, 1}, {90, 90});
  for (const int32_t type : {0, 8, -1, 51, 52}) {
    desk.shapes.shape(0).type = kOprLine;
    desk.shapes.redrawSelectedShape(0);
    EXPECT_GT(desk.totalLines.count, 0);
    desk.shapes.shape(0).type = type;
    desk.shapes.redrawSelectedShape(0);
    EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 0) << type;
    EXPECT_EQ(desk.totalLines.count, 0);
  }
}

}  // namespace
}  // namespace tessary::test
