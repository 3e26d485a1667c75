#include <gmock/gmock.h>

#include "MeasureFixture.h"
#include "measure/MeasurementRows.h"

namespace tessary::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A row as one text: its kind, then its cells.
std::string textOf(const MeasurementTable::Row& row) {
  std::string text = row.kind;
  for (const MeasurementTable::Value& value : row.values)
    text += "|" + value.number + "|" + value.unit;
  if (!row.text.empty()) text += "|" + row.text;
  return text;
}

std::vector<std::string> rowsOf(const Desk& desk) {
  std::vector<std::string> texts;
  for (const auto& row : measurementRows(desk.shapes, desk.tool, desk.overlay.context.calibration))
    texts.push_back(textOf(row));
  return texts;
}

/// One shape of each kind.
void drawAll(Desk& desk) {
  desk.draw(kOprLine, {100, 20}, {200, 20});
  desk.draw(kOprLine2, {100, 100}, {200, 100}, {150, 160});
  desk.draw(kOprCircle, {300, 300}, {340, 300});
  desk.draw(kOprRect, {400, 100}, {460, 140});
  desk.draw(kOprAngle, {100, 300}, {200, 300}, {100, 250});
  desk.draw(kOprPencil, {500, 300}, {520, 330});
  desk.shapes.setInputText("grain");
}

TEST(MeasurementRows, AreThoseOfTheShapesInTheirOrderInTheUnitInForce) {
  Desk desk;
  desk.overlay.setCalibration(10.0F, kUnitMicrometre);
  drawAll(desk);
  EXPECT_THAT(rowsOf(desk), ElementsAre("Line|10.000|\u03BCm", "Parallel Lines|6.000|\u03BCm",
                                        "Circle|4.000|\u03BCm|25.133|\u03BCm|502.655|\u03BCm^2",
                                        "Rectangle|6.000|\u03BCm|4.000|\u03BCm|24.000|\u03BCm^2",
                                        "Angle|90.000|\u00B0", "Text|grain"))
      << "a circle's area as its label has it; nothing of the pencil";
}

TEST(MeasurementRows, AreInPixelsWithoutACalibration) {
  Desk desk;
  drawAll(desk);
  EXPECT_THAT(rowsOf(desk), ElementsAre("Line|100.000|px", "Parallel Lines|60.000|px",
                                        "Circle|40.000|px|251.327|px|5026.548|px^2",
                                        "Rectangle|60.000|px|40.000|px|2400.000|px^2",
                                        "Angle|90.000|\u00B0", "Text|grain"));
  EXPECT_THAT(desk.labelsOf(kOprLine, {1, 2}, {30, 40}), IsEmpty()) << "though no label shows";
}

/// What a label's lines say, put together again from the row's cells.
std::vector<std::string> labelsOfRow(const MeasurementTable::Row& row) {
  const auto text = [&](size_t i) { return row.values[i].number + row.values[i].unit; };
  if (row.kind == "Circle") return {"R:" + text(0), "C:" + text(1), "S:" + text(2)};
  if (row.kind == "Rectangle") return {row.values[0].number + "x" + text(1), "S:" + text(2)};
  return {text(0)};
}

TEST(MeasurementRows, SayWhatTheLabelsSay) {
  const struct {
    int32_t type;
    ImagePoint pt1, pt2, pt3;
  } shapes[] = {
      {kOprLine, {17, 31}, {411, 203}, {-1, -1}},   {kOprLine2, {17, 31}, {411, 203}, {77, 301}},
      {kOprLine2, {411, 203}, {17, 31}, {77, 301}}, {kOprCircle, {317, 231}, {411, 203}, {-1, -1}},
      {kOprRect, {411, 203}, {17, 31}, {-1, -1}},   {kOprAngle, {17, 31}, {411, 203}, {77, 301}}};
  for (const float pixelsPerUnit : {0.4F, 33.3F, 853.7F}) {
    for (const auto& shape : shapes) {
      SCOPED_TRACE(shape.type);
      Desk desk;
      desk.overlay.setCalibration(pixelsPerUnit, kUnitMillimetre);
      const auto labels = desk.labelsOf(shape.type, shape.pt1, shape.pt2, shape.pt3);
      const auto rows = measurementRows(desk.shapes, desk.tool, desk.overlay.context.calibration);
      ASSERT_EQ(rows.size(), 1U);
      EXPECT_EQ(labelsOfRow(rows[0]), labels);
    }
  }
}

TEST(MeasurementRows, LeaveOutWhatShowsNoLabelYet) {
  Desk desk;
  for (const int32_t tool : {kOprLine2, kOprAngle}) {
    desk.overlay.changeOperation(tool);
    desk.press({100, 100});
    desk.drag({200, 100});
    EXPECT_THAT(rowsOf(desk), IsEmpty()) << "the stroke";
    desk.release({200, 100});
    desk.move({150, 160});
    EXPECT_EQ(rowsOf(desk).size(), 1U) << "the third point moves";
    desk.click({150, 160});
    desk.shapes.removeAllShapes();
  }
  desk.overlay.changeOperation(kOprCircle);
  desk.press({100, 100});
  desk.drag({150, 100});
  EXPECT_THAT(rowsOf(desk), ElementsAre("Circle|50.000|px|314.159|px|7853.981|px^2"))
      << "its label grows with it";
  desk.release({150, 100});
  desk.shapes.removeAllShapes();
  for (const int32_t type : {kOprCircle, kOprRect, kOprAngle})
    desk.labelsOf(type, {50, 60}, {50, 60}, {80, 90});
  desk.labelsOf(kOprAngle, {50, 60}, {80, 90}, {80, 90});
  EXPECT_THAT(rowsOf(desk), IsEmpty()) << "without an extent";
}

}  // namespace
}  // namespace tessary::test
