#include "base/Number.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace tessary {
namespace {

constexpr float kFloatMax = std::numeric_limits<float>::max();
constexpr double kDoubleMax = std::numeric_limits<double>::max();

TEST(Number, IntegersAreReadAsFarAsTheyAreDecimal) {
  struct Row {
    const char* text;
    int32_t value;
  };
  constexpr Row rows[] = {
      {"0", 0},
      {"7", 7},
      {"20250115", 20250115},
      {"-3", -3},
      {"+12", 12},
      {"007", 7},
      {" 5", 5},
      {"\t\n\v\f\r 5", 5},
      {"12abc", 12},
      {"1.9", 1},
      {"-1.9", -1},
      {"3 4", 3},
      {"5 ", 5},
      {"1e3", 1},
      {"0x1F", 0},
      {"", 0},
      {" ", 0},
      {"-", 0},
      {"+", 0},
      {"+-5", 0},
      {"--5", 0},
      {"- 5", 0},
      {"abc", 0},
      {",5", 0},
      {"a5", 0},
      {"\xD9\xA3", 0},
      {"\xC2\xA0"
       "5",
       0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(intValue(row.text), row.value) << '"' << row.text << '"';
    EXPECT_EQ(int64Value(row.text), row.value) << '"' << row.text << '"';
  }
}

TEST(Number, IntegersSaturateAtTheEndsOfTheirType) {
  struct Row {
    const char* text;
    int32_t small;
    int64_t large;
  };
  constexpr int32_t low32 = std::numeric_limits<int32_t>::min();
  constexpr int32_t high32 = std::numeric_limits<int32_t>::max();
  constexpr int64_t low64 = std::numeric_limits<int64_t>::min();
  constexpr int64_t high64 = std::numeric_limits<int64_t>::max();
  constexpr Row rows[] = {
      {"2147483646", high32 - 1, 2147483646},     {"2147483647", high32, 2147483647},
      {"2147483648", high32, 2147483648},         {"-2147483647", low32 + 1, -2147483647},
      {"-2147483648", low32, -2147483648},        {"-2147483649", low32, -2147483649},
      {"21474836470", high32, 21474836470},       {"9223372036854775806", high32, high64 - 1},
      {"9223372036854775807", high32, high64},    {"9223372036854775808", high32, high64},
      {"-9223372036854775807", low32, low64 + 1}, {"-9223372036854775808", low32, low64},
      {"-9223372036854775809", low32, low64},     {"99999999999999999999999", high32, high64},
      {"-99999999999999999999999", low32, low64}, {"00000000000000000000000042", 42, 42},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(intValue(row.text), row.small) << row.text;
    EXPECT_EQ(int64Value(row.text), row.large) << row.text;
  }
}

TEST(Number, DecimalNumbersAreReadAsFarAsTheyGo) {
  struct Row {
    const char* text;
    double value;
  };
  constexpr Row rows[] = {
      {"0", 0.0},     {"0.5", 0.5},      {"-0.5", -0.5}, {"+2.25", 2.25},   {".5", 0.5},
      {"-.5", -0.5},  {"5.", 5.0},       {" 1.5", 1.5},  {"1.5mm", 1.5},    {"1.2.3", 1.2},
      {"1e2", 100.0}, {"1E-2", 0.01},    {"1e", 1.0},    {"1e+", 1.0},      {"1.5e-x", 1.5},
      {"0,5", 0.0},   {"1,5", 1.0},      {"0x10", 0.0},  {"", 0.0},         {" ", 0.0},
      {".", 0.0},     {"-", 0.0},        {"-.", 0.0},    {"+-1", 0.0},      {"--1", 0.0},
      {"- 1", 0.0},   {"e5", 0.0},       {".e5", 0.0},   {"inf", 0.0},      {"-inf", 0.0},
      {"nan", 0.0},   {"infinity", 0.0}, {"x", 0.0},     {"\xFF\xFE", 0.0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(doubleValue(row.text), row.value) << '"' << row.text << '"';
    EXPECT_EQ(floatValue(row.text), float(row.value)) << '"' << row.text << '"';
  }
}

TEST(Number, SinglePrecisionIsRoundedOnceFromTheText) {
  EXPECT_EQ(floatValue("0.9"), 0.9F);
  EXPECT_NE(double(floatValue("0.9")), doubleValue("0.9"));
  // Just above the middle between two floats: through a double it would fall on the middle and then
  // to the even one below.
  EXPECT_EQ(floatValue("1.00000005960464477540"), std::nextafter(1.0F, 2.0F));
}

TEST(Number, WhatIsTooLargeBecomesTheLargestAndWhatIsTooSmallBecomesZero) {
  struct Row {
    std::string text;
    float single;
    double twofold;
  };
  const std::string zeros(400, '0');
  const Row rows[] = {
      {"1e38", 1e38F, 1e38},
      {"1e39", kFloatMax, 1e39},
      {"-1e39", -kFloatMax, -1e39},
      {"1e-50", 0.0F, 1e-50},
      {"1e400", kFloatMax, kDoubleMax},
      {"-1e400", -kFloatMax, -kDoubleMax},
      {"1e-400", 0.0F, 0.0},
      {"0.1e400", kFloatMax, kDoubleMax},
      {"0." + zeros + "1", 0.0F, 0.0},
      {"00." + zeros + "1", 0.0F, 0.0},
      {"." + zeros + "1e10", 0.0F, 0.0},
      {"0." + zeros + "1e+900", kFloatMax, kDoubleMax},
      {"1" + zeros, kFloatMax, kDoubleMax},
      {"1" + zeros + "e-10", kFloatMax, kDoubleMax},
      {"1" + zeros + "e-900", 0.0F, 0.0},
      {"1e99999999999999999999", kFloatMax, kDoubleMax},
      {"1e-99999999999999999999", 0.0F, 0.0},
      {"0e99999999999999999999", 0.0F, 0.0},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(floatValue(row.text), row.single) << row.text;
    EXPECT_EQ(doubleValue(row.text), row.twofold) << row.text;
  }
}

TEST(Number, TextIsNotReadPastItsEnd) {
  const std::string_view text = "12345";
  EXPECT_EQ(intValue(text.substr(0, 2)), 12);
  EXPECT_EQ(doubleValue(text.substr(1, 2)), 23.0);
  EXPECT_EQ(intValue(std::string_view("1\0002", 3)), 1);
}

TEST(Number, ALocaleWithADecimalCommaChangesNothing) {
  const test::TemporaryFolder locales;
  const std::string command = "localedef -i de_DE -f UTF-8 " + locales.file("de_DE.UTF-8");
  ASSERT_EQ(std::system(command.c_str()), 0) << "the package locales is missing";
  ASSERT_EQ(setenv("LOCPATH", locales.path().c_str(), 1), 0);
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
  EXPECT_EQ(std::strtod("1,5", nullptr), 1.5) << "the locale has no decimal comma";
  EXPECT_EQ(doubleValue("1.5"), 1.5);
  EXPECT_EQ(doubleValue("1,5"), 1.0);
  EXPECT_EQ(fmt::format("{} {:.2f}", 1.5, 1.5), "1.5 1.50");
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
}

TEST(Number, AWholeNumberIsAllOfItsText) {
  struct Row {
    const char* text;
    std::optional<int32_t> value;
  };
  const Row rows[] = {
      {"0", 0},           {"17", 17}, {"007", 7}, {"-3", -3}, {"2147483647", 2147483647},
      {"2147483648", {}}, {"+3", {}}, {" 3", {}}, {"3 ", {}}, {"3a", {}},
      {"3.5", {}},        {"-", {}},  {"", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(wholeInt(row.text), row.value) << '"' << row.text << '"';
}

TEST(Number, AByteIsTwoHexadecimalDigits) {
  struct Row {
    const char* text;
    std::optional<char> value;
  };
  const Row rows[] = {
      {"20", ' '},         {"7e", '~'}, {"7E", '~'}, {"fF", '\xFF'}, {"00", '\0'},
      {"41and more", 'A'}, {"4", {}},   {"4g", {}},  {"g4", {}},     {"0x41", {}},
      {"-4", {}},          {"+4", {}},  {" 4", {}},  {"", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(hexByte(row.text), row.value) << '"' << row.text << '"';
}

}  // namespace
}  // namespace tessary
