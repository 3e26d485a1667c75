#include "overlay/Scale.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "OverlayFixture.h"

namespace tessary::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScaleTest : public OverlayTest {
 protected:
  void calibrate(float pixelsPerUnit, int32_t unit = kUnitMillimetre) {
    calibration.setCalibration(pixelsPerUnit, unit);
    scale.calcGridPixelsAndLen();
  }

  void draw(int32_t type) {
    _totalLines.count = 0;
    _totalPoints.count = 0;
    scale.changeScale(type);
    scale.drawCrosshair();
    scale.drawGrid();
    scale.drawConcentric();
  }

  /// What a ruler looks like, written out mark by mark.
  std::vector<Segment> rulerLines(int32_t type) const {
    const double W = size.width, H = size.height;
    const int cx = size.width / 2, cy = size.height / 2;
    std::vector<Segment> marks{{cx * 1.0, 0, cx * 1.0, H}, {0, cy * 1.0, W, cy * 1.0}};
    for (int i = 1; i < cy / 10; ++i) {
      for (const int sign : {-1, 1}) {
        const double y = cy + sign * 10 * i;
        if (i % 10 == 0 && type == kScaleConcentric) continue;
        if (i % 10 == 0 && type == kScaleGrid) {
          marks.push_back({0, y, W, y});
        } else {
          marks.push_back({cx - (i % 5 == 0 ? 10.0 : 4.0), y, cx * 1.0, y});
        }
      }
    }
    for (int i = 1; i < cx / 10; ++i) {
      for (const int sign : {-1, 1}) {
        const double x = cx + sign * 10 * i;
        if (i % 10 == 0 && type == kScaleConcentric) continue;
        if (i % 10 == 0 && type == kScaleGrid) {
          marks.push_back({x, 0, x, H});
        } else {
          marks.push_back({x, cy - (i % 5 == 0 ? 10.0 : 4.0), x, cy * 1.0});
        }
      }
    }
    return marks;
  }

  /// The scaled form, written out mark by mark.
  std::vector<Segment> stepLines(int32_t type, int s) const {
    const double W = size.width, H = size.height;
    const int cx = size.width / 2, cy = size.height / 2;
    std::vector<Segment> marks{{cx * 1.0, 0, cx * 1.0, H}, {0, cy * 1.0, W, cy * 1.0}};
    const auto offset = [&](int j) {
      volatile float product = static_cast<float>(j * (s / 10.0));
      return static_cast<int>(static_cast<double>(product) + 0.5);
    };
    const auto length = [](int j) { return j == 5 ? 14 : 8; };
    for (int i = 1; i <= cy / s + 1; ++i) {
      double y = cy - s * i;
      if (y > 0 && type == kScaleCrosshair) marks.push_back({cx * 1.0, y, cx + 20.0, y});
      if (y > 0 && type == kScaleGrid) marks.push_back({0, y, W, y});
      for (int j = 1; j <= 9; ++j) {
        const double y2 = y + offset(j);
        if (y2 > 0) marks.push_back({cx * 1.0, y2, 1.0 * cx + length(j), y2});
      }
      y = cy + s * i;
      if (y + 1 < H && type == kScaleCrosshair) marks.push_back({cx * 1.0, y, cx + 20.0, y});
      if (y + 1 < H && type == kScaleGrid) marks.push_back({0, y, W, y});
      for (int j = 1; j <= 9; ++j) {
        const double y2 = y - offset(j);
        if (y2 + 1 < H) marks.push_back({cx * 1.0, y2, 1.0 * cx + length(j), y2});
      }
    }
    for (int i = 1; i <= cx / s + 1; ++i) {
      double x = cx - s * i;
      if (x > 0 && type == kScaleCrosshair) marks.push_back({x, cy * 1.0, x, cy - 20.0});
      if (x > 0 && type == kScaleGrid) marks.push_back({x, 0, x, H});
      for (int j = 1; j <= 9; ++j) {
        const double x2 = x + offset(j);
        if (x2 > 0) marks.push_back({x2, cy * 1.0, x2, 1.0 * cy - length(j)});
      }
      x = cx + s * i;
      if (x + 1 < W && type == kScaleCrosshair) marks.push_back({x, cy * 1.0, x, cy - 20.0});
      if (x + 1 < W && type == kScaleGrid) marks.push_back({x, 0, x, H});
      for (int j = 1; j <= 9; ++j) {
        const double x2 = x - offset(j);
        if (x2 + 1 < W) marks.push_back({x2, cy * 1.0, x2, 1.0 * cy - length(j)});
      }
    }
    return marks;
  }

