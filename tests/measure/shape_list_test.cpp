#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

using ::testing::Each;

TEST(ShapeList, StartsEmptyWithRoomForAHundred) {
  const Desk desk;
  EXPECT_EQ(desk.tool.getCurrOperation(), 0);
  EXPECT_EQ(desk.tool._opr2, 0);
  EXPECT_TRUE(desk.shapes._shapes.empty());
  EXPECT_GE(desk.shapes._shapes.capacity(), 100u);
  EXPECT_EQ(desk.tool._iDrawingShape, -1);
  EXPECT_EQ(desk.tool._iSelectedShape, -1);
  EXPECT_EQ(desk.tool._iHoverShape, -1);
}

TEST(ShapeList, TakesAToolInHandAndLeavesWhatIsHalfMade) {
  const std::pair<int32_t, int32_t> table[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3},   {4, 4},
                                               {5, 5}, {6, 6}, {7, 0}, {51, 51}, {-1, -1}};
  for (const auto& [op, opr1] : table) {
    Desk desk;
    desk.tool._opr2 = 5;
    desk.tool._iDrawingShape = 3;
    desk.tool.changeOperation(op);
    EXPECT_EQ(desk.tool.getCurrOperation(), opr1) << op;
    EXPECT_EQ(desk.tool._opr2, 5);
    EXPECT_EQ(desk.tool._iDrawingShape, 3);
  }
}

TEST(ShapeList, ANewShapeIsEmptyBehindTheOthersAndDrawsNothing) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.overlay.changeScale(kScaleCrosshair);
  const int32_t reticleLines = desk.totalLines.count;
  const int32_t reticlePoints = desk.totalPoints.count;
  ASSERT_GT(reticleLines, 0);
  ASSERT_GT(reticlePoints, 0);

  desk.tool.changeOperation(kOprCircle);
  SHAPE& first = desk.shapes.newShape({10, 20});
  EXPECT_EQ(&first, &desk.shapes.shape(0));
  EXPECT_EQ(desk.tool._iDrawingShape, 0);
  EXPECT_EQ(first.type, kOprCircle);
  EXPECT_EQ(first.pt1, (ImagePoint{10, 20}));
  EXPECT_EQ(first.pt2, (ImagePoint{-1, -1}));
  EXPECT_EQ(first.pt3, (ImagePoint{-1, -1}));
  EXPECT_EQ(first.text, nullptr);
  EXPECT_EQ(first.pencilPoints.data, nullptr);
  EXPECT_EQ(first.lineVertices.data, nullptr);
  EXPECT_EQ(first.pointVertices.data, nullptr);
  EXPECT_EQ(first.lineVertices.pos, reticleLines);
  EXPECT_EQ(first.pointVertices.pos, reticlePoints);
  EXPECT_THAT(first.hitRects, Each(kNoRect));
  EXPECT_EQ(desk.totalLines.count, reticleLines);
  EXPECT_EQ(desk.totalPoints.count, reticlePoints);

  first.pt2 = {50, 20};
  desk.shapes.redrawSelectedShape(0);  // goes to the end of the lists
  EXPECT_EQ(desk.totalLines.count, reticleLines + first.lineVertices.count);
  const SHAPE& second = desk.shapes.newShape({1, 2});
  EXPECT_EQ(desk.tool._iDrawingShape, 1);
  EXPECT_EQ(second.lineVertices.pos, desk.totalLines.count);
  EXPECT_EQ(second.pointVertices.pos, desk.totalPoints.count);
  expectRuns(desk);
}

TEST(ShapeList, HoldsMoreThanItHasRoomFor) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  for (int i = 0; i < 250; ++i) desk.labelsOf(1 + i % 5, {i * 2.0, 5}, {i * 2.0 + 30, 45}, {9, 99});
  EXPECT_EQ(desk.shapes.shapeCount(), 250);
  expectRuns(desk, {});
}

