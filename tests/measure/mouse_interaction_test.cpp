#include <type_traits>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Points of the view and of the screen can't be mixed up.
using Press = decltype(&MouseInteraction::mouseDown);
static_assert(std::is_invocable_v<Press, MouseInteraction, ViewPoint, ScreenPoint>);
static_assert(!std::is_invocable_v<Press, MouseInteraction, ScreenPoint, ViewPoint>);
static_assert(!std::is_invocable_v<Press, MouseInteraction, ImagePoint, ScreenPoint>);
using NewShape = decltype(&ShapeList::newShape);
static_assert(std::is_invocable_v<NewShape, ShapeList, ImagePoint>);
static_assert(!std::is_invocable_v<NewShape, ShapeList, ViewPoint>);

/// `_opr1`, `_opr2`, `_iDrawingShape`, number of shapes, `_iSelectedShape`, `_iHoverShape`.
using State = std::vector<int32_t>;
State stateOf(const Desk& desk) {
  const ToolState& t = desk.tool;
  return {t._opr1,           t._opr2,       t._iDrawingShape, desk.shapes.shapeCount(),
          t._iSelectedShape, t._iHoverShape};
}

TEST(MouseInteraction, ARestingMouseDoesNothingInAnEmptyPicture) {
  Desk desk;
  desk.move({10, 10});
  desk.click({10, 10});
  desk.mouse.rightMouseDown();
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 0, -1, -1}));
  EXPECT_EQ(desk.totalLines.count, 0);
}

TEST(MouseInteraction, DrawsShapesOfTwoPoints) {
  for (const int32_t op : {kOprLine, kOprCircle, kOprRect}) {
    SCOPED_TRACE(op);
    Desk desk;
    desk.overlay.changeOperation(op);
    EXPECT_EQ(stateOf(desk), (State{op, 0, -1, 0, -1, -1}));
    desk.move({50, 50});
    EXPECT_EQ(stateOf(desk), (State{op, 0, -1, 0, -1, -1}));
    desk.press({100, 100});
    EXPECT_EQ(stateOf(desk), (State{op, 0, 0, 1, -1, -1}));
    EXPECT_EQ(desk.totalLines.count, 0);  // nothing is drawn yet
    desk.drag({150, 120});
    EXPECT_EQ(stateOf(desk), (State{op, 0, 0, 1, -1, -1}));
    EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{150, 120}));
    EXPECT_GT(desk.totalLines.count, 0);
    desk.drag({200, 140});
    desk.release({201, 141});
    EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
    const SHAPE& s = desk.shapes.shape(0);
    EXPECT_EQ(s.type, op);
    EXPECT_EQ(s.pt1, (ImagePoint{100, 100}));
    EXPECT_EQ(s.pt2, (ImagePoint{201, 141}));
    EXPECT_EQ(s.pt3, (ImagePoint{-1, -1}));
    EXPECT_EQ(s.hitRects[1], handle({201, 141}));  // redrawn at the release
    expectRuns(desk);
  }
}

TEST(MouseInteraction, AFinishedLineHasShortTicksInPlaceOfLongOnes) {
  Desk desk;
  desk.overlay.changeOperation(kOprLine);
  desk.press({100, 100});
  desk.drag({200, 100});
  expectLines(desk, desk.totalLines,
              {{100, 100, 200, 100}, {100, 62, 100, 138}, {200, 62, 200, 138}});
  desk.release({200, 100});
  expectLines(desk, desk.totalLines,
              {{100, 100, 200, 100}, {100, 82, 100, 118}, {200, 82, 200, 118}});
}