  std::vector<PointVertex> rings(std::initializer_list<int> radii) const {
    std::vector<PointVertex> all;
    const ImagePoint center{static_cast<double>(size.width / 2),
                            static_cast<double>(size.height / 2)};
    for (const int r : radii) {
      const auto ring = circleVertices(center, r, size, gridColor);
      all.insert(all.end(), ring.begin(), ring.end());
    }
    return all;
  }

  /// The axes alone.
  std::vector<Segment> axes() const {
    const double cx = size.width / 2, cy = size.height / 2;
    return {{cx, 0, cx, size.height * 1.0}, {0, cy, size.width * 1.0, cy}};
  }

  void expectSegments(const std::vector<Segment>& segments) {
    expectLines(_totalLines, segments, size, gridColor);
  }
};

TEST_F(ScaleTest, StartsWithoutAReticle) {
  EXPECT_EQ(scale.getCurrScale(), 0);
  EXPECT_EQ(calibration._pixelsPerUnit, -1.0f);
  EXPECT_EQ(calibration._unit, "mm");
  scale.changeScale(2);
  EXPECT_EQ(scale.getCurrScale(), 2);
}

TEST_F(ScaleTest, ACalibrationBringsTheUnitAlsoWhereItsValueIsRefused) {
  struct Row {
    float value;
    int32_t unit;
    float kept;
    const char* name;
  };
  const Row rows[] = {
      {1000.0f, 0, 1000.0f, "mm"}, {-2.0f, 1, 1000.0f, "\u03BCm"}, {0.5f, 7, 0.5f, "\u03BCm"},
      {0.0f, -1, 0.0f, "\u03BCm"}, {-0.5f, 0, -0.5f, "mm"},        {-1.0f, 0, -1.0f, "mm"},
      {-1.0001f, 0, -1.0f, "mm"},
  };
  for (const Row& row : rows) {
    calibration.setCalibration(row.value, row.unit);
    EXPECT_EQ(calibration._pixelsPerUnit, row.kept) << row.value;
    EXPECT_EQ(calibration._unit, row.name) << row.value;
  }
}

TEST_F(ScaleTest, TheStepNearestToAHundredPixelsIsChosen) {
  struct Row {
    float pixelsPerUnit;
    const char* length;
    int32_t pixels;
  };
  const Row rows[] = {
      {1000.0f, "0.1", 100},
      {1706.0f, "0.05", 85},
      {533.33f, "0.2", 107},
      {100.0f, "1", 100},
      {4.0f, "20", 80},
      {1.5f, "50", 75},
      {0.005f, "50", 0},
      {1e-6f, "50", 0},
      {1000000.0f, "0.0001", 100},
      {1999000.0f, "0.0001", 200},
      {200.0f / 3 - 0.01f, "2", 133},  // changes over at 200 / (1 + 2): below it 2 wins
      {200.0f / 3 + 0.01f, "1", 67},
      {200.0f / 7 - 0.01f, "5", 143},  // and at 200 / (2 + 5)
      {200.0f / 7 + 0.01f, "2", 57},
  };
  for (const Row& row : rows) {
    calibrate(row.pixelsPerUnit);
    EXPECT_EQ(fmt::format("{:.3g}", static_cast<double>(scale._scaleLen)), row.length)
        << row.pixelsPerUnit;
    EXPECT_EQ(scale._scalePixels, row.pixels) << row.pixelsPerUnit;
  }
}