TEST(ShapeList, ARedrawSplicesTheShapeWhereItStands) {
  Desk desk;
  desk.overlay.setCalibration(1.0f, kUnitMillimetre);
  desk.overlay.changeScale(kScaleGrid);
  const FrontRun front = frontRun(desk);
  for (int i = 0; i < 4; ++i) desk.labelsOf(kOprLine, {10.0 * i, 5}, {10.0 * i + 30, 45});
  expectRuns(desk, front);

  const int32_t lines = desk.totalLines.count;
  desk.tool._iSelectedShape = 1;  // ticks become thick frames: more lines
  desk.shapes.redrawSelectedShape(1);
  EXPECT_EQ(desk.totalLines.count, lines - 4 + 48);
  expectRuns(desk, front);

  desk.tool._iSelectedShape = -1;
  desk.shapes.redrawSelectedShape(1);  // and fewer again
  EXPECT_EQ(desk.totalLines.count, lines);
  expectRuns(desk, front);

  const int32_t points = desk.totalPoints.count;
  desk.shapes.shape(0).pt2 = {600, 5};  // only the points grow, by one digit
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.totalLines.count, lines);
  EXPECT_EQ(desk.totalPoints.count, points + 1);
  expectRuns(desk, front);
}

TEST(ShapeList, MovesWholeShapesWithTheirOwnPoints) {
  const ImagePoint p1{100, 110}, p2{120, 130}, p3{140, 150};
  const struct {
    int32_t type;
    bool moves1, moves2, moves3, movesStroke;
  } table[] = {
      {kOprLine, true, true, false, false},   {kOprLine2, true, true, true, false},
      {kOprCircle, true, true, false, false}, {kOprRect, true, true, false, false},
      {kOprAngle, true, true, true, false},   {kOprPencil, false, false, false, true},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.type);
    Desk desk;
    desk.labelsOf(row.type, p1, p2, p3);
    SHAPE& s = desk.shapes.shape(0);
    const ImagePoint stroke[] = {{1.5, 2}, {3, 4}};
    s.pencilPoints.push_back(stroke, 2);
    desk.shapes.moveShape(0, -1000, 7);  // there is no limit at the edge
    const auto expected = [](ImagePoint p, bool moved) {
      return moved ? ImagePoint{p.x - 1000, p.y + 7} : p;
    };
    EXPECT_EQ(s.pt1, expected(p1, row.moves1));
    EXPECT_EQ(s.pt2, expected(p2, row.moves2));
    EXPECT_EQ(s.pt3, expected(p3, row.moves3));
    EXPECT_EQ(s.pencilPoints.data[0], expected(stroke[0], row.movesStroke));
    EXPECT_EQ(s.pencilPoints.data[1], expected(stroke[1], row.movesStroke));
    if (row.type != kOprPencil) {
      EXPECT_EQ(s.hitRects[row.type == kOprLine2 ? 1 : 0].origin.y + 6,
                row.type == kOprLine2 ? 157 : 117);
    }
    expectRuns(desk);  // redrawn
  }
}

TEST(ShapeList, MovesNothingOutOfRange) {
  Desk desk;
  desk.labelsOf(kOprLine, {1, 2}, {3, 4});
  for (const int32_t index : {-1, 1, 2, INT32_MIN, INT32_MAX}) desk.shapes.moveShape(index, 5, 5);
  EXPECT_EQ(desk.shapes.shape(0).pt1, (ImagePoint{1, 2}));
}

struct Row {
  explicit Row(int n) {
    desk.overlay.setCalibration(1.0f, kUnitMillimetre);
    desk.overlay.changeScale(kScaleConcentric);
    front = frontRun(desk);
    for (int i = 0; i < n; ++i) {
      desk.labelsOf(i % 2 ? kOprCircle : kOprLine, {10.0 * i, 5}, {10.0 * i + 30, 45});
    }
  }
  double startOf(int32_t i) const { return desk.shapes.shape(i).pt1.x; }
  Desk desk;
  FrontRun front;
};

