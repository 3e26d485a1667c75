#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

TEST(OverlayRedraw, PutsTheReticleFirstAndThenEachShape) {
  for (const int32_t scaleType :
       {kScaleNone, kScaleCrosshair, kScaleGrid, kScaleConcentric, 4, -1}) {
    SCOPED_TRACE(scaleType);
    Desk desk;
    desk.overlay.setCalibration(100.0f, kUnitMillimetre);
    desk.overlay.changeScale(scaleType);
    const FrontRun front = frontRun(desk);
    const bool isReticle = scaleType >= kScaleCrosshair && scaleType <= kScaleConcentric;
    EXPECT_EQ(!front.lines.empty(), isReticle);
    EXPECT_EQ(!front.points.empty(), isReticle);
    for (int32_t type = kOprLine; type <= kOprPencil; ++type) {
      desk.labelsOf(type, {100, 100}, {200, 180}, {150, 50});
    }
    desk.shapes.setInputText("note");
    desk.overlay.redrawLinesAndPoints();
    expectRuns(desk, front);
  }
}

TEST(OverlayRedraw, EachReticleIsTheOneThatWasChosen) {
  const std::pair<int32_t, void (Scale::*)()> table[] = {
      {kScaleCrosshair, &Scale::drawCrosshair},
      {kScaleGrid, &Scale::drawGrid},
      {kScaleConcentric, &Scale::drawConcentric}};
  for (const auto& [scaleType, draw] : table) {
    Desk desk;
    desk.overlay.changeScale(scaleType);
    const FrontRun redrawn = frontRun(desk);
    desk.totalLines.count = 0;
    desk.totalPoints.count = 0;
    (desk.overlay.scale.*draw)();
    ASSERT_EQ(desk.totalLines.count, static_cast<int32_t>(redrawn.lines.size()));
    ASSERT_EQ(desk.totalPoints.count, static_cast<int32_t>(redrawn.points.size()));
    EXPECT_TRUE(sameBits(desk.totalLines.data, redrawn.lines.data(), desk.totalLines.count));
    EXPECT_TRUE(sameBits(desk.totalPoints.data, redrawn.points.data(), desk.totalPoints.count));
  }
}

TEST(OverlayRedraw, TheCalibrationLineReplacesReticleAndShapes) {
  Desk desk;
  desk.overlay.setCalibration(100.0f, kUnitMillimetre);
  desk.overlay.changeScale(kScaleGrid);
  desk.labelsOf(kOprCircle, {100, 100}, {200, 180});
  desk.overlay.startCalibration();
  EXPECT_EQ(desk.totalLines.count, 2 * (4 + 4 * 3));
  EXPECT_EQ(desk.totalPoints.count, 0);
  EXPECT_EQ(desk.shapes.shapeCount(), 1);
  // Rebuilt as often as the mouse moves, and never with shapes.
  desk.move({1, 1});
  EXPECT_EQ(desk.totalLines.count, 2 * (4 + 4 * 3));
  desk.overlay.stopCalibration();
  EXPECT_GT(desk.totalPoints.count, 0);
  expectRuns(desk);
}

TEST(OverlayRedraw, ARebuildOfAnIdleOverlayChangesNothing) {
  Desk desk;
  desk.overlay.setCalibration(10.0f, kUnitMillimetre);
  desk.overlay.changeScale(kScaleCrosshair);
  const FrontRun front = frontRun(desk);
  desk.draw(kOprLine, {50, 50}, {90, 70});
  desk.draw(kOprLine2, {150, 50}, {190, 70}, {160, 100});
  desk.draw(kOprCircle, {250, 150}, {290, 170});
  desk.draw(kOprRect, {50, 150}, {90, 170});
  desk.draw(kOprAngle, {150, 150}, {190, 170}, {160, 200});
  desk.draw(kOprPencil, {250, 250}, {290, 270});
  desk.press({50, 50});
  desk.drag({60, 40});
  desk.release({60, 40});
  desk.move({150, 150});
  const std::vector lines(desk.totalLines.data, desk.totalLines.data + desk.totalLines.count);
  const std::vector points(desk.totalPoints.data, desk.totalPoints.data + desk.totalPoints.count);
  desk.overlay.redrawLinesAndPoints();
  ASSERT_EQ(desk.totalLines.count, static_cast<int32_t>(lines.size()));
  ASSERT_EQ(desk.totalPoints.count, static_cast<int32_t>(points.size()));
  EXPECT_TRUE(sameBits(desk.totalLines.data, lines.data(), desk.totalLines.count));
  EXPECT_TRUE(sameBits(desk.totalPoints.data, points.data(), desk.totalPoints.count));
  expectRuns(desk, front);
}

TEST(OverlayRedraw, ColoursAndTextSizeOfThePreferencesTakeEffect) {
  Desk desk;
  desk.overlay.setCalibration(10.0f, kUnitMillimetre);
  desk.labelsOf(kOprLine, {100, 100}, {200, 180});
  desk.preferences.lineColor = {0.125, 0, 0, 1};
  desk.preferences.textColor = {1, 1, 1, 1};
  desk.overlay.redrawLinesAndPoints();
  EXPECT_EQ(desk.totalLines.data[0].color[0], 0.125f);
  EXPECT_EQ(desk.totalPoints.data[0].color[0], 255 / 256.0f);
}

}  // namespace
}  // namespace tessary::test