TEST_F(ScaleTest, WithoutACalibrationThereIsNoStep) {
  for (const float none : {0.0f, -0.5f, -1.0f}) {
    calibrate(1000.0f);
    calibrate(none);
    EXPECT_EQ(scale._scalePixels, 0);
    EXPECT_EQ(scale._scaleLen, 0.0f);
  }
}

TEST_F(ScaleTest, ACalibrationTooLargeForAnyStepKeepsTheLastOne) {
  calibrate(1706.0f);
  const float length = scale._scaleLen;
  for (const float large : {2000000.0f, 1e30f, std::numeric_limits<float>::infinity()}) {
    calibrate(large);
    EXPECT_EQ(scale._scalePixels, 85) << large;
    EXPECT_EQ(scale._scaleLen, length) << large;
  }
}

TEST_F(ScaleTest, StepsChangeOverWhereBothAreEquallyNear) {
  std::vector<float> steps;
  float decade = 0.0001f;
  for (int i = 0; i < 6; ++i, decade *= 10.0f) {
    for (const float factor : {1.0f, 2.0f, 5.0f}) steps.push_back(decade * factor);
  }
  // Every calibration there is around each change-over.
  for (size_t i = 0; i + 1 < steps.size(); ++i) {
    const float shorter = steps[i];
    const float longer = steps[i + 1];
    const float middle = 200.0f / (shorter + longer);
    float pixelsPerUnit = middle * 0.99999f;
    for (; pixelsPerUnit < middle * 1.00001f; pixelsPerUnit = std::nextafter(pixelsPerUnit, 1e9f)) {
      const float shorterPixels = shorter * pixelsPerUnit;
      const float longerPixels = longer * pixelsPerUnit;
      const double below = 100.0 - static_cast<double>(shorterPixels);
      const double above = static_cast<double>(longerPixels) - 100.0;
      calibrate(pixelsPerUnit);
      ASSERT_EQ(scale._scaleLen, below <= above ? shorter : longer) << pixelsPerUnit;
    }
  }
}

TEST_F(ScaleTest, EveryStepIsLabelledWithItsShortestNumber) {
  const struct {
    float length;
    const char* label;
  } steps[] = {{0.0001F, "0.0001"}, {0.0002F, "0.0002"}, {0.0005F, "0.0005"}, {0.001F, "0.001"},
               {0.002F, "0.002"},   {0.005F, "0.005"},   {0.01F, "0.01"},     {0.02F, "0.02"},
               {0.05F, "0.05"},     {0.1F, "0.1"},       {0.2F, "0.2"},       {0.5F, "0.5"},
               {1.0F, "1"},         {2.0F, "2"},         {5.0F, "5"},         {10.0F, "10"},
               {20.0F, "20"},       {50.0F, "50"}};
  for (const auto& [length, label] : steps) {
    calibrate(100.0F / length);
    rasterizer.drawn.clear();
    draw(kScaleCrosshair);
    EXPECT_THAT(rasterizer.drawn, ElementsAre(std::string(label) + "mm"));
  }
}

TEST_F(ScaleTest, WithoutAReticleThereAreNoAxes) {
  for (const int32_t type : {0, 4, -1}) {
    draw(type);
    EXPECT_EQ(_totalLines.count, 0);
    EXPECT_EQ(_totalPoints.count, 0);
  }
}

TEST_F(ScaleTest, TheCalibrationLineTakesTheReticleAway) {
  calibrationLine._showCalibrationLine = 1;
  for (const int32_t type : {1, 2, 3}) {
    draw(type);
    EXPECT_EQ(_totalLines.count, 0);
    EXPECT_EQ(_totalPoints.count, 0);
  }
}