TEST(MouseInteraction, DrawsShapesOfThreePoints) {
  for (const int32_t op : {kOprLine2, kOprAngle}) {
    SCOPED_TRACE(op);
    Desk desk;
    desk.overlay.changeOperation(op);
    desk.press({100, 100});
    EXPECT_EQ(stateOf(desk), (State{op, 0, 0, 1, -1, -1}));
    desk.drag({200, 100});
    EXPECT_EQ(desk.totalLines.count, 2);  // baseline or first arm only
    desk.release({210, 100});
    EXPECT_EQ(stateOf(desk), (State{op, op, 0, 1, -1, -1}));
    EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{210, 100}));
    EXPECT_EQ(desk.totalLines.count, 2);  // not redrawn
    EXPECT_FALSE(desk.mouse._mouseDown);

    desk.move({150, 180});
    EXPECT_EQ(stateOf(desk), (State{op, op, 0, 1, -1, -1}));
    EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{150, 180}));
    EXPECT_GT(desk.totalLines.count, 2);
    const int32_t drawn = desk.totalLines.count;
    const auto hitRects = desk.shapes.shape(0).hitRects;

    desk.press({300, 300});  // placed, and not redrawn: what the last move drew stands
    EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
    EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{300, 300}));
    EXPECT_EQ(desk.totalLines.count, drawn);
    EXPECT_EQ(desk.shapes.shape(0).hitRects, hitRects);
    EXPECT_FALSE(desk.mouse._mouseDown);

    desk.release({300, 300});  // consumed with its press
    EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
    expectRuns(desk);
  }
}

TEST(MouseInteraction, TheAngleIsLabelledLiveInTheThirdPointWait) {
  Desk desk;
  desk.overlay.changeOperation(kOprAngle);
  desk.press({100, 100});
  desk.drag({200, 100});
  EXPECT_THAT(desk.rasterizer.take(), IsEmpty());
  desk.release({200, 100});
  desk.move({100, 200});
  EXPECT_THAT(desk.rasterizer.take(), ElementsAre("90.000\u00B0"));
  desk.move({0, 100});
  EXPECT_THAT(desk.rasterizer.take(), ElementsAre("180.000\u00B0"));
}

TEST(MouseInteraction, TellsTheShapeThatIsFinishedAndNothingElse) {
  Desk desk;
  const auto press = [&](ImagePoint p) {
    return desk.mouse.mouseDown(desk.viewOf(p), desk.screenOf(p));
  };
  const auto release = [&](ImagePoint p) { return desk.mouse.mouseUp(desk.viewOf(p)); };
  int32_t index = 0;
  for (const int32_t op : {kOprLine, kOprCircle, kOprRect, kOprPencil}) {
    desk.overlay.changeOperation(op);
    EXPECT_EQ(press({100, 100}), -1);
    desk.drag({150, 120});
    EXPECT_EQ(release({150, 120}), index++);
  }
  for (const int32_t op : {kOprLine2, kOprAngle}) {
    desk.overlay.changeOperation(op);
    EXPECT_EQ(press({100, 200}), -1);
    desk.drag({150, 220});
    EXPECT_EQ(release({150, 220}), -1) << "a third point is to come";
    desk.move({130, 250});
    EXPECT_EQ(press({130, 250}), index++);
    EXPECT_EQ(release({130, 250}), -1);
  }
  // Selected, moved, let go.
  EXPECT_EQ(press({100, 100}), -1);
  desk.drag({110, 100});
  EXPECT_EQ(release({110, 100}), -1);
  EXPECT_EQ(press({400, 400}), -1);
  EXPECT_EQ(release({400, 400}), -1);
  // What was removed while it was made.
  desk.overlay.changeOperation(kOprAngle);
  press({100, 200});
  release({150, 220});
  desk.shapes.removeAllShapes();
  EXPECT_EQ(press({130, 250}), -1);
}

TEST(MouseInteraction, DrawsStrokesWhoseReleaseIsNotAPoint) {
  Desk desk;
  desk.overlay.changeOperation(kOprPencil);
  desk.press({10, 10});
  ASSERT_EQ(desk.shapes.shape(0).pencilPoints.count, 1);
  desk.drag({20, 10});
  desk.drag({20, 30});
  desk.release({25, 35});
  const SHAPE& s = desk.shapes.shape(0);
  ASSERT_EQ(s.pencilPoints.count, 3);
  EXPECT_EQ(s.pencilPoints.data[2], (ImagePoint{20, 30}));
  EXPECT_EQ(s.pt1, (ImagePoint{10, 10}));
  EXPECT_EQ(s.pt2, (ImagePoint{25, 35}));
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
  expectLines(desk, desk.totalLines, {{10, 10, 20, 10}, {20, 10, 20, 30}});
}