TEST(ShapeList, RemovingTheSelectedShapeClosesTheGap) {
  for (int32_t selected = 0; selected < 4; ++selected) {
    Row row(4);
    ToolState& tool = row.desk.tool;
    ShapeList& shapes = row.desk.shapes;
    tool._iSelectedShape = selected;
    shapes.redrawSelectedShape(selected);
    tool._iHoverShape = 2;
    tool._iDrawingShape = 3;
    tool._opr1 = 5;
    tool._opr2 = 5;
    shapes.removeSelectedShape();
    ASSERT_EQ(shapes.shapeCount(), 3);
    for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(row.startOf(i), 10.0 * (i < selected ? i : i + 1));
    EXPECT_EQ(tool._iSelectedShape, -1);
    EXPECT_EQ(tool._iHoverShape, -1);
    EXPECT_EQ(tool._iDrawingShape, 3);
    EXPECT_EQ(tool._opr1, 5);
    EXPECT_EQ(tool._opr2, 5);
    expectRuns(row.desk, row.front);
  }
}

TEST(ShapeList, RemovingTheSelectedShapeNeedsOne) {
  Row row(2);
  for (const int32_t selected : {-1, 2, 100}) {
    row.desk.tool._iSelectedShape = selected;
    row.desk.tool._iHoverShape = 1;
    row.desk.shapes.removeSelectedShape();
    EXPECT_EQ(row.desk.shapes.shapeCount(), 2);
    EXPECT_EQ(row.desk.tool._iSelectedShape, selected);
    EXPECT_EQ(row.desk.tool._iHoverShape, 1);
  }
}

TEST(ShapeList, RemovingTheLastShapeForgetsOnlyItsOwnIndices) {
  const struct {
    int32_t selected, hovered, selectedAfter, hoveredAfter;
  } table[] = {{2, 2, -1, -1}, {2, 1, -1, 1}, {0, 2, 0, -1}, {-1, 0, -1, 0}};
  for (const auto& step : table) {
    Row row(3);
    row.desk.tool._iSelectedShape = step.selected;
    row.desk.tool._iHoverShape = step.hovered;
    row.desk.tool._iDrawingShape = 2;
    row.desk.shapes.removeLastShape();
    EXPECT_EQ(row.desk.shapes.shapeCount(), 2);
    EXPECT_EQ(row.desk.tool._iSelectedShape, step.selectedAfter);
    EXPECT_EQ(row.desk.tool._iHoverShape, step.hoveredAfter);
    EXPECT_EQ(row.desk.tool._iDrawingShape, 2);
    expectRuns(row.desk, row.front);
  }
}

TEST(ShapeList, RemovingAllKeepsTheReticle) {
  Row row(5);
  row.desk.tool._iSelectedShape = 1;
  row.desk.tool._iHoverShape = 2;
  row.desk.tool._iDrawingShape = 3;
  row.desk.shapes.removeAllShapes();
  EXPECT_TRUE(row.desk.shapes._shapes.empty());
  EXPECT_EQ(row.desk.tool._iSelectedShape, -1);
  EXPECT_EQ(row.desk.tool._iHoverShape, -1);
  EXPECT_EQ(row.desk.tool._iDrawingShape, 3);
  EXPECT_FALSE(row.front.lines.empty());
  expectRuns(row.desk, row.front);
}

TEST(ShapeList, RemovingFromAnEmptyListDoesNothing) {
  Row row(0);
  row.desk.tool._iSelectedShape = 4;
  row.desk.tool._iHoverShape = 5;
  row.desk.shapes.removeAllShapes();
  row.desk.shapes.removeLastShape();
  row.desk.shapes.removeSelectedShape();
  row.desk.shapes.redrawDeletingShape(-1);
  EXPECT_EQ(row.desk.tool._iSelectedShape, 4);
  EXPECT_EQ(row.desk.tool._iHoverShape, 5);
  expectRuns(row.desk, row.front);
}

TEST(ShapeList, TakingAShapeOutOfTheListsKeepsItsRecord) {
  Row row(3);
  const int32_t lines = row.desk.totalLines.count;
  const int32_t own = row.desk.shapes.shape(1).lineVertices.count;
  const int32_t behind = row.desk.shapes.shape(2).lineVertices.pos;
  row.desk.shapes.redrawDeletingShape(1);
  EXPECT_EQ(row.desk.shapes.shapeCount(), 3);
  EXPECT_EQ(row.desk.shapes.shape(1).lineVertices.count, own);
  EXPECT_EQ(row.desk.totalLines.count, lines - own);
  EXPECT_EQ(row.desk.shapes.shape(2).lineVertices.pos, behind - own);
}