TEST_F(ScaleTest, UncalibratedReticlesAreRulersInPixels) {
  struct Row {
    int32_t type;
    int32_t lines;
  };
  // 2 axes, 2 by 23 marks up and down, 2 by 31 to the sides; on the rings' own places none.
  for (const auto& [type, count] : {Row{1, 110}, Row{2, 110}, Row{3, 100}}) {
    draw(type);
    SCOPED_TRACE(type);
    EXPECT_EQ(_totalLines.count, 2 * count);
    expectSegments(rulerLines(type));
  }
}

TEST_F(ScaleTest, TheRulerOfTheCrosshairStartsLikeThis) {
  draw(kScaleCrosshair);
  std::vector<Segment> head = {{320, 0, 320, 480},   {0, 240, 640, 240},   {316, 230, 320, 230},
                               {316, 250, 320, 250}, {316, 220, 320, 220}, {316, 260, 320, 260},
                               {316, 210, 320, 210}, {316, 270, 320, 270}, {316, 200, 320, 200},
                               {316, 280, 320, 280}, {310, 190, 320, 190}, {310, 290, 320, 290}};
  _totalLines.count = 24;
  expectSegments(head);
}

TEST_F(ScaleTest, TheRulerOfTheGridHasFullLinesEveryHundredPixels) {
  draw(kScaleGrid);
  // Behind the axes and 9 pairs of marks.
  const auto expected = lineVertices({{0, 140, 640, 140}, {0, 340, 640, 340}}, size, gridColor);
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(sameBits(_totalLines.data[2 * (2 + 18) + i], expected[static_cast<size_t>(i)]));
  }
}

TEST_F(ScaleTest, OnlyTheConcentricRulerHasPoints) {
  draw(kScaleCrosshair);
  EXPECT_EQ(_totalPoints.count, 0);
  draw(kScaleGrid);
  EXPECT_EQ(_totalPoints.count, 0);
  draw(kScaleConcentric);
  expectVertices(_totalPoints, rings({100, 200, 300}));  // 300 is more than half the height
  EXPECT_THAT(rasterizer.measured, IsEmpty());
}

TEST_F(ScaleTest, RulersFitAnyFrame) {
  struct Row {
    TextureSize frame;
    std::initializer_list<int> radii;
  };
  const Row rows[] = {
      {{641, 479}, {100, 200, 300}},  // uneven
      {{600, 400}, {100, 200, 300}},  // the outermost ring touches the edge: x is 0
      {{599, 400}, {100, 200}},       // and here it would be outside
      {{333, 77}, {100}},
      {{19, 23}, {}},
      {{1, 1}, {}},
      {{0, 0}, {}},
      {{640, 0}, {100, 200, 300}},
      {{0, 480}, {}},
  };
  for (const auto& [frame, radii] : rows) {
    size = frame;
    for (const int32_t type : {1, 2, 3}) {
      draw(type);
      SCOPED_TRACE(testing::Message() << frame.width << "x" << frame.height << " " << type);
      if (frame.width > 0 && frame.height > 0) {
        expectSegments(rulerLines(type));
        expectVertices(_totalPoints, type == 3 ? rings(radii) : rings({}));
      }
      EXPECT_EQ(_totalLines.count, 2 * static_cast<int32_t>(rulerLines(type).size()));
    }
  }
  size = {0, 0};
  draw(kScaleConcentric);
  EXPECT_EQ(_totalLines.count, 4);  // degenerate axes
}

TEST_F(ScaleTest, CalibratedReticlesShowTheirSteps) {
  size = {1280, 720};
  calibrate(1000.0f);
  for (const int32_t type : {1, 2, 3}) {
    draw(type);
    SCOPED_TRACE(type);
    expectSegments(stepLines(type, 100));
  }
}

