#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<Segment> ticks(ImagePoint a, ImagePoint b, double dx, double dy) {
  return {{a.x - dx, a.y - dy, a.x + dx, a.y + dy}, {b.x - dx, b.y - dy, b.x + dx, b.y + dy}};
}

TEST(LineShape, ShowsTicksOrHandlesByItsState) {
  const ImagePoint a{100, 200};
  const ImagePoint b{300, 200};
  const std::vector<Segment> line = {{100, 200, 300, 200}};
  const struct {
    const char* state;
    int32_t drawing, selected, hovered;
    std::vector<Segment> decoration;
  } table[] = {
      // state                    drawing selected hovered
      {"idle", -1, -1, -1, ticks(a, b, 0, 18)},
      {"under construction", 0, -1, -1, ticks(a, b, 0, 38)},
      {"hovered", -1, -1, 0, thinFrame(a) + thinFrame(b)},
      {"selected", -1, 0, -1, thickFrame(a) + thickFrame(b)},
      {"selected and hovered", -1, 0, 0, thickFrame(a) + thickFrame(b)},
      {"all three", 0, 0, 0, ticks(a, b, 0, 38)},
      {"another is all three", 1, 1, 1, ticks(a, b, 0, 18)},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    desk.labelsOf(kOprLine, a, b);
    desk.tool._iDrawingShape = row.drawing;
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    const SHAPE& s = desk.shapes.shape(0);
    expectLines(desk, s.lineVertices, line + row.decoration);
    EXPECT_EQ(s.pointVertices.count, 0);
    EXPECT_THAT(s.hitRects, ElementsAre(handle(a), handle(b), kNoRect, kNoRect));
  }
}

TEST(LineShape, IsLabelledAtItsStartWithItsLength) {
  const struct {
    ImagePoint pt1, pt2;
    float pixelsPerUnit;
    int32_t unit;
    const char* label;
  } table[] = {
      {{10, 10}, {13, 14}, 1.0f, kUnitMillimetre, "5.000mm"},
      {{13, 14}, {10, 10}, 1.0f, kUnitMicrometre, "5.000\u03BCm"},
      {{0, 0}, {100, 0}, 3.0f, kUnitMillimetre, "33.333mm"},
      {{0, 0}, {0, 200}, 3.0f, kUnitMillimetre, "66.667mm"},
      {{7, 7}, {7, 7}, 2.0f, kUnitMillimetre, "0.000mm"},
      {{0.25, 0}, {0, 0}, 1.0f, kUnitMillimetre, "0.250mm"},
      // In single precision: doubles would give 14142135.458.
      {{0, 0}, {1, 1}, 1e-7f, kUnitMillimetre, "14142135.000mm"},
  };
  for (const auto& row : table) {
    Desk desk;
    desk.overlay.setCalibration(row.pixelsPerUnit, row.unit);
    EXPECT_THAT(desk.labelsOf(kOprLine, row.pt1, row.pt2), ElementsAre(row.label));
  }
}

TEST(LineShape, PlacesItsLabelInTheTextColour) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.labelsOf(kOprLine, {100, 200}, {300, 200});
  const SHAPE& s = desk.shapes.shape(0);
  ASSERT_EQ(s.pointVertices.count, 9);  // one pixel a letter of "200.000mm"
  // The anchor, 2 to the right and 28 down; the letter's pixel lies 2 right of that and 6 above.
  const PointVertex wanted =
      vertexAt({104, 222}, desk.texture, {0.0f, 255 / 256.0f, 128 / 256.0f, 255 / 256.0f});
  EXPECT_TRUE(sameBits(s.pointVertices.data, &wanted, 1));
}

TEST(LineShape, HasNoLabelWithoutACalibration) {
  for (const float pixelsPerUnit : {-1.0f, 0.0f}) {
    for (const int32_t type : {kOprLine, kOprLine2}) {
      Desk desk;
      desk.overlay.setCalibration(pixelsPerUnit, kUnitMillimetre);
      EXPECT_THAT(desk.labelsOf(type, {10, 10}, {50, 60}, {30, 90}), IsEmpty());
      EXPECT_EQ(desk.shapes.shape(0).pointVertices.count, 0);
      EXPECT_GT(desk.shapes.shape(0).lineVertices.count, 0);
    }
  }
}

