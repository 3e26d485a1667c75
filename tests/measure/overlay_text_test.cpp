#include <utility>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "MeasureFixture.h"
#include "measure/OverlayText.h"

namespace tessary::test {
namespace {

TEST(ShapeText, TellsKindAndTheValuesOfTheLabel) {
  const struct {
    int32_t type;
    ImagePoint pt1, pt2, pt3;
    const char* uncalibrated;
    const char* calibrated;  // at 10 pixels per mm
  } table[] = {
      {kOprLine, {10, 10}, {40, 50}, {}, "Line, 50.000px", "Line, 5.000mm"},
      {kOprLine, {10, 10}, {10, 10}, {}, "Line, 0.000px", "Line, 0.000mm"},
      {kOprLine2,
       {10, 10},
       {90, 10},
       {50, 35},
       "Parallel Lines, 25.000px",
       "Parallel Lines, 2.500mm"},
      {kOprCircle,
       {100, 100},
       {110, 100},
       {},
       "Circle, radius 10.000px, circumference 62.832px, area 314.159px^2",
       "Circle, radius 1.000mm, circumference 6.283mm, area 31.416mm^2"},
      {kOprCircle, {9, 9}, {9, 9}, {}, "Circle, no size", "Circle, no size"},
      {kOprRect,
       {10, 10},
       {40, 30},
       {},
       "Rectangle, width 30.000px, height 20.000px, area 600.000px^2",
       "Rectangle, width 3.000mm, height 2.000mm, area 6.000mm^2"},
      {kOprRect, {9, 9}, {9, 9}, {}, "Rectangle, no size", "Rectangle, no size"},
      {kOprAngle, {10, 10}, {50, 10}, {10, 50}, "Angle, 90.000\u00B0", "Angle, 90.000\u00B0"},
      {kOprAngle, {9, 9}, {9, 9}, {1, 1}, "Angle, no size", "Angle, no size"},
      {kOprAngle, {9, 9}, {20, 9}, {20, 9}, "Angle, no size", "Angle, no size"},
      {kOprPencil, {9, 9}, {20, 9}, {}, "Pencil", "Pencil"},
  };
  Calibration calibrated;
  calibrated.setCalibration(10.0f, kUnitMillimetre);
  for (const auto& row : table) {
    SHAPE shape;
    shape.type = row.type;
    shape.pt1 = row.pt1;
    shape.pt2 = row.pt2;
    shape.pt3 = row.pt3;
    EXPECT_EQ(shapeText(shape, Calibration{}), row.uncalibrated);
    EXPECT_EQ(shapeText(shape, calibrated), row.calibrated);
  }
}

TEST(OverlayText, TellsToolReticleCalibrationAndTheSelectedShape) {
  Desk desk;
  EXPECT_EQ(overlayText(desk.overlay),
            "Tool: None. Reticle: None. Calibration: None. Selected: None.");
  desk.overlay.setCalibration(10.0f, kUnitMicrometre);
  desk.overlay.changeScale(kScaleGrid);
  desk.draw(kOprLine, {100, 100}, {150, 100});
  desk.shapes.setInputText("a cell");
  desk.overlay.changeOperation(kOprAngle);
  EXPECT_EQ(overlayText(desk.overlay),
            "Tool: Angle. Reticle: Grid. Calibration: 10.00 pixels per \u03BCm. Selected: None.");
  desk.overlay.changeOperation(kOprDrag);
  desk.click({100, 100});
  EXPECT_EQ(overlayText(desk.overlay),
            "Tool: None. Reticle: Grid. Calibration: 10.00 pixels per \u03BCm. "
            "Selected: Line, 5.000\u03BCm.");
  desk.tool._iSelectedShape = 1;
  EXPECT_EQ(overlayText(desk.overlay),
            "Tool: None. Reticle: Grid. Calibration: 10.00 pixels per \u03BCm. "
            "Selected: Text, a cell.");
  desk.shapes.removeAllShapes();
  desk.stopPreview();
  EXPECT_EQ(overlayText(desk.overlay),
            "Tool: None. Reticle: Grid. Calibration: None. Selected: None.");
}

TEST(OverlayText, NamesEveryToolAndReticle) {
  Desk desk;
  const std::pair<int32_t, const char*> tools[] = {
      {kOprDrag, "None"},
      {kOprLine, "Line"},
      {kOprLine2, "Parallel Lines"},
      {kOprCircle, "Circle"},
      {kOprRect, "Rectangle"},
      {kOprAngle, "Angle"},
      {kOprPencil, "Pencil"},
      {kOprCalibrationLeft, "Calibration Line"},
      {kOprCalibrationRight, "Calibration Line"},
  };
  for (const auto& [tool, name] : tools) {
    desk.tool._opr1 = tool;
    EXPECT_THAT(overlayText(desk.overlay), ::testing::StartsWith(fmt::format("Tool: {}.", name)));
  }
  const std::pair<int32_t, const char*> reticles[] = {{kScaleNone, "None"},
                                                      {kScaleCrosshair, "Crosshair"},
                                                      {kScaleGrid, "Grid"},
                                                      {kScaleConcentric, "Concentric"}};
  for (const auto& [reticle, name] : reticles) {
    desk.overlay.changeScale(reticle);
    EXPECT_THAT(overlayText(desk.overlay),
                ::testing::HasSubstr(fmt::format(" Reticle: {}.", name)));
  }
}

}  // namespace
}  // namespace tessary::test
