#include <gtest/gtest.h>

#include "base/Number.h"
#include "dialogs/LengthText.h"

namespace tessary {
namespace {

TEST(LengthText, ADecimalCommaBecomesAPoint) {
  struct Row {
    const char* typed;
    const char* text;
    double length;
  };
  constexpr Row kRows[] = {
      {"0,5", "0.5", 0.5}, {"0.5", "0.5", 0.5},    {",25", ".25", 0.25},      {"12,", "12.", 12.0},
      {"2", "2", 2.0},     {"-0,5", "-0.5", -0.5}, {"1,5 mm", "1.5 mm", 1.5}, {"", "", 0.0},
      {"abc", "abc", 0.0}, {",", ".", 0.0}};
  for (const Row& row : kRows) {
    const auto text = lengthText(row.typed);
    ASSERT_TRUE(text) << row.typed;
    EXPECT_EQ(*text, row.text);
    EXPECT_EQ(doubleValue(*text), row.length) << row.typed;
  }
}

TEST(LengthText, TwoSeparatorsAreNotTakenOver) {
  for (const char* typed : {"1,234.5", "1.234,5", "1,2,3", "0..5", "0,,5"})
    EXPECT_FALSE(lengthText(typed)) << typed;
}

}  // namespace
}  // namespace tessary