TEST_F(ScaleTest, TheCalibratedCrosshairStartsLikeThis) {
  size = {1280, 720};
  calibrate(1000.0f);
  draw(kScaleCrosshair);
  _totalLines.count = 2 * 22;
  expectSegments({{640, 0, 640, 720},   {0, 360, 1280, 360},  //
                  {640, 260, 660, 260},                       // a major mark, and back from it
                  {640, 270, 648, 270}, {640, 280, 648, 280}, {640, 290, 648, 290},
                  {640, 300, 648, 300}, {640, 310, 654, 310}, {640, 320, 648, 320},
                  {640, 330, 648, 330}, {640, 340, 648, 340}, {640, 350, 648, 350},
                  {640, 460, 660, 460},  // the other side
                  {640, 450, 648, 450}, {640, 440, 648, 440}, {640, 430, 648, 430},
                  {640, 420, 648, 420}, {640, 410, 654, 410}, {640, 400, 648, 400},
                  {640, 390, 648, 390}, {640, 380, 648, 380}, {640, 370, 648, 370}});
}

TEST_F(ScaleTest, AnExtraPassLetsTheMinorMarksReachTheEdge) {
  // Half the height is 360: the fourth step ends at 400, outside, and only its marks inside show.
  size = {1280, 720};
  calibrate(1000.0f);
  draw(kScaleCrosshair);
  // 2 axes; up 3 majors, 27 + 5 minors (350, 340, ... 310 from the centre); down the same, where
  // 360 itself would be at 720, outside. To the sides 6 majors and 54 + 3 minors each.
  EXPECT_EQ(_totalLines.count, 2 * (2 + 2 * (3 + 32) + 2 * (6 + 57)));
}

TEST_F(ScaleTest, CalibratedReticlesFitAnyFrameAndStep) {
  for (const TextureSize frame : {TextureSize{641, 479},
                                  {1279, 719},
                                  {200, 200},
                                  {201, 201},
                                  {99, 101},
                                  {3, 3},
                                  {1, 1},
                                  {1920, 1080}}) {
    for (const float pixelsPerUnit :
         {1000.0f, 1706.0f, 533.33f, 1.5f, 0.011f, 0.031f, 1999000.0f}) {
      size = frame;
      calibrate(pixelsPerUnit);
      ASSERT_GT(scale._scalePixels, 0);
      for (const int32_t type : {1, 2, 3}) {
        // Rings at every pixel of a large frame are millions of points.
        if (type == 3 && scale._scalePixels < 10 && frame.width > 300) continue;
        draw(type);
        SCOPED_TRACE(testing::Message() << frame.width << "x" << frame.height << " "
                                        << scale._scalePixels << " " << type);
        expectSegments(stepLines(type, scale._scalePixels));
        ASSERT_FALSE(HasFatalFailure());
      }
    }
  }
}

TEST_F(ScaleTest, MinorMarksAreRoundedToTheNearestPixel) {
  size = {1280, 720};
  calibrate(1706.0f);  // 85 pixels a step: 8.5, 17, 25.5 ...
  draw(kScaleConcentric);
  _totalLines.count = 2 * 11;
  expectSegments({{640, 0, 640, 720},
                  {0, 360, 1280, 360},
                  {640, 284, 648, 284},
                  {640, 292, 648, 292},
                  {640, 301, 648, 301},
                  {640, 309, 648, 309},
                  {640, 318, 654, 318},
                  {640, 326, 648, 326},
                  {640, 335, 648, 335},
                  {640, 343, 648, 343},
                  {640, 352, 648, 352}});
}

TEST_F(ScaleTest, CalibratedRingsGoOutToTheEdge) {
  size = {1280, 720};
  calibrate(1000.0f);
  draw(kScaleConcentric);
  const auto expected = rings({100, 200, 300, 400, 500, 600});
  const auto ringPoints = static_cast<int32_t>(expected.size());
  ASSERT_GT(_totalPoints.count, ringPoints);
  _totalPoints.count = ringPoints;
  expectVertices(_totalPoints, expected);

  size = {1200, 720};  // the sixth ring's x is exactly 0: let in
  draw(kScaleConcentric);
  EXPECT_EQ(_totalPoints.count - ringPoints, 5 * 200);  // the rest is "0.1mm"
}

