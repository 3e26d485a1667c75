#include <gtest/gtest.h>

#include "dialogs/ColorText.h"

namespace tessary {
namespace {

TEST(ColorText, NamesAColourAndTellsItExactly) {
  const struct {
    int red, green, blue;
    const char* text;
  } table[] = {
      {255, 0, 0, "red, #FF0000"},
      {255, 0, 40, "red, #FF0028"},
      {139, 0, 0, "dark red, #8B0000"},
      {255, 165, 0, "orange, #FFA500"},
      {255, 255, 0, "yellow, #FFFF00"},
      {0, 255, 0, "green, #00FF00"},
      {0, 100, 0, "dark green, #006400"},
      {144, 238, 144, "light green, #90EE90"},
      {0, 255, 255, "cyan, #00FFFF"},
      {0, 0, 255, "blue, #0000FF"},
      {128, 0, 255, "purple, #8000FF"},
      {255, 0, 255, "pink, #FF00FF"},
      {255, 105, 180, "pink, #FF69B4"},
      {0, 0, 0, "black, #000000"},
      {64, 64, 64, "dark grey, #404040"},
      {128, 128, 128, "grey, #808080"},
      {211, 211, 211, "light grey, #D3D3D3"},
      {255, 255, 255, "white, #FFFFFF"},
      {255, 250, 240, "white, #FFFAF0"},
  };
  for (const auto& row : table)
    EXPECT_EQ(colorText({row.red / 255.0, row.green / 255.0, row.blue / 255.0}), row.text);
}

TEST(ColorText, IsWhatTheColourDialogShows) {
  EXPECT_EQ(colorText({0.0, double(0.9F), double(0.9F)}), "cyan, #00E6E6");
}

TEST(ColorText, TakesTheNearestOfWhatIsOutOfRange) {
  EXPECT_EQ(colorText({-1.0, 2.0, -0.001, 0.0}), "green, #00FF00");
}

}  // namespace
}  // namespace tessary
