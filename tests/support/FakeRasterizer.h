#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/TextRasterizer.h"

namespace tessary::test {

/// A font whose every letter is a filled block that stands on the baseline, so that a label's
/// pixels can be counted by hand. Behind the line lies a black background, two pixels larger all
/// around.
class FakeRasterizer final : public TextRasterizer {
 public:
  Size imageBounds(const std::string& text, const Font& font) override {
    measured.push_back(text);
    lastFont = font;
    if (bounds) return bounds(text);
    const int n = letters(text);
    return n == 0 ? Size{} : Size{n * letterWidth * 1.0, letterHeight * 1.0};
  }

  void drawLine(const std::string& text, const Font& font, const Color& color, double x,
                double baseline, const Bitmap& bitmap) override {
    drawn.push_back(text);
    lastFont = font;
    lastX = x;
    lastBaseline = baseline;
    if (paint) return paint(bitmap);
    const int left = static_cast<int>(x);
    const int right = left + letters(text) * letterWidth;
    const int bottom = bitmap.height - static_cast<int>(baseline);
    const int top = bottom - letterHeight;
    if (left == right) return;
    fill(bitmap, left - 2, top - 2, right + 2, bottom + 2, {0.0, 0.0, 0.0, 1.0});
    fill(bitmap, left, top, right, bottom, color);
  }

  static void fill(const Bitmap& bitmap, int left, int top, int right, int bottom,
                   const Color& color) {
    const auto byte = [&](double part) {
      return static_cast<uint8_t>(std::lround(part * color.alpha * 255.0));
    };
    for (int y = std::max(top, 0); y < std::min(bottom, bitmap.height); ++y) {
      for (int x = std::max(left, 0); x < std::min(right, bitmap.width); ++x) {
        uint8_t* pixel = bitmap.data + y * bitmap.bytesPerRow + x * 4;
        pixel[0] = byte(color.red);
        pixel[1] = byte(color.green);
        pixel[2] = byte(color.blue);
        pixel[3] = byte(1.0);
      }
    }
  }

  static int letters(const std::string& text) {
    return static_cast<int>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
  }

  int letterWidth = 10;
  int letterHeight = 20;
  std::function<Size(const std::string&)> bounds;  ///< In place of the letters' size.
  std::function<void(const Bitmap&)> paint;        ///< In place of the letters.
  std::vector<std::string> measured;
  std::vector<std::string> drawn;
  Font lastFont{0};
  double lastX = 0.0;
  double lastBaseline = 0.0;
};

}  // namespace tessary::test
