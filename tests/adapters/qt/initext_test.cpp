#include "qt/IniText.h"

#include <random>

#include <gtest/gtest.h>
#include <malloc.h>

namespace tessary {
namespace {

TEST(IniText, AFileWrittenByHandIsUnderstood) {
  struct Row {
    std::string text;
    std::optional<std::string> value;
  };
  const Row rows[] = {
      {"[General]\nk=0.0,0.9,0.9\n", "0.0,0.9,0.9"},
      {"[General]\nk=\"0.0,0.9,0.9\"\n", "0.0,0.9,0.9"},
      {"k=7\n", "7"},  // without a section
      {"k=7", "7"},    // without a last line end
      {"\n\n  k = 7  \n", "7"},
      {"[General]\r\nk=7\r\n", "7"},
      {"\xEF\xBB\xBFk=7\n", "7"},
      {"k=\n", ""},
      {"k=a=b\n", "a=b"},
      {"k=lens,0,853,0.5,1,2;,0,0,0,0,0; ; #x\n", "lens,0,853,0.5,1,2;,0,0,0,0,0; ; #x"},
      {"k=/home/me/a\\b \"c\"\n", "/home/me/a\\b \"c\""},
      {"k=\"  a \"\n", "  a "},
      {"k=\"a\" behind\n", "a"},
      {"k=\"a\n", "a"},
      {"k=\"\\\"\\\\\\n\\r\\t\\x41\\x0a\\q\"\n", "\"\\\n\r\tA\nq"},
      {"k=\"\\x4\"\n", "x4"},
      {"k=\"\\xzz\"\n", "xzz"},
      {"k=\"a\\\n", "a\\"},
      {"k=1\nk=2\n", "2"},
      {"k=1\n[Other]\nk=2\n", "1"},
      {"[Other]\nk=1\n[General]\nk=2\n[More]\nk=3\n", "2"},
      {"[General]\nk=1\n[Other]\n[General]\nk=2\n", "2"},
      {"[ General\nk=1\n", std::nullopt},
      {"k\n", std::nullopt},
      {";k=1\n#k=2\n ; k=3\n", std::nullopt},
      {"K=1\nkk=2\n=3\n", std::nullopt},
      {"", std::nullopt},
  };
  for (const Row& row : rows) EXPECT_EQ(IniText(row.text).value("k"), row.value) << row.text;
}

TEST(IniText, ValuesAreWrittenPlainWhereTheyCanBe) {
  struct Row {
    const char* value;
    const char* line;
  };
  const Row rows[] = {
      {"26", "k=26"},
      {"", "k="},
      {"0.0,0.9,0.9", "k=0.0,0.9,0.9"},
      {"/home/a b;c/μm", "k=/home/a b;c/μm"},
      {"a\"b\\c", "k=a\"b\\c"},
      {" a", "k=\" a\""},
      {"a ", "k=\"a \""},
      {"\"a\"", "k=\"\\\"a\\\"\""},
      {"a\nb", "k=\"a\\x0ab\""},
  };
  for (const Row& row : rows) {
    IniText ini;
    ini.setValue("k", row.value);
    EXPECT_EQ(ini.text(), std::string("[General]\n") + row.line + "\n");
    EXPECT_EQ(IniText(ini.text()).value("k"), row.value);
  }
}

TEST(IniText, ANewKeyGoesToTheEndOfItsSection) {
  struct Row {
    const char* before;
    const char* after;
  };
  const Row rows[] = {
      {"", "[General]\nk=1\n"},
      {"a=0\n", "a=0\n[General]\nk=1\n"},
      {"[General]\na=0\n", "[General]\na=0\nk=1\n"},
      {"[General]\na=0\n\n[Other]\nk=5\n", "[General]\na=0\nk=1\n\n[Other]\nk=5\n"},
      {"[Other]\nk=5\n", "[General]\nk=1\n\n[Other]\nk=5\n"},
      {"[Other]\nk=5\n[General]\n\n", "[Other]\nk=5\n[General]\nk=1\n\n"},
  };
  for (const Row& row : rows) {
    IniText ini(row.before);
    ini.setValue("k", "1");
    EXPECT_EQ(ini.text(), row.after);
  }
}

TEST(IniText, AKnownKeyKeepsItsPlace) {
  IniText ini("; mine\n k = 1 \nb=2\n[Other]\nk=3");
  ini.setValue("k", "9");
  EXPECT_EQ(ini.text(), "; mine\nk=9\nb=2\n[Other]\nk=3\n");
}

TEST(IniText, ManyShortLinesTakeLittleMemory) {
  constexpr size_t kBytes = 1'000'000;
  for (const char* line : {"\n", "[\n", "k=\n", "[General]\n"}) {
    std::string text;
    while (text.size() < kBytes) text += line;
    const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    if (before == 0) GTEST_SKIP() << "a sanitizer's memory is not counted";
    IniText ini(text);
    ini.setValue("l", "1");
    EXPECT_LT(mallinfo2().uordblks + mallinfo2().hblkhd - before, 3 * kBytes) << line;
    EXPECT_EQ(ini.value("l"), "1");
  }
}

TEST(IniText, WhateverTheTextIsAValueThatIsSetComesBack) {
  std::mt19937 random(11);
  const std::string likely = "[]General\n\n\r=;#\"\\xk ";
  const auto randomText = [&](size_t most) {
    std::string text(random() % most, '\0');
    for (char& c : text) c = random() % 4 ? likely[random() % likely.size()] : char(random() % 256);
    return text;
  };
  for (int round = 0; round < 20000; ++round) {
    IniText ini(randomText(60));
    const std::optional<std::string> other = ini.value("l");
    const std::string value = randomText(20);
    ini.setValue("k", value);
    const IniText again(ini.text());
    ASSERT_EQ(again.value("k"), value) << ini.text();
    ASSERT_EQ(again.value("l"), other) << ini.text();
  }
}

}  // namespace
}  // namespace tessary
