#include "PixelTest.h"

namespace tessary::test {
namespace {

class Labels : public PixelTest {
 protected:
  void SetUp() override {
    PixelTest::SetUp();
    view.setCalibration(100.0F, kUnitMillimetre);
  }
};

TEST_F(Labels, StandRightOfAndBelowTheirAnchor) {
  draw(kOprLine, {{100, 100}, {300, 60}});
  draw(kOprRect, {{100, 200}, {300, 400}});
  draw(kOprCircle, {{450, 240}, {450, 140}});
  EXPECT_TRUE(picture("label-places"));
}

TEST_F(Labels, FlipToTheLeftAtTheRightEdge) {
  draw(kOprLine, {{600, 60}, {400, 30}});
  draw(kOprCircle, {{600, 240}, {560, 240}});  // three lines, flush on their right
  draw(kOprRect, {{580, 330}, {620, 360}});    // two lines
  EXPECT_TRUE(picture("label-right-edge"));
}

TEST_F(Labels, FlipUpwardsAtTheBottomEdge) {
  draw(kOprLine, {{60, 460}, {150, 310}});
  draw(kOprCircle, {{260, 440}, {260, 400}});
  draw(kOprRect, {{440, 420}, {540, 470}});
  EXPECT_TRUE(picture("label-bottom-edge"));
}

TEST_F(Labels, FlipBothWaysInTheCorner) {
  draw(kOprCircle, {{620, 465}, {580, 465}});
  EXPECT_TRUE(picture("label-corner"));
}

TEST_F(Labels, OfATextNearTheRightEdgeLeaveTheirBox) {
  view.setInputText("Stoma");
  // From (330, 202) to (600, 202).
  stroke({{340, 210}, {610, 210}});
  EXPECT_TRUE(picture("text-right-edge"));
}

TEST_F(Labels, InMicrometresAndDegrees) {
  view.setCalibration(2.0F, kUnitMicrometre);
  draw(kOprLine, {{60, 80}, {260, 80}});
  draw(kOprCircle, {{120, 240}, {180, 240}});
  draw(kOprAngle, {{380, 360}, {560, 360}, {470, 210}});
  EXPECT_TRUE(picture("label-greek-and-degree"));
}

TEST_F(Labels, FollowTheTextSizeAndTheColours) {
  draw(kOprLine, {{100, 100}, {300, 60}});
  draw(kOprCircle, {{300, 240}, {300, 340}});
  preferences.font.pixelSize = 48;
  preferences.textColor = {1.0, 0.3, 1.0, 1.0};
  preferences.lineColor = {0.4, 1.0, 0.4, 1.0};
  view.preferencesDidChange();
  EXPECT_TRUE(picture("label-large"));
  preferences.font.pixelSize = 12;
  view.preferencesDidChange();
  EXPECT_TRUE(picture("label-small"));
}

TEST_F(Labels, InBlackAreNotThere) {
  preferences.textColor = {0.0, 0.0, 0.0, 1.0};
  view.setInputText("unseen");
  EXPECT_TRUE(picture("frame"));
  moveTo({340, 210});
  EXPECT_TRUE(picture("text-black-hovered"));
}

}  // namespace
}  // namespace tessary::test