TEST(ShapeList, AStaleDrawingIndexDrawsTheShapeThatMovedDownAsHalfMade) {
  Desk desk;
  desk.labelsOf(kOprLine, {10, 10}, {50, 10});
  desk.labelsOf(kOprLine, {10, 60}, {50, 60});
  desk.labelsOf(kOprLine2, {10, 90}, {50, 90}, {30, 120});
  desk.tool._iDrawingShape = 1;
  desk.tool._iSelectedShape = 0;
  desk.shapes.removeSelectedShape();
  desk.shapes.redrawSelectedShape(0);
  desk.shapes.redrawSelectedShape(1);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 6);
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2);  // the baseline only
  desk.tool._iDrawingShape = 0;
  desk.shapes.redrawSelectedShape(0);
  expectLines(desk, desk.shapes.shape(0).lineVertices,
              {{10, 60, 50, 60}, {10, 22, 10, 98}, {50, 22, 50, 98}});  // ticks of 38
}

TEST(ShapeList, ATextStartsNearTheMiddleAndStaysTheDrawingShape) {
  Desk desk({1281, 721});
  desk.overlay.changeOperation(kOprRect);
  desk.tool._opr2 = 2;
  std::string text = "note";
  desk.shapes.setInputText(text);
  text[0] = 'v';  // the shape has its own copy
  ASSERT_EQ(desk.shapes.shapeCount(), 1);
  const SHAPE& s = desk.shapes.shape(0);
  EXPECT_EQ(s.type, kOprText);
  EXPECT_EQ(*s.text, "note");
  EXPECT_EQ(s.pt1, (ImagePoint{650, 322}));
  EXPECT_EQ(s.pt3, (ImagePoint{-1, -1}));
  EXPECT_EQ(desk.tool._iDrawingShape, 0);
  EXPECT_EQ(desk.tool._opr1, kOprRect);
  EXPECT_EQ(desk.tool._opr2, 2);
  expectRuns(desk);
}

TEST(ShapeList, AnEmptyTextIsIgnored) {
  Desk desk;
  desk.labelsOf(kOprLine, {1, 2}, {30, 40});
  desk.tool._iDrawingShape = 7;
  desk.tool._iSelectedShape = 0;
  desk.tool._iHoverShape = 0;
  desk.shapes.setInputText("");
  EXPECT_EQ(desk.shapes.shapeCount(), 1);
  EXPECT_EQ(desk.tool._iDrawingShape, 7);
  EXPECT_EQ(desk.tool._iSelectedShape, 0);
  EXPECT_EQ(desk.tool._iHoverShape, 0);
}

TEST(ShapeList, ATextDeselectsWithoutARedraw) {
  Desk desk;
  desk.labelsOf(kOprLine, {100, 100}, {200, 100});
  desk.labelsOf(kOprLine, {100, 200}, {200, 200});
  desk.tool._iSelectedShape = 0;
  desk.tool._iHoverShape = 1;
  desk.shapes.redrawSelectedShape(0);
  desk.shapes.redrawSelectedShape(1);
  desk.shapes.setInputText("note");
  EXPECT_EQ(desk.tool._iSelectedShape, -1);
  EXPECT_EQ(desk.tool._iHoverShape, -1);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 2 + 48);  // handles stay on screen
  EXPECT_EQ(desk.shapes.shape(1).lineVertices.count, 2 + 16);
  expectRuns(desk);
  desk.shapes.redrawSelectedShape(0);
  EXPECT_EQ(desk.shapes.shape(0).lineVertices.count, 6);
}

