#include <numbers>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "MeasureFixture.h"
#include "measure/CalcAngle.h"

namespace tessary::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AreaShapes, DrawNothingForAClickWithoutADragAndKeepTheirHitRects) {
  for (const int32_t type : {kOprCircle, kOprRect, kOprAngle}) {
    Desk desk;
    desk.overlay.setCalibration(1.0f, kUnitMillimetre);
    EXPECT_THAT(desk.labelsOf(type, {50, 60}, {50, 60}, {80, 90}), IsEmpty());
    SHAPE& s = desk.shapes.shape(0);
    EXPECT_EQ(s.lineVertices.count, 0);
    EXPECT_EQ(s.pointVertices.count, 0);
    EXPECT_THAT(s.hitRects, Each(kNoRect));
    s.pt2 = {90, 60};
    desk.shapes.redrawSelectedShape(0);
    const auto before = s.hitRects;
    s.pt2 = s.pt1 = {10, 10};
    desk.shapes.redrawSelectedShape(0);
    EXPECT_EQ(s.lineVertices.count, 0);
    EXPECT_EQ(s.hitRects, before);
  }
}

TEST(CircleShape, ShowsItsRadiusItsRimAndAlwaysItsCentre) {
  const ImagePoint c{200, 200};
  const ImagePoint rim{230, 200};
  const std::vector<Segment> radius = {{200, 200, 230, 200}};
  const struct {
    const char* state;
    int32_t drawing, selected, hovered;
    std::vector<Segment> frames;
  } table[] = {
      {"idle", -1, -1, -1, thinFrame(c)},
      {"under construction", 0, -1, -1, thinFrame(c)},
      {"hovered", -1, -1, 0, thinFrame(c) + thinFrame(rim)},
      {"selected", -1, 0, 0, thickFrame(c) + thickFrame(rim)},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    desk.labelsOf(kOprCircle, c, rim);
    desk.tool._iDrawingShape = row.drawing;
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    const SHAPE& s = desk.shapes.shape(0);
    expectLines(desk, s.lineVertices, radius + row.frames);
    Vertices plotted;
    desk.lines._drawShapeCircle(plotted, c, rim, desk.lineColor());
    ASSERT_EQ(s.pointVertices.count, plotted.count);
    EXPECT_TRUE(sameBits(s.pointVertices.data, plotted.data, plotted.count));
    const PointVertex first = vertexAt({229, 200}, desk.texture, desk.lineColor());
    EXPECT_TRUE(sameBits(s.pointVertices.data, &first, 1));
    EXPECT_THAT(s.hitRects, ElementsAre(handle(c), handle(rim), kNoRect, kNoRect));
  }
}

TEST(CircleShape, IsLabelledWithRadiusCircumferenceAndAnAreaThatIsDividedOnce) {
  const struct {
    ImagePoint rim;  // around (100, 100)
    float pixelsPerUnit;
    const char *r, *c, *s;
  } table[] = {
      {{200, 100}, 10.0f, "R:10.000mm", "C:62.832mm", "S:3141.593mm^2"},
      {{100, 0}, 10.0f, "R:10.000mm", "C:62.832mm", "S:3141.593mm^2"},
      {{160, 180}, 10.0f, "R:10.000mm", "C:62.832mm", "S:3141.593mm^2"},
      {{111, 111}, 1.0f, "R:15.000mm", "C:94.248mm", "S:706.858mm^2"},  // 15.56, not rounded
      {{100.9, 100}, 1.0f, "R:0.000mm", "C:0.000mm", "S:0.000mm^2"},
      {{104, 109.75}, 2.0f, "R:4.500mm", "C:28.274mm", "S:127.235mm^2"},
  };
  for (const auto& row : table) {
    Desk desk;
    desk.overlay.setCalibration(row.pixelsPerUnit, kUnitMillimetre);
    EXPECT_THAT(desk.labelsOf(kOprCircle, {100, 100}, row.rim), ElementsAre(row.r, row.c, row.s));
  }
}

TEST(CircleShape, HasItsLabelsAtTheCentreBehindTheRim) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.labelsOf(kOprCircle, {200, 200}, {230, 200});
  Vertices expected;
  desk.lines._drawShapeCircle(expected, {200, 200}, {230, 200}, desk.lineColor());
  desk.text.add3TextToPointVector(expected, "R:30.000mm", "C:188.496mm", "S:2827.433mm^2",
                                  {200, 200}, false, desk.preferences.textColor);
  const Vertices& actual = desk.shapes.shape(0).pointVertices;
  ASSERT_EQ(actual.count, expected.count);
  EXPECT_TRUE(sameBits(actual.data, expected.data, expected.count));
}