TEST_F(ScaleTest, LabelsStandAtTheFirstMarkOrBeforeIt) {
  // "0.1mm" is 50 by 20, measured as 58. The text starts 4 right of the label's x, and its lowest
  // pixel row is 22 below the label's y.
  struct Row {
    int32_t type;
    int left;
  };
  size = {1280, 720};
  calibrate(1000.0f);
  rasterizer.drawn.clear();
  for (const auto& [type, left] :
       {Row{1, (1280 - 58) / 2 + 100 + 4}, Row{2, (1380 - 58) / 2 + 4}}) {
    draw(type);
    EXPECT_THAT(rasterizer.drawn, ElementsAre("0.1mm"));
    EXPECT_EQ(boxOf(_totalPoints, size), (Box{left, 367, left + 49, 386}));
    EXPECT_EQ(_totalPoints.data[0].color[1], 128.0f / 256.0f);  // in the grid's colour
  }
  draw(kScaleConcentric);
  const int32_t label = _totalPoints.count - 1000;
  EXPECT_EQ(boxOf(_totalPoints.data + label, 1000, size), (Box{665, 367, 714, 386}));
}

TEST_F(ScaleTest, TheLabelCarriesTheUnit) {
  calibrate(533.33f, kUnitMicrometre);
  draw(kScaleCrosshair);
  EXPECT_THAT(rasterizer.drawn, ElementsAre("0.2\u03BCm"));
}

TEST_F(ScaleTest, ACalibrationOfZeroShowsAxesOnly) {
  calibrate(0.0f);
  for (const int32_t type : {1, 2, 3}) {
    draw(type);
    expectSegments(axes());
    EXPECT_EQ(_totalPoints.count, 0);
  }
}

TEST_F(ScaleTest, AStepOfLessThanHalfAPixelShowsAxesOnly) {
  calibrate(0.005f);
  ASSERT_GT(scale._scaleLen, 0.0f);
  ASSERT_EQ(scale._scalePixels, 0);
  for (const int32_t type : {1, 2, 3}) {
    draw(type);
    expectSegments(axes());
    EXPECT_EQ(_totalPoints.count, 0);
  }
}

TEST_F(ScaleTest, AStoppedPreviewShowsTheRulerAgain) {
  calibrate(1000.0f);
  calibration._pixelsPerUnit = -1.0f;  // without choosing steps anew
  draw(kScaleCrosshair);
  expectSegments(rulerLines(kScaleCrosshair));
  EXPECT_EQ(_totalPoints.count, 0);
}

TEST_F(ScaleTest, WithoutAPictureACalibratedReticleHasNoMarks) {
  size = {0, 0};
  for (const float pixelsPerUnit : {1000.0f, 0.011f, 0.031f, 1.5f}) {
    calibrate(pixelsPerUnit);
    for (const int32_t type : {1, 2, 3}) {
      draw(type);
      EXPECT_EQ(_totalLines.count, 4) << pixelsPerUnit;
    }
  }
}

TEST_F(ScaleTest, ColoursAreReadAtEachDraw) {
  draw(kScaleCrosshair);
  preferences.gridColor = {0.0, 0.0, 1.0, 0.5};
  draw(kScaleCrosshair);
  expectLines(_totalLines, rulerLines(kScaleCrosshair), size, {0.0f, 0.0f, 1.0f, 1.0f});
}

TEST_F(ScaleTest, ASecondDrawAllocatesNothing) {
  calibrate(1000.0f);
  draw(kScaleConcentric);
  const PointVertex* const lineBlock = _totalLines.data;
  const PointVertex* const pointBlock = _totalPoints.data;
  draw(kScaleConcentric);
  EXPECT_EQ(_totalLines.data, lineBlock);
  EXPECT_EQ(_totalPoints.data, pointBlock);
}

}  // namespace
}  // namespace tessary::test