TEST(ShapeList, LeavesTheTotalListsAloneWhileTheyHoldTheCalibrationLine) {
  using Operation = void (*)(Desk&);
  const std::pair<const char*, Operation> table[] = {
      {"remove the selected", [](Desk& d) { d.shapes.removeSelectedShape(); }},
      {"remove the last", [](Desk& d) { d.shapes.removeLastShape(); }},
      {"remove all", [](Desk& d) { d.shapes.removeAllShapes(); }},
      {"add a text", [](Desk& d) { d.shapes.setInputText("note"); }},
      {"move", [](Desk& d) { d.shapes.moveShape(0, 500, 3); }},
      {"redraw", [](Desk& d) { d.shapes.redrawSelectedShape(2); }},
      {"take out", [](Desk& d) { d.shapes.redrawDeletingShape(1); }},
      {"take all out", [](Desk& d) { d.shapes.redrawDeletingShape(-1); }},
      {"all of it",
       [](Desk& d) {
         d.shapes.setInputText("note");
         d.shapes.removeSelectedShape();
         d.shapes.removeAllShapes();
         d.shapes.setInputText("first again");
         d.shapes.moveShape(0, 1, 1);
       }},
  };
  for (const auto& [name, operation] : table) {
    for (const bool lostPicture : {false, true}) {
      SCOPED_TRACE(name);
      Row row(4);
      Desk& desk = row.desk;
      desk.tool._iSelectedShape = 1;
      desk.shapes.redrawSelectedShape(1);
      desk.overlay.startCalibration();
      if (lostPicture) desk.stopPreview();  // hides the line without a rebuild
      const std::vector lines(desk.totalLines.data, desk.totalLines.data + desk.totalLines.count);
      ASSERT_FALSE(lines.empty());
      operation(desk);
      ASSERT_EQ(desk.totalLines.count, static_cast<int32_t>(lines.size()));
      EXPECT_TRUE(sameBits(desk.totalLines.data, lines.data(), desk.totalLines.count));
      EXPECT_EQ(desk.totalPoints.count, 0);

      if (lostPicture) {
        desk.texture = {640, 480};
        desk.overlay.context.calibration._pixelsPerUnit = 1.0f;
        desk.overlay.redrawLinesAndPoints();
      } else {
        desk.overlay.stopCalibration();
      }
      expectRuns(desk, row.front);  // the rebuild brings everything back, with the changes
    }
  }
}

TEST(ShapeList, SplicesAgainAfterCalibrating) {
  Row row(3);
  row.desk.overlay.startCalibration();
  row.desk.tool._iSelectedShape = 0;
  row.desk.shapes.removeSelectedShape();
  row.desk.overlay.stopCalibration();
  row.desk.tool._iSelectedShape = 0;
  row.desk.shapes.redrawSelectedShape(0);
  expectRuns(row.desk, row.front);
  row.desk.shapes.removeAllShapes();
  expectRuns(row.desk, row.front);
}

TEST(ShapeList, ALostPictureWithoutACalibrationLineLeavesTheListsToTheShapes) {
  Row row(3);
  row.desk.stopPreview();
  row.desk.tool._iSelectedShape = 1;
  row.desk.shapes.removeSelectedShape();
  expectRuns(row.desk, row.front);
  row.desk.shapes.setInputText("note");
  row.desk.shapes.removeAllShapes();
  expectRuns(row.desk, row.front);
}

TEST(ShapeList, AFrameOfAnotherSizeLeavesTheVerticesUntilTheNextRedraw) {
  Row row(2);
  const std::vector before(row.desk.totalLines.data,
                           row.desk.totalLines.data + row.desk.totalLines.count);
  row.desk.texture = {1280, 720};
  row.desk.geometry.frameSizeDidChange({1280, 720});
  EXPECT_TRUE(sameBits(row.desk.totalLines.data, before.data(), row.desk.totalLines.count));
  row.desk.shapes.redrawSelectedShape(0);  // this one alone is in the new grid
  expectLines(row.desk, row.desk.shapes.shape(0).lineVertices,
              {{0, 5, 30, 45}, {-14, 15, 14, -5}, {16, 55, 44, 35}});
  expectRuns(row.desk, row.front);
}

}  // namespace
}  // namespace tessary::test
