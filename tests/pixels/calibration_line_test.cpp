#include "PixelTest.h"

namespace tessary::test {
namespace {

// Two thirds of 640 are 426, centred: from 107 to 533.
constexpr ImagePoint kLeft{107, 240};
constexpr ImagePoint kRight{533, 240};

class CalibrationLinePixels : public PixelTest {
 protected:
  void SetUp() override {
    PixelTest::SetUp();
    // Hidden meanwhile.
    view.changeScale(kScaleCrosshair);
    draw(kOprLine, {{100, 100}, {300, 150}});
    view.startCalibration();
  }
};

TEST_F(CalibrationLinePixels, ReplacesReticleAndShapes) {
  EXPECT_TRUE(picture("calibration-line"));
  view.stopCalibration();
  EXPECT_TRUE(picture("calibration-line-gone"));
}

TEST_F(CalibrationLinePixels, HasLargerArrowsAtTheHandleUnderTheMouse) {
  moveTo(kLeft);
  EXPECT_TRUE(picture("calibration-line-left-hovered"));
  moveTo(kRight);
  EXPECT_TRUE(picture("calibration-line-right-hovered"));
  moveTo(kAside);
  EXPECT_TRUE(picture("calibration-line"));
}

TEST_F(CalibrationLinePixels, FollowsItsHandles) {
  stroke({kLeft, {120, 250}});
  stroke({kRight, {520, 230}});
  moveTo(kAside);
  EXPECT_TRUE(picture("calibration-line-dragged"));
  EXPECT_EQ(view.calibrationLineLen(), 400);
}

}  // namespace
}  // namespace tessary::test