TEST(MouseInteraction, AClickWithATooLeavesAShapeThatOnlyRemoveLastReaches) {
  for (const int32_t op : {kOprCircle, kOprRect, kOprPencil}) {
    Desk desk;
    desk.overlay.changeOperation(op);
    desk.click({100, 100});
    EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
    EXPECT_EQ(desk.totalLines.count, 0);
    desk.move({100, 100});
    desk.click({100, 100});
    EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
    desk.shapes.removeLastShape();
    EXPECT_EQ(desk.shapes.shapeCount(), 0);
  }
}

TEST(MouseInteraction, AClickWithTheAngleToolStaysInvisibleThroughItsThirdPoint) {
  Desk desk;
  desk.overlay.changeOperation(kOprAngle);
  desk.click({100, 100});
  desk.move({150, 150});
  desk.click({150, 150});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
  EXPECT_EQ(desk.totalLines.count, 0);
  desk.click({100, 100});
  EXPECT_EQ(desk.tool._iSelectedShape, -1);
}

TEST(MouseInteraction, SelectsOnAHitAndDeselectsElsewhere) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.draw(kOprLine, {100, 200}, {200, 200});
  desk.press({200, 200});
  EXPECT_EQ(desk.tool._iSelectedShape, 1);
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2 + 48);
  desk.release({200, 200});
  EXPECT_EQ(desk.tool._iSelectedShape, 1);
  desk.click({100, 100});
  EXPECT_EQ(desk.tool._iSelectedShape, 0);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 48);
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2 + 4);
  desk.click({150, 100});  // the middle of a line is no handle
  EXPECT_EQ(desk.tool._iSelectedShape, -1);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 4);
  expectRuns(desk);
}

TEST(MouseInteraction, TheLowEdgesOfAHandleBelongToItAndTheHighOnesDoNot) {
  const std::pair<ImagePoint, int32_t> table[] = {
      {{94, 94}, 0},       {{106, 106}, 0},  {{106.999, 106.999}, 0}, {{93.999, 100}, -1},
      {{100, 93.999}, -1}, {{107, 100}, -1}, {{100, 107}, -1},
  };
  for (const auto& [point, selected] : table) {
    Desk desk;
    desk.draw(kOprLine, {100, 100}, {300, 300});
    desk.press(point);
    EXPECT_EQ(desk.tool._iSelectedShape, selected) << point.x << "," << point.y;
    desk.release(point);
    desk.move(point);
    EXPECT_EQ(desk.tool._iHoverShape, selected) << point.x << "," << point.y;
  }
}

TEST(MouseInteraction, TheOldestShapeWinsAnyOfItsHandles) {
  Desk desk;
  desk.draw(kOprRect, {100, 100}, {200, 200});
  desk.draw(kOprLine, {200, 100}, {300, 300});  // on the rectangle's fourth handle
  desk.move({200, 100});
  EXPECT_EQ(desk.tool._iHoverShape, 0);
  desk.press({200, 100});
  EXPECT_EQ(desk.tool._iSelectedShape, 0);
}

TEST(MouseInteraction, ASelectionEndsAHoverWithoutRedrawingThatShape) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.draw(kOprLine, {100, 200}, {200, 200});
  desk.move({100, 100});
  EXPECT_EQ(desk.tool._iHoverShape, 0);
  desk.press({100, 200});  // without a move in between
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, 1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 16);  // stays on screen
  expectRuns(desk);
  desk.release({100, 200});
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 4);
}

