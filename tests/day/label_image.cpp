#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <QtGui/QGuiApplication>
#include <fmt/format.h>

#include "base/Number.h"
#include "qt/QtTextRasterizer.h"

// Draws each line of its input as the program draws a label, and writes one line of JSON for each:
// the size of its ink, and every lit pixel as [column, row, red, green, blue], column and row
// counted from the place that the label is given in the picture.
//   label_image TEXTSIZE RED GREEN BLUE    colours from 0 to 1
int main(int argc, char** argv) {
  if (argc != 5) return 2;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  int count = 1;
  const QGuiApplication application(count, argv);
  tessary::QtTextRasterizer rasterizer;
  const tessary::Font font{int32_t(tessary::doubleValue(argv[1]))};
  const tessary::Color color{tessary::doubleValue(argv[2]), tessary::doubleValue(argv[3]),
                             tessary::doubleValue(argv[4]), 1.0};
  constexpr int32_t kWidth = 1024;
  constexpr int32_t kHeight = 256;
  // What a colour byte of the text bitmap is in the picture: it is divided by 256, not 255.
  const auto shown = [](uint8_t byte) { return (byte * 255 + 128) / 256; };
  for (std::string text; std::getline(std::cin, text);) {
    std::vector<uint8_t> bitmap(size_t{kWidth} * kHeight * 4);
    const tessary::Size size = rasterizer.imageBounds(text, font);
    rasterizer.drawLine(text, font, color, 2.0, 5.0, {bitmap.data(), kWidth, kHeight, kWidth * 4});
    std::string pixels;
    for (int32_t row = 0; row < kHeight; ++row) {
      for (int32_t column = 0; column < kWidth; ++column) {
        const uint8_t* pixel = &bitmap[(size_t(row) * kWidth + size_t(column)) * 4];
        if ((pixel[0] | pixel[1] | pixel[2]) == 0) continue;
        if (!pixels.empty()) pixels += ',';
        pixels += fmt::format("[{},{},{},{},{}]", column, row - kHeight, shown(pixel[0]),
                              shown(pixel[1]), shown(pixel[2]));
      }
    }
    const std::string line = fmt::format("{{\"width\":{},\"height\":{},\"pixels\":[{}]}}\n",
                                         size.width, size.height, pixels);
    std::fwrite(line.data(), 1, line.size(), stdout);
  }
  return 0;
}
