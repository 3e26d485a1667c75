#include "settings/CalibrationText.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tessary {
namespace {

constexpr const char* kEmptyRecord = ",0,0,0.000000,0,0;";

std::string times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

CalibrationRecord lens() { return {"lens", 0, 853, 0.5, 47187200, 20250115, 1706.0}; }

/// Slots in use from the front; that no other is in use.
size_t filled(const CalibrationSlots& slots) {
  size_t count = 0;
  while (count < slots.size() && slots[count] != CalibrationRecord{}) ++count;
  for (size_t i = count; i < slots.size(); ++i) EXPECT_EQ(slots[i], CalibrationRecord{}) << i;
  return count;
}

TEST(CalibrationRecord, ANewOneIsAnEmptySlot) {
  const CalibrationRecord slot;
  EXPECT_EQ(slot.name, "");
  EXPECT_EQ(slot.unit, 0);
  EXPECT_EQ(slot.pixels, 0);
  EXPECT_EQ(slot.length, 0.0);
  EXPECT_EQ(slot.resolution, 0);
  EXPECT_EQ(slot.date, 0);
  EXPECT_EQ(slot.ppu, -1.0);
}

TEST(CalibrationText, EmptySlotsAreWrittenToo) {
  EXPECT_EQ(textOfCalibrations({}), times(10, kEmptyRecord));
}

TEST(CalibrationText, ARecordIsWrittenFieldByField) {
  CalibrationSlots slots;
  slots[0] = lens();
  EXPECT_EQ(textOfCalibrations(slots),
            "lens,0,853,0.500000,47187200,20250115;" + times(9, kEmptyRecord));
}

TEST(CalibrationText, LengthsAreWrittenWithSixDecimals) {
  struct Row {
    double length;
    const char* text;
  };
  const Row rows[] = {
      {1.0 / 3.0, "0.333333"},
      {0.0000005001, "0.000001"},
      {0.0000004, "0.000000"},
      {12345.6789, "12345.678900"},
      {-1.5, "-1.500000"},
      {std::numeric_limits<double>::infinity(), "inf"},
      {std::numeric_limits<double>::quiet_NaN(), "nan"},
  };
  for (const Row& row : rows) {
    CalibrationSlots slots;
    slots[0].length = row.length;
    EXPECT_EQ(textOfCalibrations(slots),
              std::string(",0,0,") + row.text + ",0,0;" + times(9, kEmptyRecord));
  }
}

TEST(CalibrationText, EveryLengthCanBeWrittenAndReadAgain) {
  for (const double length :
       {1e300, std::numeric_limits<double>::max(), 1e-300, std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()}) {
    CalibrationSlots slots;
    slots[0] = lens();
    slots[0].length = length;
    slots[9] = lens();
    const CalibrationSlots read = calibrationsOfText(textOfCalibrations(slots));
    EXPECT_EQ(read[0].name, "lens");
    EXPECT_EQ(read[0].length, length > 1.0 && std::isfinite(length) ? length : 0.0);
    EXPECT_EQ(read[9], lens());
  }
}

TEST(CalibrationText, NoTextEmptiesAllSlots) { EXPECT_EQ(filled(calibrationsOfText("")), 0U); }

TEST(CalibrationText, TenRecordsComeBackAsTheyWere) {
  CalibrationSlots slots;
  for (int i = 0; i < 10; ++i) {
    auto& slot = slots[size_t(i)];
    slot = {"x" + std::to_string(i), i % 2, 100 + i, 0.25 * (i + 1), 47187200, 20250101 + i, 0.0};
    slot.ppu = slot.pixels / slot.length;
  }
  const std::string text = textOfCalibrations(slots);
  EXPECT_EQ(calibrationsOfText(text), slots);
  EXPECT_EQ(textOfCalibrations(calibrationsOfText(text)), text);
}

TEST(CalibrationText, ReadingStopsAtTheFirstRecordWithoutSixFields) {
  const std::string good = "lens,0,853,0.5,47187200,20250115;";
  struct Row {
    std::string text;
    size_t slots;
  };
  const Row rows[] = {
      {good, 1},
      {"lens,0,853,0.5,47187200,20250115", 1},  // the last ";" is not needed
      {times(4, good), 4},
      {times(2, good) + "bad;" + times(5, good), 2},
      {times(2, good) + ";" + times(5, good), 2},
      {times(2, good) + "a,b,0,853,0.5,47187200,20250115;" + good, 2},
      {times(2, good) + "0,853,0.5,47187200,20250115;" + good, 2},
      {times(10, good), 10},
      {times(11, good), 10},
      {times(1000, good), 10},
      {times(10, good) + "bad", 10},
      {";" + good, 0},
      {"junk", 0},
      {",,,,", 0},
  };
  for (const Row& row : rows)
    EXPECT_EQ(filled(calibrationsOfText(row.text)), row.slots) << row.text;
}

TEST(CalibrationText, ARecordOfSixFieldsKeepsWhateverTheyReadAs) {
  struct Row {
    const char* text;
    CalibrationRecord slot;
  };
  constexpr int32_t high = std::numeric_limits<int32_t>::max();
  constexpr int32_t low = std::numeric_limits<int32_t>::min();
  const Row rows[] = {
      {"lens,0,853,0.500000,47187200,20250115;", lens()},
      {"n,1,10,4,5,6;", {"n", 1, 10, 4.0, 5, 6, 2.5}},
      {"n,7,10,4,-5,-6;", {"n", 7, 10, 4.0, -5, -6, 2.5}},
      {"n,0,0,0.5,5,6;", {"n", 0, 0, 0.5, 5, 6, -1.0}},
      {"n,0,10,0,5,6;", {"n", 0, 10, 0.0, 5, 6, -1.0}},
      {"n,0,10,0.000000,5,6;", {"n", 0, 10, 0.0, 5, 6, -1.0}},
      {"n,0,-10,0.5,5,6;", {"n", 0, -10, 0.5, 5, 6, -1.0}},
      {"n,0,10,-0.5,5,6;", {"n", 0, 10, -0.5, 5, 6, -1.0}},
      {"n,0,x,0.5,5,6;", {"n", 0, 0, 0.5, 5, 6, -1.0}},
      {"n,0,10,x,5,6;", {"n", 0, 10, 0.0, 5, 6, -1.0}},
      {"n,0,10,inf,5,6;", {"n", 0, 10, 0.0, 5, 6, -1.0}},
      {"n,0,10,nan,5,6;", {"n", 0, 10, 0.0, 5, 6, -1.0}},
      {"n, 1, 10, 4, 5, 6;", {"n", 1, 10, 4.0, 5, 6, 2.5}},
      {"n,1.9,10mm,4mm,5 ,6?;", {"n", 1, 10, 4.0, 5, 6, 2.5}},
      {"n,99999999999,99999999999,1,-99999999999,6;", {"n", high, high, 1.0, low, 6, double(high)}},
      {" a b ,0,0,0,0,0;", {" a b ", 0, 0, 0.0, 0, 0, -1.0}},
      {",,,,,;", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(calibrationsOfText(row.text)[0], row.slot) << row.text;
}

TEST(CalibrationText, TheRatioIsComputedAnewFromTheRoundedLength) {
  CalibrationSlots slots;
  slots[0] = {"third", 0, 100, 1.0 / 3.0, 0, 0, 300.0};
  EXPECT_EQ(calibrationsOfText(textOfCalibrations(slots))[0].ppu, 100 / 0.333333);
}

TEST(CalibrationText, AVeryShortLengthLosesItsCalibrationAndKeepsNameAndDate) {
  CalibrationSlots slots;
  slots[0] = {"tiny", 1, 100, 0.0000004, 47187200, 20250115, 100 / 0.0000004};
  EXPECT_EQ(calibrationsOfText(textOfCalibrations(slots))[0],
            (CalibrationRecord{"tiny", 1, 100, 0.0, 47187200, 20250115, -1.0}));
}

TEST(CalibrationText, ASeparatorInANameCostsItsSlotAndAllAfterIt) {
  for (const char* name : {"a,b", "a;b", ",", ";"}) {
    CalibrationSlots slots;
    slots.fill(lens());
    slots[4].name = name;
    EXPECT_EQ(filled(calibrationsOfText(textOfCalibrations(slots))), 4U) << name;
  }
}

TEST(CalibrationText, RandomTextNeverFails) {
  std::mt19937 random(1);
  const std::string_view likely = ",,,,,;;0123456789.-+eE \n";
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 200, '\0');
    for (char& c : text) c = random() % 8 ? likely[random() % likely.size()] : char(random() % 256);
    const CalibrationSlots once = calibrationsOfText(text);
    const CalibrationSlots twice = calibrationsOfText(textOfCalibrations(once));
    for (size_t i = 0; i < once.size(); ++i) {
      ASSERT_EQ(once[i].name, twice[i].name);
      ASSERT_EQ(once[i].pixels, twice[i].pixels);
      ASSERT_TRUE(once[i].ppu == -1.0 || (once[i].pixels > 0 && once[i].length > 0.0));
    }
  }
}

}  // namespace
}  // namespace tessary