TEST(MouseInteraction, HoversAndHoversNoMore) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.draw(kOprLine, {100, 200}, {200, 200});
  desk.move({100, 100});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, -1, 0}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 16);
  desk.move({100, 200});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, -1, 1}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 4);
  desk.move({1, 1});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2 + 4);
  // A selected shape is hovered too, and looks selected.
  desk.click({100, 100});
  desk.move({100, 100});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, 0, 0}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 48);
  expectRuns(desk);
}

TEST(MouseInteraction, OnlyTheDragToolHovers) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.overlay.changeOperation(kOprCircle);
  desk.move({100, 100});
  EXPECT_EQ(desk.tool._iHoverShape, -1);
}

TEST(MouseInteraction, AnArmedPressDeselectsAndEndsTheHoverWithARedrawOfBoth) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.draw(kOprLine, {100, 200}, {200, 200});
  desk.click({100, 100});
  desk.move({100, 200});
  desk.tool._opr2 = 5;  // left over
  desk.overlay.changeOperation(kOprRect);
  EXPECT_EQ(stateOf(desk), (State{4, 5, -1, 2, 0, 1}));
  const ScreenPoint click = desk.mouse._ptMouseClick;
  desk.press({300, 300});
  EXPECT_EQ(stateOf(desk), (State{4, 0, 2, 3, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 4);
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2 + 4);
  EXPECT_EQ(desk.mouse._ptMouseClick, click);  // not kept by this press
  expectRuns(desk);
}

TEST(MouseInteraction, ADragMovesTheSelectedShapeByWholePixelsInStepWithTheMouse) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  const auto dragBy = [&](double dx, double dy) {
    desk.mouse.mouseDragged({-500, -500}, {5000 + dx, 3000 + dy});
    return desk.shapes.shape(0).pt1;
  };
  desk.mouse.mouseDown({100, 100}, {5000, 3000});
  EXPECT_EQ(dragBy(0.9, 0), (ImagePoint{100, 100}));
  EXPECT_EQ(dragBy(1.8, 0), (ImagePoint{101, 100}));  // the fraction was not lost
  EXPECT_EQ(dragBy(2.7, 0.9), (ImagePoint{102, 100}));
  EXPECT_EQ(dragBy(2.7, 1), (ImagePoint{102, 101}));  // down on the screen is down in the picture
  EXPECT_EQ(dragBy(0, 0), (ImagePoint{100, 100}));
  EXPECT_EQ(dragBy(-50, -300), (ImagePoint{50, -200}));  // beyond the edge
  EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{150, -200}));
  EXPECT_EQ(desk.mouse._ptMoved, (ImagePoint{-50, -300}));
  expectRuns(desk);
  // A new press starts from zero.
  desk.mouse.mouseUp({});
  desk.mouse.mouseDown({50, -200}, {100, 100});
  EXPECT_EQ(desk.mouse._ptMoved, ImagePoint{});
  desk.mouse.mouseDragged({}, {110, 100});
  EXPECT_EQ(desk.shapes.shape(0).pt1, (ImagePoint{60, -200}));
}

TEST(MouseInteraction, ADragThatMovesNothingRedrawsNothing) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.press({100, 100});
  const uint64_t revision = desk.overlay.context.revision;
  desk.drag({100.5, 99.5});
  EXPECT_EQ(desk.overlay.context.revision, revision);
  desk.drag({101, 100});
  EXPECT_GT(desk.overlay.context.revision, revision);
}

TEST(MouseInteraction, ADragBesideAllShapesPansAndTells) {
  Desk desk({640, 480}, {400, 300});  // 240 by 180 overflow, centred at 120, 90
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{120, 90}));
  desk.mouse.mouseDown({1, 1}, {1000, 1000});
  desk.mouse.mouseDragged({1, 1}, {1000.9, 1000.9});  // less than a pixel
  EXPECT_THAT(desk.delegate.locations, IsEmpty());
  desk.mouse.mouseDragged({1, 1}, {1030.9, 979.1});
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{90, 110}));
  desk.mouse.mouseDragged({1, 1}, {0, -3000});  // limited by the picture
  EXPECT_THAT(desk.delegate.locations, ElementsAre(ViewPoint{90, 110}, ViewPoint{240, 180}));
  desk.mouse.mouseUp({1, 1});
  desk.mouse.mouseDown({1, 1}, {50, 50});  // the next one starts here
  desk.mouse.mouseDragged({1, 1}, {60, 50});
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{230, 180}));
}