TEST(LineShape, OfZeroLengthIsALineWithTicks) {
  Desk desk;
  desk.labelsOf(kOprLine, {50, 60}, {50, 60});
  expectLines(desk, desk.shapes.shape(0).lineVertices,
              {{50, 60, 50, 60}, {32, 60, 68, 60}, {32, 60, 68, 60}});
}

TEST(LineShape, FollowsTheColoursOfThePreferencesAtItsNextRedraw) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.labelsOf(kOprLine, {50, 60}, {90, 60});
  desk.preferences.lineColor = {0.0, 0.0, 1.0, 0.25};
  desk.preferences.textColor = {0.0, 0.0, 0.0, 1.0};
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.data[0].color[0], 1.0f);
  EXPECT_GT(desk.shapes.shape(0).pointVertices.count, 0);
  desk.shapes.redrawSelectedShape(0);
  const float* color = desk.shapes.shape(0).lineVertices.data[0].color;
  EXPECT_THAT(std::vector(color, color + 4), ElementsAre(0.0f, 0.0f, 1.0f, 1.0f));
  EXPECT_EQ(desk.shapes.shape(0).pointVertices.count, 0);  // pure black text has no pixels
}

//     pt3 - half ------ pt3 ------ pt3 + half
//                        |
//     pt1 ------------- foot ----- pt2
TEST(ParallelShape, StandsOnItsBaselineByThreeRoutes) {
  const struct {
    const char* route;
    ImagePoint pt1, pt2, pt3, foot, half;
    const char* label;
  } table[] = {
      // route              pt1         pt2         pt3               foot        half       label
      {"horizontal", {0, 0}, {101, 0}, {40, 70}, {40, 0}, {50, 0}, "70.000mm"},
      {"horizontal, above", {101, 90}, {0, 90}, {40, 70}, {40, 90}, {50, 0}, "20.000mm"},
      {"vertical", {100, 10}, {100, 51}, {30, 40}, {100, 40}, {0, 20}, "70.000mm"},
      {"vertical, right", {100, 51}, {100, 10}, {130, 40}, {100, 40}, {0, 20}, "30.000mm"},
      {"no baseline", {50, 60}, {50, 60}, {70, 75.5}, {70, 60}, {0, 0}, "15.500mm"},
      {"slanted", {100, 100}, {130, 140}, {200, 100}, {136, 148}, {15, 20}, "80.000mm"},
      // The distance is negative here; its sign is dropped.
      {"other side", {100, 100}, {130, 140}, {100, 200}, {148, 163}, {15, 20}, "60.000mm"},
      // The plain dot product would put the foot a pixel higher.
      {"by tan and sin", {100, 100}, {130, 140}, {110, 180}, {142, 156}, {15, 20}, "40.000mm"},
      {"up and left", {300, 200}, {100, 100}, {50, 300}, {141, 120}, {-100, -50}, "201.246mm"},
      {"fractions", {100, 300}, {201, 250}, {150.5, 200.25}, {180, 261}, {50, -25}, "66.991mm"},
      {"nearly flat", {10, 10}, {400, 11}, {200, 300}, {200, 10}, {195, 0}, "289.512mm"},
      {"nearly upright", {10, 10}, {11, 400}, {200, 300}, {10, 300}, {0, 195}, "189.256mm"},
      {"on the baseline", {0, 0}, {200, 200}, {100, 100}, {100, 100}, {100, 100}, "0.000mm"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.route);
    Desk desk;
    desk.overlay.setCalibration(1.0f, kUnitMillimetre);
    EXPECT_THAT(desk.labelsOf(kOprLine2, row.pt1, row.pt2, row.pt3), ElementsAre(row.label));
    const SHAPE& s = desk.shapes.shape(0);
    const ImagePoint& p = row.pt3;
    expectLines(desk, s.lineVertices,
                {{row.pt1.x, row.pt1.y, row.pt2.x, row.pt2.y},
                 {p.x, p.y, row.foot.x, row.foot.y},
                 {p.x - row.half.x, p.y - row.half.y, p.x + row.half.x, p.y + row.half.y}});
    EXPECT_THAT(s.hitRects, ElementsAre(handle(row.foot), handle(p), kNoRect, kNoRect));
  }
}

