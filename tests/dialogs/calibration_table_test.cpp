#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "dialogs/CalibrationTable.h"

namespace tessary {
namespace {

constexpr int32_t resolution(int32_t width, int32_t height) {
  return int32_t(uint32_t(width) + uint32_t(height) * 65536U);
}

TEST(CalibrationTable, HasSixColumnsWithTheNameSecond) {
  constexpr std::string_view kIdentifiers[] = {"ID_",  "NAME", "VALUE",
                                               "UNIT", "DATE", "RESOLUTION"};
  ASSERT_EQ(kCalibrationColumns.size(), std::size(kIdentifiers));
  for (size_t i = 0; i < std::size(kIdentifiers); ++i)
    EXPECT_EQ(kCalibrationColumns[i].identifier, kIdentifiers[i]);
  EXPECT_EQ(kCalibrationColumns[kCalibrationNameColumn].identifier, "NAME");
}

TEST(CalibrationTable, AnEmptySlotShowsItsNumberOnly) {
  for (int32_t row = 0; row < 10; ++row) {
    EXPECT_EQ(calibrationCellText("ID_", row, {}), std::to_string(row + 1));
    for (const char* identifier : {"NAME", "VALUE", "UNIT", "DATE", "RESOLUTION"})
      EXPECT_EQ(calibrationCellText(identifier, row, {}), "") << identifier;
  }
}

TEST(CalibrationTable, ACalibratedSlotShowsEverything) {
  const CalibrationRecord record{.name = "Objective 4x, Öl",
                                 .unit = 0,
                                 .pixels = 800,
                                 .length = 2.0,
                                 .resolution = 47187200,
                                 .date = 20250115,
                                 .ppu = 400.0};
  EXPECT_EQ(calibrationCellText("ID_", 9, record), "10");
  EXPECT_EQ(calibrationCellText("NAME", 9, record), "Objective 4x, Öl");
  EXPECT_EQ(calibrationCellText("VALUE", 9, record), "400.00");
  EXPECT_EQ(calibrationCellText("UNIT", 9, record), "mm");
  EXPECT_EQ(calibrationCellText("DATE", 9, record), "01/15/2025");
  EXPECT_EQ(calibrationCellText("RESOLUTION", 9, record), "1280x720");
}

TEST(CalibrationTable, ValueAndUnitShowOnlyAPositiveValue) {
  struct Row {
    double ppu;
    int32_t unit;
    const char* value;
    const char* unitText;
  };
  const Row kRows[] = {{400.0, 0, "400.00", "mm"},
                       {0.853, 1, "0.85", "μm"},
                       {0.005, 2, "0.01", "μm"},
                       {0.001, -1, "0.00", "μm"},
                       {1234567.891, 0, "1234567.89", "mm"},
                       {std::numeric_limits<double>::denorm_min(), 0, "0.00", "mm"},
                       {0.0, 0, "", ""},
                       {-1.0, 0, "", ""},
                       {-1.0, 1, "", ""},
                       {std::nan(""), 1, "", ""}};
  for (const Row& row : kRows) {
    const CalibrationRecord record{.unit = row.unit, .ppu = row.ppu};
    EXPECT_EQ(calibrationCellText("VALUE", 0, record), row.value) << row.ppu;
    EXPECT_EQ(calibrationCellText("UNIT", 0, record), row.unitText) << row.ppu;
  }
}

TEST(CalibrationTable, DatesBefore2020AreNotShown) {
  struct Row {
    int32_t date;
    const char* text;
  };
  constexpr Row kRows[] = {{20200101, "01/01/2020"}, {20191231, ""},
                           {20261209, "12/09/2026"}, {20250001, ""},
                           {20250100, ""},           {20259999, "99/99/2025"},
                           {99991231, "12/31/9999"}, {0, ""},
                           {-20250115, ""},          {123450607, "06/07/12345"}};
  for (const Row& row : kRows)
    EXPECT_EQ(calibrationCellText("DATE", 0, {.date = row.date}), row.text) << row.date;
}

TEST(CalibrationTable, FramesBelow640x480AreNotShown) {
  struct Row {
    int32_t width;
    int32_t height;
    const char* text;
  };
  constexpr Row kRows[] = {{640, 480, "640x480"},
                           {639, 480, ""},
                           {640, 479, ""},
                           {1920, 1080, "1920x1080"},
                           {0, 1080, ""},
                           {1920, 0, ""},
                           {65535, 65535, "65535x65535"},
                           {640, 40000, "640x40000"}};
  for (const Row& row : kRows)
    EXPECT_EQ(
        calibrationCellText("RESOLUTION", 0, {.resolution = resolution(row.width, row.height)}),
        row.text)
        << row.width << "x" << row.height;
}

TEST(CalibrationTableDeathTest, AnUnknownColumnEndsTheProgram) {
  EXPECT_DEATH(calibrationCellText("WEIGHT", 0, {}), "Unhandled table column identifier WEIGHT");
}

TEST(CalibrationTitle, NamesTheSlotIfItHasAName) {
  CalibrationSlots slots;
  slots[0].name = "lens";
  slots[9].name = "10x; air";
  struct Row {
    int32_t index;
    const char* title;
  };
  constexpr Row kRows[] = {{0, "Calibrate - lens"},
                           {9, "Calibrate - 10x; air"},
                           {1, "Calibrate"},
                           {-1, "Calibrate"},
                           {10, "Calibrate"}};
  for (const Row& row : kRows)
    EXPECT_EQ(calibrationTitle(slots, row.index, "Calibrate"), row.title) << row.index;
}

TEST(CalibrationName, IsWarnedOfTheSignsThatCostTheList) {
  for (const char* name : {"", "4x", "4x. air", "\uFF0C\uFF1B"})
    EXPECT_EQ(calibrationNameWarning(name), "") << name;
  for (const char* name : {",", ";", "4x, air", "4x; air"})
    EXPECT_NE(calibrationNameWarning(name).find("lost at the next launch"), std::string::npos)
        << name;
}

TEST(CalibrationSlotIndex, CoversTenSlots) {
  for (const int32_t index : {0, 5, 9}) EXPECT_TRUE(isCalibrationSlot(index)) << index;
  for (const int32_t index : {-1, 10, 12}) EXPECT_FALSE(isCalibrationSlot(index)) << index;
}

}  // namespace
}  // namespace tessary