TEST(MouseInteraction, ADragAfterThePressThatSetAThirdPointPansFromThatPress) {
  Desk desk({640, 480}, {400, 300});
  desk.overlay.changeOperation(kOprAngle);
  desk.press({10, 10});
  desk.drag({50, 10});
  desk.release({50, 10});
  desk.mouse.mouseDown({50, 60}, {500, 500});
  ASSERT_EQ(desk.geometry.viewLocation(), (ViewPoint{120, 90}));
  desk.mouse.mouseDragged({60, 60}, {510, 500});
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{110, 90}));
}

TEST(MouseInteraction, AwayFrom100PercentItOnlyPans) {
  Desk desk({640, 480}, {400, 300});
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.click({100, 100});
  desk.geometry.zoomTo(4);
  const ViewPoint start = desk.geometry.viewLocation();
  desk.press({200, 100});
  EXPECT_TRUE(desk.mouse._mouseDown);
  desk.drag({190, 95});
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{start.x + 10, start.y + 5}));
  desk.release({190, 95});
  EXPECT_FALSE(desk.mouse._mouseDown);
  desk.move({1, 1});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, 0, -1}));
  EXPECT_EQ(desk.shapes.shape(0).pt1, (ImagePoint{100, 100}));

  desk.tool.changeOperation(kOprCircle);  // armed, and then zoomed by the slider
  desk.press({50, 50});
  desk.release({50, 50});
  EXPECT_EQ(stateOf(desk), (State{3, 0, -1, 1, 0, -1}));
}

TEST(MouseInteraction, AReleaseWithoutAnAcceptedPressDoesNothing) {
  Desk desk;
  desk.overlay.changeOperation(kOprLine);
  desk.shapes.newShape({5, 5});
  desk.release({50, 50});
  EXPECT_EQ(stateOf(desk), (State{1, 0, 0, 1, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{-1, -1}));
}

// Odd states. What follows from the rules there is meant to stay.

Desk& inThirdPointWait(Desk& desk, int32_t op) {
  desk.overlay.changeOperation(op);
  desk.press({100, 100});
  desk.drag({200, 100});
  desk.release({200, 100});
  return desk;
}

TEST(MouseInteractionOddStates, APressAwayFrom100PercentLeavesTheWait) {
  Desk desk;
  inThirdPointWait(desk, kOprAngle).geometry.zoomTo(3);
  desk.move({10, 20});
  desk.click({10, 20});
  EXPECT_EQ(stateOf(desk), (State{5, 5, 0, 1, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{-1, -1}));
  desk.geometry.zoomTo(2);
  desk.click({10, 20});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
}

TEST(MouseInteractionOddStates, ATooPickedInTheWaitLeavesTheThirdPointFollowingTheMouse) {
  for (const int32_t waiting : {kOprLine2, kOprAngle}) {
    for (const int32_t picked : {1, 2, 3, 4, 5, 6}) {
      if (picked == waiting) continue;
      SCOPED_TRACE(fmt::format("{} then {}", waiting, picked));
      Desk desk;
      inThirdPointWait(desk, waiting).overlay.changeOperation(picked);
      EXPECT_EQ(stateOf(desk), (State{picked, waiting, 0, 1, -1, -1}));
      desk.move({150, 180});
      EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{150, 180}));
      desk.press({300, 300});  // starts the new tool's shape
      EXPECT_EQ(stateOf(desk), (State{picked, 0, 1, 2, -1, -1}));
      EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{150, 180}));
      expectRuns(desk);
    }
  }
}