TEST(ParallelShape, HasItsLabelAtTheThirdPoint) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.labelsOf(kOprLine2, {10, 10}, {90, 10}, {40, 70});
  const PointVertex wanted =
      vertexAt({44, 92}, desk.texture, {0.0f, 255 / 256.0f, 128 / 256.0f, 255 / 256.0f});
  ASSERT_GT(desk.shapes.shape(0).pointVertices.count, 0);
  EXPECT_TRUE(sameBits(desk.shapes.shape(0).pointVertices.data, &wanted, 1));
}

TEST(ParallelShape, ShowsFramesAtFootAndThirdPointOnlyWhenMarked) {
  const std::vector<Segment> body = {{0, 0, 100, 0}, {40, 70, 40, 0}, {-10, 70, 90, 70}};
  const ImagePoint foot{40, 0};
  const ImagePoint third{40, 70};
  const struct {
    const char* state;
    int32_t drawing, opr2, selected, hovered;
    std::vector<Segment> lines;
  } table[] = {
      // state                    drawing opr2 selected hovered
      {"idle", -1, 0, -1, -1, body},
      {"baseline dragged", 0, 0, -1, -1, {body[0]}},
      {"wait of another type", 0, 5, -1, -1, {body[0]}},
      {"third-point wait", 0, 2, -1, -1, body},
      {"hovered", -1, 0, -1, 0, body + thinFrame(foot) + thinFrame(third)},
      {"selected", -1, 0, 0, -1, body + thickFrame(foot) + thickFrame(third)},
      {"hovered in the wait", 0, 2, -1, 0, body + thinFrame(foot) + thinFrame(third)},
      {"selected, baseline dragged", 0, 0, 0, -1, {body[0]}},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    desk.labelsOf(kOprLine2, {0, 0}, {100, 0}, third);
    desk.tool._iDrawingShape = row.drawing;
    desk.tool._opr2 = row.opr2;
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    expectLines(desk, desk.shapes.shape(0).lineVertices, row.lines);
  }
}

TEST(ParallelShape, KeepsItsHitRectsWhileTheBaselineIsDragged) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.labelsOf(kOprLine2, {0, 0}, {100, 0}, {40, 70});
  desk.tool._iDrawingShape = 0;
  desk.shapes.shape(0).pt3 = {60, 90};
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).hitRects[1], handle({40, 70}));
  EXPECT_EQ(desk.shapes.shape(0).pointVertices.count, 0);  // and no label
}

TEST(ParallelShape, IsDrawnTowardsItsUnsetThirdPointByARebuildBeforeTheFirstMove) {
  Desk desk;
  desk.overlay.changeOperation(kOprLine2);
  desk.press({100, 50});
  desk.drag({200, 50});
  desk.release({200, 50});
  desk.overlay.redrawLinesAndPoints();
  expectLines(desk, desk.shapes.shape(0).lineVertices,
              {{100, 50, 200, 50}, {-1, -1, -1, 50}, {-51, -1, 49, -1}});
}

TEST(LengthShapes, TakeCoordinatesBeyondAllIntegers) {
  // Truncations saturate, 32-bit sums wrap, and nothing is undefined.
  const double far = 1e300;
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  EXPECT_THAT(desk.labelsOf(kOprLine, {-far, 0}, {far, 1}), ElementsAre("infmm"));
  desk.labelsOf(kOprLine2, {-far, 0}, {far, 0}, {0, 10});
  desk.labelsOf(kOprLine2, {-far, -far}, {far, far * 0.5}, {far, -far});
  // Twice 70000 squared is above 32 bits: the sum wraps, and the parallel is short.
  desk.labelsOf(kOprLine2, {0, 0}, {70000, 70000}, {0, 0});
  expectLines(desk, desk.shapes._shapes.back().lineVertices,
              {{0, 0, 70000, 70000}, {0, 0, 0, 0}, {-12298, -12298, 12298, 12298}});
  // Twice 60000 squared wraps below zero, which has no root.
  desk.labelsOf(kOprLine2, {0, 0}, {60000, 60000}, {0, 0});
  expectLines(desk, desk.shapes._shapes.back().lineVertices,
              {{0, 0, 60000, 60000}, {0, 0, 0, 0}, {0, 0, 0, 0}});
  expectRuns(desk);
}

}  // namespace
}  // namespace tessary::test