TEST(CircleShape, LabelsARadiusBeyondItsSquareWithoutOverflow) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  // 65536 squared is 0 in 32 bits, 50000 squared is negative: shown without its sign.
  EXPECT_THAT(desk.labelsOf(kOprCircle, {0, 0}, {65536, 0}),
              ElementsAre("R:65536.000mm", "C:411774.844mm", "S:0.000mm^2"));
  const auto labels = desk.labelsOf(kOprCircle, {0, 0}, {50000, 0});
  const float square = static_cast<float>(static_cast<int32_t>(uint32_t{50000} * uint32_t{50000}) *
                                          std::numbers::pi);
  EXPECT_EQ(labels[2], fmt::format("S:{:.3f}mm^2", double{std::abs(square)}));
  desk.labelsOf(kOprCircle, {0, 0}, {1e300, 1e300});
  // 40000 by 40000: the sum wraps below zero, which has no root.
  EXPECT_THAT(desk.labelsOf(kOprCircle, {0, 0}, {40000, 40000}),
              ElementsAre("R:0.000mm", "C:0.000mm", "S:0.000mm^2"));
}

TEST(RectangleShape, ShowsItsSidesAndFourHandlesInTheOrderOfItsHitRects) {
  const struct {
    const char* state;
    ImagePoint pt1, pt2;
    int32_t selected, hovered;
  } table[] = {
      {"idle", {100, 80}, {220, 200}, -1, -1},
      {"corners the other way", {220, 200}, {100, 80}, -1, -1},
      {"hovered", {100, 200}, {220, 80}, -1, 0},
      {"selected", {220, 80}, {100, 200}, 0, 0},
      {"a flat one", {100, 80}, {220, 80}, -1, -1},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    desk.labelsOf(kOprRect, row.pt1, row.pt2);
    desk.tool._iDrawingShape = 0;  // is meant to make no difference
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    const ImagePoint corner3{row.pt1.x, row.pt2.y};
    const ImagePoint corner4{row.pt2.x, row.pt1.y};
    std::vector<Segment> expected = box(row.pt1, row.pt2);
    for (const ImagePoint p : {row.pt1, row.pt2, corner3, corner4}) {
      if (row.selected == 0) {
        expected = expected + thickFrame(p);
      } else if (row.hovered == 0) {
        expected = expected + thinFrame(p);
      }
    }
    const SHAPE& s = desk.shapes.shape(0);
    expectLines(desk, s.lineVertices, expected);
    EXPECT_THAT(s.hitRects,
                ElementsAre(handle(row.pt1), handle(row.pt2), handle(corner3), handle(corner4)));
  }
}

TEST(RectangleShape, IsLabelledAtItsTopLeftWithSidesAndATrueArea) {
  Desk desk;
  desk.overlay.setCalibration(10.0f, kUnitMicrometre);
  const ImagePoint corners[][2] = {{{100, 80}, {220, 200}},
                                   {{220, 200}, {100, 80}},
                                   {{100, 200}, {220, 80}},
                                   {{220, 80}, {100, 200}}};
  for (const auto& [pt1, pt2] : corners) {
    EXPECT_THAT(desk.labelsOf(kOprRect, pt1, pt2),
                ElementsAre("12.000x12.000\u03BCm", "S:144.000\u03BCm^2"));
    Vertices expected;
    desk.text.add3TextToPointVector(expected, "12.000x12.000\u03BCm", "S:144.000\u03BCm^2", "",
                                    {100, 80}, false, desk.preferences.textColor);
    const Vertices& actual = desk.shapes._shapes.back().pointVertices;
    ASSERT_EQ(actual.count, expected.count);
    EXPECT_TRUE(sameBits(actual.data, expected.data, expected.count));
  }
  desk.overlay.setCalibration(3.0f, kUnitMillimetre);
  EXPECT_THAT(desk.labelsOf(kOprRect, {0, 0}, {10, 20}),
              ElementsAre("3.333x6.667mm", "S:22.222mm^2"));
}

TEST(RectangleShape, ShowsNoNumberWithoutACalibration) {
  for (const float pixelsPerUnit : {-1.0f, 0.0f}) {
    Desk desk;
    desk.overlay.setCalibration(pixelsPerUnit, kUnitMillimetre);
    EXPECT_THAT(desk.labelsOf(kOprRect, {0, 0}, {10, 20}), IsEmpty());
    EXPECT_THAT(desk.labelsOf(kOprCircle, {0, 0}, {10, 20}), IsEmpty());
    EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 8);
  }
}