TEST(MouseInteractionOddStates, TheSameToolPickedInTheWaitGoesOnWaiting) {
  Desk desk;
  inThirdPointWait(desk, kOprLine2).overlay.changeOperation(kOprLine2);
  desk.press({150, 180});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
}

TEST(MouseInteractionOddStates, TheDragToolPickedInTheWaitLeavesOpr2Set) {
  for (const int32_t picked : {kOprDrag, kOprText}) {
    Desk desk;
    inThirdPointWait(desk, kOprLine2).overlay.changeOperation(picked);
    EXPECT_EQ(stateOf(desk), (State{0, 2, 0, 1, -1, -1}));
    desk.move({150, 180});  // in place of a hover
    EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{150, 180}));
    desk.press({150, 180});  // selects, by the drag tool
    EXPECT_EQ(stateOf(desk), (State{0, 2, 0, 1, 0, -1}));
    desk.drag({160, 180});
    EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{160, 180}));
    desk.release({160, 180});
    EXPECT_EQ(stateOf(desk), (State{0, 2, 0, 1, 0, -1}));
    desk.move({170, 190});  // and goes on
    EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{170, 190}));
    EXPECT_EQ(desk.tool._iHoverShape, -1);
    desk.overlay.changeOperation(kOprLine);
    desk.press({300, 300});
    EXPECT_EQ(stateOf(desk), (State{1, 0, 1, 2, -1, -1}));
    expectRuns(desk);
  }
}

TEST(MouseInteractionOddStates, ATextEnteredInTheWaitTakesItsPlace) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  inThirdPointWait(desk, kOprAngle).shapes.setInputText("note");
  EXPECT_EQ(stateOf(desk), (State{5, 5, 1, 2, -1, -1}));
  desk.move({20, 30});  // goes to the text, which has no use for it
  EXPECT_EQ(desk.shapes.shape(1).pt3, (ImagePoint{20, 30}));
  EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{-1, -1}));
  desk.press({20, 30});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 2, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).type, kOprAngle);
  // The angle was never finished: from its next redraw on it points to (-1, -1).
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).hitRects[2], handle({-1, -1}));
  expectRuns(desk);
}

TEST(MouseInteractionOddStates, ShapesRemovedInTheMiddleOfAConstructionEndItQuietly) {
  Desk desk;
  inThirdPointWait(desk, kOprLine2).shapes.removeAllShapes();
  desk.move({10, 10});
  EXPECT_EQ(stateOf(desk), (State{2, 2, 0, 0, -1, -1}));
  desk.press({10, 10});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 0, -1, -1}));

  desk.overlay.changeOperation(kOprPencil);
  desk.press({10, 10});
  desk.shapes.removeLastShape();
  desk.drag({20, 20});
  EXPECT_EQ(stateOf(desk), (State{6, 0, 0, 0, -1, -1}));
  desk.release({20, 20});
  EXPECT_EQ(stateOf(desk), (State{6, 0, 0, 0, -1, -1}));  // still armed
  EXPECT_EQ(desk.totalLines.count, 0);
}

TEST(MouseInteractionOddStates, AnArmedDragAtAnotherZoomReachesAStaleDrawingShape) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.draw(kOprPencil, {10, 10}, {20, 20});
  for (const int32_t stale : {0, 1}) {
    desk.tool._iDrawingShape = stale;
    desk.tool._opr1 = kOprCircle;
    desk.geometry.zoomTo(4);
    desk.press({50, 60});
    desk.drag({50, 60});
    desk.release({50, 60});
    EXPECT_EQ(desk.shapes.shapeCount(), 2);
  }
  EXPECT_EQ(desk.shapes.shape(0).pt2, (ImagePoint{50, 60}));
  EXPECT_EQ(desk.shapes.shape(1).pencilPoints.count, 3);  // what it is decides, not the tool
  EXPECT_EQ(desk.shapes.shape(1).pt2, (ImagePoint{20, 20}));
  EXPECT_THAT(desk.delegate.locations, IsEmpty());  // and no pan
  expectRuns(desk);
}

