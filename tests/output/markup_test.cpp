#include "output/Markup.h"

#include <gtest/gtest.h>

namespace tessary {
namespace {

TEST(Markup, EscapesWhatTagsAreMadeOf) {
  EXPECT_EQ(markupText("a<b> & \"c\" 'd'"), "a&lt;b&gt; &amp; &quot;c&quot; 'd'");
  EXPECT_EQ(markupText("&amp;"), "&amp;amp;");
  EXPECT_EQ(markupText(""), "");
}

TEST(Markup, KeepsEveryScript) {
  for (const char* text : {"\u03BCm", "\u663E\u5FAE\u955C", "\U0001F52C", "\u00A0\uFFFD\uD7FF"})
    EXPECT_EQ(markupText(text), text);
}

TEST(Markup, ReplacesWhatItMayNotHold) {
  const struct {
    std::string text, result;
  } rows[] = {
      {"a\tb\nc\rd", "a b c d"},
      {std::string("a\0b", 3), "a\uFFFDb"},
      {"a\x01\x1F\x7F", "a\uFFFD\uFFFD\uFFFD"},
      {"\xC2\x85", "\uFFFD\uFFFD"},                        // a control character beyond ASCII
      {"\xEF\xBF\xBE.", "\uFFFD\uFFFD\uFFFD."},            // U+FFFE
      {"\xED\xA0\x80.", "\uFFFD\uFFFD\uFFFD."},            // half of a pair
      {"\xC0\xAF.", "\uFFFD\uFFFD."},                      // a slash, longer than it has to be
      {"\xE0\x80\xAF.", "\uFFFD\uFFFD\uFFFD."},            // likewise
      {"\xF4\x90\x80\x80.", "\uFFFD\uFFFD\uFFFD\uFFFD."},  // beyond the last character
      {"\xFF.", "\uFFFD."},
      {"\xE6\x98", "\uFFFD\uFFFD"},  // ends too early
      {"\xE6<", "\uFFFD&lt;"},
  };
  for (const auto& row : rows) EXPECT_EQ(markupText(row.text), row.result) << row.text;
}

TEST(Markup, ShortensBetweenCharacters) {
  EXPECT_EQ(shortened("12345", 5), "12345");
  EXPECT_EQ(shortened("123456", 5), "12345\u2026");
  EXPECT_EQ(shortened("\u03BC\u03BC\u03BC", 5), "\u03BC\u03BC\u2026");
  EXPECT_EQ(shortened("\x80\x80\x80", 1), "\u2026");
}

}  // namespace
}  // namespace tessary