TEST(AngleShape, ShowsArmsAndFramesByItsState) {
  const ImagePoint v{100, 100}, a{200, 100}, b{100, 180};
  const std::vector<Segment> first = {{100, 100, 200, 100}};
  const std::vector<Segment> arms = first + std::vector<Segment>{{100, 100, 100, 180}};
  const struct {
    const char* state;
    int32_t drawing, opr2, selected, hovered;
    std::vector<Segment> lines;
  } table[] = {
      {"idle", -1, 0, -1, -1, arms},
      {"first arm dragged", 0, 0, -1, -1, first},
      {"wait of another type", 0, 2, -1, -1, first},
      {"third-point wait", 0, 5, -1, -1, arms},
      {"hovered", -1, 0, -1, 0, arms + thinFrame(v) + thinFrame(a) + thinFrame(b)},
      {"selected", -1, 0, 0, -1, arms + thickFrame(v) + thickFrame(a) + thickFrame(b)},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.state);
    Desk desk;
    EXPECT_THAT(desk.labelsOf(kOprAngle, v, a, b), ElementsAre("90.000\u00B0"));
    EXPECT_THAT(desk.shapes.shape(0).hitRects,
                ElementsAre(handle(v), handle(a), handle(b), kNoRect));
    desk.tool._iDrawingShape = row.drawing;
    desk.tool._opr2 = row.opr2;
    desk.tool._iSelectedShape = row.selected;
    desk.tool._iHoverShape = row.hovered;
    desk.shapes.redrawSelectedShape(0);
    expectLines(desk, desk.shapes.shape(0).lineVertices, row.lines);
  }
}

TEST(AngleShape, WhoseArmsEndInOnePointShowsOneArmAndKeepsThreeHandles) {
  Desk desk;
  EXPECT_THAT(desk.labelsOf(kOprAngle, {100, 100}, {200, 100}, {200, 100}), IsEmpty());
  const SHAPE& s = desk.shapes.shape(0);
  desk.tool._iSelectedShape = 0;
  desk.shapes.redrawSelectedShape(0);
  expectLines(desk, s.lineVertices, {{100, 100, 200, 100}});  // and no frames
  EXPECT_THAT(s.hitRects,
              ElementsAre(handle({100, 100}), handle({200, 100}), handle({200, 100}), kNoRect));
}

TEST(AngleShape, KeepsItsHitRectsWhileItsFirstArmIsDragged) {
  Desk desk;
  desk.labelsOf(kOprAngle, {100, 100}, {200, 100}, {100, 180});
  const auto before = desk.shapes.shape(0).hitRects;
  desk.tool._iDrawingShape = 0;
  desk.shapes.shape(0).pt2 = {300, 300};
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).hitRects, before);
}

TEST(AngleShape, NeedsNoCalibration) {
  for (const float pixelsPerUnit : {-1.0f, 0.0f, 1000.0f}) {
    Desk desk;
    desk.overlay.setCalibration(pixelsPerUnit, kUnitMillimetre);
    EXPECT_THAT(desk.labelsOf(kOprAngle, {0, 0}, {10, 0}, {10, 10}), ElementsAre("45.000\u00B0"));
  }
}

TEST(CalcAngle, IsTheAngleBetweenTheArms) {
  const ImagePoint v{100, 100};
  const struct {
    ImagePoint a, b;
    float degrees;
  } table[] = {
      {{200, 100}, {100, 200}, 90.0f},
      {{100, 200}, {200, 100}, 90.0f},
      {{200, 100}, {100, 0}, 90.0f},
      {{200, 100}, {0, 100}, 180.0f},
      {{0, 100}, {200, 100}, 180.0f},
      {{200, 100}, {300, 100}, 0.0f},
      {{200, 100}, {200, 200}, 45.0f},
      // Across the cut at 180 degrees, where the plain difference is 270.
      {{0, 0}, {0, 200}, 90.0f},
      {{0, 200}, {0, 0}, 90.0f},
      {{100, 0}, {0, 200}, 135.0f},
      {{0, 200}, {100, 0}, 135.0f},
      {{100, 100}, {200, 100}, 0.0f},  // an arm without a length points to the right
      {{100, 100}, {100, 100}, 0.0f},
  };
  for (const auto& row : table) {
    EXPECT_EQ(_CalcAngle(v, row.a, row.b), row.degrees)
        << row.a.x << "," << row.a.y << " " << row.b.x << "," << row.b.y;
  }
}

TEST(CalcAngle, IsNeverAbove180AndDoesNotDependOnTheOrderOfTheArms) {
  for (int i = 0; i < 360; i += 7) {
    for (int k = 0; k < 360; k += 11) {
      const auto at = [](int degrees) {
        const double t = degrees * std::numbers::pi / 180;
        return ImagePoint{50 + 400 * std::cos(t), 60 + 400 * std::sin(t)};
      };
      const int turn = std::abs(i - k);
      const float expected = static_cast<float>(turn <= 180 ? turn : 360 - turn);
      EXPECT_NEAR(_CalcAngle({50, 60}, at(i), at(k)), expected, 1e-4f);
      EXPECT_NEAR(_CalcAngle({50, 60}, at(k), at(i)), expected, 1e-4f);
      EXPECT_LE(_CalcAngle({50, 60}, at(i), at(k)), 180.0f);
    }
  }
}

}  // namespace
}  // namespace tessary::test