TEST(MouseInteractionOddStates, AReleaseWithASelectedShapeDoesNotFinishTheOther) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.overlay.changeOperation(kOprLine);
  desk.press({100, 200});
  desk.drag({200, 200});
  desk.tool._iSelectedShape = 0;  // by another route
  desk.release({210, 200});
  EXPECT_EQ(stateOf(desk), (State{1, 0, 1, 2, 0, -1}));
  EXPECT_EQ(desk.shapes.shape(1).pt2, (ImagePoint{200, 200}));
}

TEST(MouseInteractionOddStates, TheDragToolPickedInTheMiddleOfAStrokeLeavesItHalfMade) {
  Desk desk;
  desk.overlay.changeOperation(kOprLine);
  desk.press({100, 100});
  desk.drag({200, 100});
  desk.overlay.changeOperation(kOprDrag);
  desk.release({200, 100});
  EXPECT_EQ(stateOf(desk), (State{0, 0, 0, 1, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 6);
  desk.click({100, 100});
  EXPECT_EQ(desk.tool._iSelectedShape, 0);
  expectLines(desk, desk.shapes.shape(0).lineVertices,  // still with the ticks of construction
              {{100, 100, 200, 100}, {100, 62, 100, 138}, {200, 62, 200, 138}});
}

// The calibration line. 640 wide in a container of 640: length 426, from 107 to 533.

TEST(MouseInteractionCalibrating, HoversOverItsHandlesAndNothingElse) {
  Desk desk;
  desk.draw(kOprLine, {107, 100}, {200, 100});
  desk.overlay.startCalibration();
  const struct {
    ImagePoint point;
    int32_t left, right;
  } table[] = {{{107, 240}, 1, 0}, {{103, 180}, 1, 0}, {{111.9, 299.9}, 1, 0}, {{112, 240}, 0, 0},
               {{107, 300}, 0, 0}, {{533, 240}, 0, 1}, {{107, 100}, 0, 0}};
  for (const auto& row : table) {
    desk.move(row.point);
    EXPECT_EQ(desk.calibrationLine._showCalibrationLineLeftArrow, row.left);
    EXPECT_EQ(desk.calibrationLine._showCalibrationLineRightArrow, row.right);
    EXPECT_EQ(desk.totalLines.count, 2 * (16 + 6 * (row.left + row.right)));
    EXPECT_EQ(desk.tool._iHoverShape, -1);
  }
  desk.click({107, 100});
  EXPECT_EQ(desk.tool._iSelectedShape, -1);
}

TEST(MouseInteractionCalibrating, DragsItsEnds) {
  Desk desk;
  desk.overlay.startCalibration();
  desk.press({107, 240});
  EXPECT_EQ(desk.tool._opr1, kOprCalibrationLeft);
  desk.drag({137, 20});
  EXPECT_EQ(desk.calibrationLine._calibrationLineLeftPosition, 137);
  EXPECT_EQ(desk.calibrationLine._calibrationLineLen, 396);
  EXPECT_EQ(desk.totalLines.data[0].position[0],
            vertexAt({137, 240}, desk.texture, {}).position[0]);
  desk.drag({-1000, 20});  // outside: stays
  EXPECT_EQ(desk.calibrationLine._calibrationLineLeftPosition, 137);
  desk.release({137, 20});
  EXPECT_EQ(desk.tool._opr1, 0);

  desk.press({533, 240});
  EXPECT_EQ(desk.tool._opr1, kOprCalibrationRight);
  desk.drag({187, 240});
  EXPECT_EQ(desk.calibrationLine.calibrationLineLen(), 50);
  desk.drag({186, 240});  // shorter than 50
  EXPECT_EQ(desk.calibrationLine.calibrationLineLen(), 50);
  desk.release({186, 240});
  EXPECT_THAT(desk.delegate.locations, IsEmpty());
}

TEST(MouseInteractionCalibrating, KeepsItsEndsInTheVisiblePart) {
  Desk desk({1280, 720}, {600, 700});  // scrolled to x 340
  desk.overlay.startCalibration();     // length 400, from 440 to 840
  EXPECT_EQ(desk.geometry.viewLocation().x, 340);
  desk.press({440, 360});
  const std::pair<double, int32_t> lefts[] = {{341, 341}, {340, 341}, {342, 342}};
  for (const auto& [x, left] : lefts) {
    desk.drag({x, 360});
    EXPECT_EQ(desk.calibrationLine._calibrationLineLeftPosition, left) << x;
  }
  desk.release({342, 360});
  desk.press({840, 360});
  const std::pair<double, int32_t> rights[] = {{939, 939}, {940, 939}, {938, 938}};
  for (const auto& [x, right] : rights) {
    desk.drag({x, 360});
    EXPECT_EQ(desk.calibrationLine._calibrationLineRightPosition, right) << x;
  }
}

TEST(MouseInteractionCalibrating, ADragBesideTheHandlesNeitherPansNorMoves) {
  Desk desk({1280, 720}, {600, 700});
  desk.overlay.startCalibration();
  const ViewPoint location = desk.geometry.viewLocation();
  desk.press({600, 100});
  EXPECT_EQ(desk.tool._opr1, 0);
  desk.drag({500, 50});
  desk.release({500, 50});
  EXPECT_EQ(desk.geometry.viewLocation(), location);
  EXPECT_EQ(desk.calibrationLine.calibrationLineLen(), 400);
}

TEST(MouseInteractionCalibrating, AReleaseDropsAnArmedTool) {
  Desk desk;
  desk.overlay.startCalibration();
  desk.overlay.changeOperation(kOprRect);
  desk.press({300, 50});
  EXPECT_EQ(desk.tool._opr1, kOprRect);  // not on a handle: left as it was
  desk.drag({350, 80});
  EXPECT_EQ(desk.shapes.shapeCount(), 0);
  desk.release({350, 80});
  EXPECT_EQ(desk.tool._opr1, 0);
}

TEST(MouseInteractionCalibrating, AwayFrom100PercentItOnlyPans) {
  Desk desk({1280, 720}, {600, 700});
  desk.overlay.startCalibration();
  desk.geometry.zoomTo(3);
  const ViewPoint start = desk.geometry.viewLocation();
  desk.press({440, 360});
  desk.drag({430, 360});
  desk.release({430, 360});
  EXPECT_EQ(desk.tool._opr1, 0);
  EXPECT_EQ(desk.geometry.viewLocation(), (ViewPoint{start.x + 10, start.y}));
  EXPECT_EQ(desk.calibrationLine._calibrationLineLeftPosition, 440);
}

TEST(MouseInteractionCalibrating, AThirdPointIsPlacedBeforeTheLineIsTouched) {
  Desk desk;
  inThirdPointWait(desk, kOprLine2).overlay.startCalibration();
  desk.move({150, 180});  // the line takes the move
  EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{-1, -1}));
  desk.press({107, 240});  // on the left handle
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, -1, -1}));
  EXPECT_EQ(desk.shapes.shape(0).pt3, (ImagePoint{107, 240}));
  desk.release({107, 240});
  desk.overlay.stopCalibration();
  expectRuns(desk);
}

TEST(MouseInteractionCalibrating, AnEndThatWasHeldAsThePictureWentIsLetGoByTheNextPress) {
  Desk desk;
  desk.draw(kOprLine, {100, 100}, {200, 100});
  desk.overlay.startCalibration();
  desk.press({107, 240});
  desk.stopPreview();  // unplugged
  desk.release({107, 240});
  EXPECT_EQ(desk.tool._opr1, kOprCalibrationLeft);
  desk.texture = {640, 480};
  desk.geometry.frameSizeDidChange({640, 480});
  desk.geometry.zoomTo(-1);
  desk.overlay.redrawLinesAndPoints();
  desk.press({100, 100});
  EXPECT_EQ(stateOf(desk), (State{0, 0, -1, 1, 0, -1}));
}

}  // namespace
}  // namespace tessary::test
