#include <ostream>

#include "PixelTest.h"

namespace tessary::test {
namespace {

/// A kind of shape, and where the mouse takes hold of the one that `points` make.
struct Kind {
  int32_t tool;
  const char* name;
  std::vector<ImagePoint> points;
  ImagePoint handle;
  friend std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.name; }
};

class Shapes : public PixelTest, public ::testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override {
    PixelTest::SetUp();
    view.setCalibration(100.0F, kUnitMillimetre);
  }

  void make() {
    const Kind& kind = GetParam();
    if (kind.tool == kOprText) {  // made whole
      view.setInputText("Diatom, 3rd slide");
      return;
    }
    view.changeOperation(kind.tool);
    const std::vector<ImagePoint>& p = kind.points;
    press(p[0]);
    const size_t strokePoints = hasThirdPoint(kind.tool) ? 2 : p.size();
    for (size_t i = 1; i < strokePoints; ++i) dragTo(p[i]);
    release(p[strokePoints - 1]);
    if (hasThirdPoint(kind.tool)) {
      moveTo(p[2]);
      click(p[2]);
    }
    moveTo(kAside);
  }
  std::string name(const char* state) { return std::string(GetParam().name) + "-" + state; }
};

TEST_P(Shapes, Idle) {
  make();
  EXPECT_TRUE(picture(name("idle")));
}

TEST_P(Shapes, Hovered) {
  make();
  moveTo(GetParam().handle);
  EXPECT_TRUE(picture(name("hovered")));
  moveTo(kAside);
  EXPECT_TRUE(picture(name("idle"))) << "the mouse is elsewhere again";
}

TEST_P(Shapes, Selected) {
  make();
  click(GetParam().handle);
  EXPECT_TRUE(picture(name("selected")));
  moveTo(kAside);
  EXPECT_TRUE(picture(name("selected"))) << "wherever the mouse is";
  click(kAside);
  EXPECT_TRUE(picture(name("idle"))) << "a press elsewhere lets go";
}

class DrawnShapes : public Shapes {};

TEST_P(DrawnShapes, UnderConstruction) {
  const Kind& kind = GetParam();
  view.changeOperation(kind.tool);
  const std::vector<ImagePoint>& p = kind.points;
  press(p[0]);
  EXPECT_TRUE(picture("frame")) << "a press alone draws nothing";
  for (size_t i = 1; i < (hasThirdPoint(kind.tool) ? 2 : p.size()); ++i) dragTo(p[i]);
  EXPECT_TRUE(picture(name("construction")));
  if (!hasThirdPoint(kind.tool)) return;
  release(p[1]);
  EXPECT_TRUE(picture(name("construction"))) << "until the mouse moves";
  moveTo(p[2]);
  EXPECT_TRUE(picture(name("third-point")));
  press(p[2]);
  EXPECT_TRUE(picture(name("third-point"))) << "a press finishes it as it is";
}

TEST_P(Shapes, Deleted) {
  make();
  click(GetParam().handle);
  view.removeSelectedShape();
  EXPECT_TRUE(picture("frame"));
}

const Kind kDrawn[] = {
    {kOprLine, "line", {{150, 320}, {450, 160}}, {450, 160}},
    {kOprLine2, "parallel", {{150, 320}, {450, 160}, {350, 320}}, {350, 320}},
    {kOprCircle, "circle", {{300, 240}, {400, 165}}, {400, 165}},
    {kOprRect, "rectangle", {{200, 330}, {420, 150}}, {420, 150}},
    {kOprAngle, "angle", {{200, 320}, {460, 300}, {380, 130}}, {380, 130}},
    {kOprPencil,
     "pencil",
     {{150, 300},
      {180, 250},
      {225, 235},
      {260, 250},
      {290, 300},
      {335, 315},
      {380, 290},
      {410, 200}},
     {410, 200}},
};
const Kind kText{kOprText, "text", {}, {400, 220}};

std::string nameOf(const ::testing::TestParamInfo<Kind>& tested) { return tested.param.name; }
INSTANTIATE_TEST_SUITE_P(Drawn, Shapes, ::testing::ValuesIn(kDrawn), nameOf);
INSTANTIATE_TEST_SUITE_P(Drawn, DrawnShapes, ::testing::ValuesIn(kDrawn), nameOf);
INSTANTIATE_TEST_SUITE_P(Placed, Shapes, ::testing::Values(kText), nameOf);

using ShapePixels = PixelTest;

TEST_F(ShapePixels, WithoutACalibrationOnlyTheAngleIsLabelled) {
  draw(kOprLine, {{40, 40}, {190, 90}});
  draw(kOprLine2, {{240, 60}, {400, 60}, {330, 120}});
  draw(kOprCircle, {{520, 100}, {580, 100}});
  draw(kOprRect, {{40, 200}, {200, 300}});
  draw(kOprAngle, {{260, 300}, {400, 300}, {335, 195}});
  draw(kOprPencil, {{450, 300}, {500, 210}, {550, 300}, {600, 210}});
  EXPECT_TRUE(picture("uncalibrated"));
}

TEST_F(ShapePixels, LevelAndUprightOnesAreSquareToTheFrame) {
  view.setCalibration(100.0F, kUnitMillimetre);
  draw(kOprLine, {{60, 60}, {260, 60}});
  draw(kOprLine, {{60, 120}, {60, 320}});
  draw(kOprLine2, {{340, 60}, {541, 60}, {400, 120}});  // the parallel is a pixel shorter
  draw(kOprLine2, {{340, 200}, {340, 400}, {440, 280}});
  EXPECT_TRUE(picture("level-and-upright"));
}

TEST_F(ShapePixels, ReachBeyondTheEdges) {
  draw(kOprLine, {{40, 40}, {300, 40}});
  draw(kOprCircle, {{620, 460}, {560, 360}});
  draw(kOprRect, {{500, 60}, {600, 160}});
  stroke({{500, 60}, {560, 0}});  // takes the rectangle to the right and up
  stroke({{40, 40}, {5, 5}});
  click({320, 300});
  moveTo(kAside);
  EXPECT_TRUE(picture("beyond-the-edges"));
}

TEST_F(ShapePixels, LieOverTheReticleNewerOverOlderAndTextsOverLines) {
  view.setCalibration(95.0F, kUnitMillimetre);
  view.changeScale(kScaleGrid);
  draw(kOprRect, {{230, 160}, {400, 300}});
  preferences.lineColor = {1.0, 0.2, 0.9, 1.0};
  draw(kOprLine, {{200, 180}, {300, 320}});
  draw(kOprCircle, {{400, 300}, {400, 360}});
  EXPECT_TRUE(picture("over-the-reticle"));
  for (int i = 0; i < 3; ++i) view.removeLastShape();
  EXPECT_TRUE(picture("reticle-alone"));
}

}  // namespace
}  // namespace tessary::test
