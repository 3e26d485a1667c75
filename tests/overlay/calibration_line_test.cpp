#include <limits>

#include <gtest/gtest.h>

#include "OverlayFixture.h"
#include "overlay/CalibrationLine.h"

namespace tessary::test {
namespace {

class CalibrationLineTest : public OverlayTest {
 protected:
  CalibrationLineTest() { size = {1280, 720}; }

  /// A line from 340 to 940 at the height 360, and a press on `handle`.
  void press(ImagePoint at) {
    line.startCalibration(900);
    line.mouseDown(at, opr1);
  }

  CalibrationLine& line = calibrationLine;
  int32_t opr1 = 0;
};

TEST_F(CalibrationLineTest, OpensAtTwoThirdsOfTheVisibleWidthInTheMiddleOfTheFrame) {
  struct Row {
    TextureSize frame;
    double visible;
    int32_t length, left, right;
  };
  const Row rows[] = {
      {{1280, 720}, 900, 600, 340, 940},    //
      {{1280, 720}, 900.9, 600, 340, 940},  // loses its fraction
      {{1280, 720}, 901, 600, 340, 940},    // 600.67
      {{1280, 720}, 100, 66, 607, 673},     //
      {{1281, 720}, 900, 600, 340, 940},    // 340.5
      {{640, 480}, 960, 640, 0, 640},       // one and a half frames
      {{640, 480}, 1200, 800, -80, 720},    // wider: a line longer than the frame
      {{641, 480}, 1200, 800, -79, 721},    // -79.5 towards zero
      {{0, 0}, 900, 600, -300, 300},        // no picture
      {{640, 480}, 0, 0, 320, 320},         // no window
      {{640, 480}, std::numeric_limits<double>::quiet_NaN(), 0, 320, 320},
      {{640, 480}, 1e300, 1431655764, -715827562, 715828202},
  };
  for (const Row& row : rows) {
    size = row.frame;
    line._calibrationLineLen = 0;
    line.startCalibration(row.visible);
    EXPECT_EQ(line.calibrationLineLen(), row.length) << row.visible;
    EXPECT_EQ(line._calibrationLineLeftPosition, row.left) << row.visible;
    EXPECT_EQ(line._calibrationLineRightPosition, row.right) << row.visible;
    EXPECT_TRUE(line.isShown());
  }
}

TEST_F(CalibrationLineTest, ALaterStartForgetsTheLength) {
  for (const int32_t before : {0, 60, 299, 300, 600, 5000}) {
    line._calibrationLineLen = before;
    line.startCalibration(900);
    EXPECT_EQ(line.calibrationLineLen(), 600) << before;
  }
}

TEST_F(CalibrationLineTest, StoppingHidesTheLineAndKeepsTheRest) {
  press({340, 360});
  line.mouseMoved({340, 360});
  line.stopCalibration();
  EXPECT_FALSE(line.isShown());
  EXPECT_EQ(line.calibrationLineLen(), 600);
  EXPECT_EQ(line._showCalibrationLineLeftArrow, 1);
}

TEST_F(CalibrationLineTest, IsDrawnOnlyWhileItIsShown) {
  line.drawCalibrationLine();
  EXPECT_EQ(_totalLines.count, 0);
}

TEST_F(CalibrationLineTest, IsADoubleLineWithTwoHandlesAndFourArrows) {
  line.startCalibration(900);
  line.drawCalibrationLine();
  std::vector<Segment> plain = {
      {340, 360, 940, 360}, {340, 361, 940, 361}, {340, 300, 340, 420}, {940, 300, 940, 420},
      {336, 330, 332, 326}, {332, 326, 332, 334}, {332, 334, 336, 330},  // at L, pointing right
      {344, 330, 348, 326}, {348, 326, 348, 334}, {348, 334, 344, 330},  // and left
      {936, 330, 932, 326}, {932, 326, 932, 334}, {932, 334, 936, 330},  // at R
      {944, 330, 948, 326}, {948, 326, 948, 334}, {948, 334, 944, 330},
  };
  expectLines(_totalLines, plain, size, lineColor);
  EXPECT_EQ(_totalPoints.count, 0);

  const Segment leftArrows[] = {
      {337, 330, 331, 324}, {331, 324, 331, 336}, {331, 336, 337, 330},
      {343, 330, 349, 324}, {349, 324, 349, 336}, {349, 336, 343, 330},
  };
  const Segment rightArrows[] = {
      {937, 330, 931, 324}, {931, 324, 931, 336}, {931, 336, 937, 330},
      {943, 330, 949, 324}, {949, 324, 949, 336}, {949, 336, 943, 330},
  };
  std::vector<Segment> both = plain;
  both.insert(both.end(), std::begin(leftArrows), std::end(leftArrows));
  both.insert(both.end(), std::begin(rightArrows), std::end(rightArrows));
  line._showCalibrationLineLeftArrow = 1;
  line._showCalibrationLineRightArrow = 1;
  _totalLines.count = 0;
  line.drawCalibrationLine();
  expectLines(_totalLines, both, size, lineColor);

  std::vector<Segment> rightOnly = plain;
  rightOnly.insert(rightOnly.end(), std::begin(rightArrows), std::end(rightArrows));
  line._showCalibrationLineLeftArrow = 0;
  _totalLines.count = 0;
  line.drawCalibrationLine();
  expectLines(_totalLines, rightOnly, size, lineColor);
}

TEST_F(CalibrationLineTest, AnUnevenHeightIsHalvedDownward) {
  size = {1281, 721};
  line.startCalibration(900);
  line.drawCalibrationLine();
  _totalLines.count = 2;
  expectLines(_totalLines, {{340, 360, 940, 360}}, size, lineColor);
}

// 9 wide and 120 high; the low edges belong to it, the high edges do not.
TEST_F(CalibrationLineTest, HandlesAreHitWithinTheirAreas) {
  line.startCalibration(900);
  struct Row {
    ImagePoint at;
    int32_t opr1;
  };
  const Row rows[] = {
      {{340, 360}, 51}, {{336, 300}, 51},     {{344.9, 419.9}, 51}, {{335.9, 360}, 3},
      {{345, 360}, 3},  {{340, 299.9}, 3},    {{340, 420}, 3},      {{940, 360}, 52},
      {{936, 300}, 52}, {{944.9, 419.9}, 52}, {{935.9, 360}, 3},    {{945, 360}, 3},
      {{640, 360}, 3},
  };
  for (const Row& row : rows) {
    opr1 = 3;  // an armed tool stays where nothing is hit
    line.mouseDown(row.at, opr1);
    EXPECT_EQ(opr1, row.opr1) << row.at.x << "," << row.at.y;
    line.mouseMoved(row.at);
    EXPECT_EQ(line._showCalibrationLineLeftArrow, row.opr1 == 51 ? 1 : 0);
    EXPECT_EQ(line._showCalibrationLineRightArrow, row.opr1 == 52 ? 1 : 0);
  }
}

TEST_F(CalibrationLineTest, WhereHandlesOverlapTheRightOneWins) {
  line._calibrationLineLeftPosition = 100;
  line._calibrationLineRightPosition = 104;
  line.mouseDown({102, 360}, opr1);
  EXPECT_EQ(opr1, 52);
  line.mouseMoved({102, 360});
  EXPECT_EQ(line._showCalibrationLineLeftArrow, 1);
  EXPECT_EQ(line._showCalibrationLineRightArrow, 1);
}

TEST_F(CalibrationLineTest, APressRemembersWhereTheDragStarts) {
  press({640, 100});  // on nothing
  EXPECT_EQ(line._calibrationLineLen0, 600);
  EXPECT_EQ(line._calibrationLineLeftPosition0, 340);
  EXPECT_EQ(line._calibrationLineRightPosition0, 940);
}

TEST_F(CalibrationLineTest, TheLeftEndFollowsTheMouse) {
  press({340, 360});
  EXPECT_TRUE(line.mouseDragged(opr1, 100.9, 0, 900));
  EXPECT_EQ(line._calibrationLineLeftPosition, 440);
  EXPECT_EQ(line.calibrationLineLen(), 500);
  EXPECT_FALSE(line.mouseDragged(opr1, 100.1, 0, 900)) << "it is there already";
  EXPECT_TRUE(line.mouseDragged(opr1, -100.9, 0, 900)) << "counted from the press";
  EXPECT_EQ(line._calibrationLineLeftPosition, 240);
  EXPECT_EQ(line.calibrationLineLen(), 700);
  EXPECT_EQ(line._calibrationLineRightPosition, 940);
}

TEST_F(CalibrationLineTest, TheRightEndFollowsTheMouse) {
  press({940, 360});
  EXPECT_TRUE(line.mouseDragged(opr1, -100.9, 100, 900));
  EXPECT_EQ(line._calibrationLineRightPosition, 840);
  EXPECT_EQ(line.calibrationLineLen(), 500);
  EXPECT_FALSE(line.mouseDragged(opr1, -100, 100, 900));
  EXPECT_TRUE(line.mouseDragged(opr1, 0, 100, 900));
  EXPECT_EQ(line._calibrationLineRightPosition, 940);
  EXPECT_EQ(line._calibrationLineLeftPosition, 340);
}

TEST_F(CalibrationLineTest, NeitherEndLeavesTheVisibleFrame) {
  struct Row {
    int32_t opr1;
    double dx, viewLocationX, visible;
    bool accepted;
  };
  const Row rows[] = {
      {51, -339, 0, 900, true},       // to 1
      {51, -340, 0, 900, false},      // to the edge itself
      {51, -40, 300, 900, false},     //
      {51, -39, 300, 900, true},      //
      {51, -40, 299.5, 900, true},    // the edge keeps its fraction
      {51, -600, 0, 900, false},      // past it
      {52, 259, 300, 900, true},      // to 1199
      {52, 260, 300, 900, false},     // to the edge itself
      {52, 260, 300.5, 900.5, true},  // the edge is 1201
      {52, 260, 300.9, 900, false},   // it loses its fraction
      {52, 600, 300, 900, false},     //
      {51, -2e9, 0, 900, false},      // as far as it goes
      {51, 2e9, 0, 900, false},       //
      {52, -2e9, 0, 900, false},      //
      {52, 2e9, 0, 900, false},       //
      {52, 1e300, 0, 1e300, false},   //
      {51, -1e300, 0, 900, false},    //
      {0, 10, 0, 900, false},         // no end is held
      {3, 10, 0, 900, false},         //
  };
  for (const Row& row : rows) {
    press({640, 100});
    EXPECT_EQ(line.mouseDragged(row.opr1, row.dx, row.viewLocationX, row.visible), row.accepted)
        << row.opr1 << " " << row.dx;
    if (row.accepted) continue;
    EXPECT_EQ(line._calibrationLineLeftPosition, 340);
    EXPECT_EQ(line._calibrationLineRightPosition, 940);
    EXPECT_EQ(line.calibrationLineLen(), 600);
  }
}

TEST_F(CalibrationLineTest, TheLineIsNeverShorterThanFifty) {
  line._calibrationLineLen = 60;
  line._calibrationLineLeftPosition = 100;
  line._calibrationLineRightPosition = 160;
  line.mouseDown({0, 0}, opr1);
  EXPECT_FALSE(line.mouseDragged(51, 20, 0, 900));
  EXPECT_FALSE(line.mouseDragged(51, 11, 0, 900));
  EXPECT_TRUE(line.mouseDragged(51, 10, 0, 900));
  EXPECT_EQ(line.calibrationLineLen(), 50);
  line.mouseDown({0, 0}, opr1);
  EXPECT_FALSE(line.mouseDragged(52, -1, 0, 900));
  EXPECT_TRUE(line.mouseDragged(52, 1, 0, 900));
  EXPECT_EQ(line.calibrationLineLen(), 51);
  EXPECT_EQ(line._calibrationLineRightPosition, 161);
}

TEST_F(CalibrationLineTest, AReleaseLetsGo) {
  for (int32_t each : {51, 52, 0, 4}) {
    CalibrationLine::mouseUp(each);
    EXPECT_EQ(each, 0);
  }
}

}  // namespace
}  // namespace tessary::test
