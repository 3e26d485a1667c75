#include "overlay/TextPrimitives.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/Truncate.h"
#include "overlay/ClipSpace.h"
#include "settings/Preferences.h"

namespace tessary {

namespace {

constexpr int32_t kBitmapPixels = TextPrimitives::kBitmapWidth * TextPrimitives::kBitmapHeight;
// For the labels of some thousand shapes; twice as much is kept at the most.
constexpr size_t kKeptSizes = 4096;
constexpr size_t kKeptPixels = 1 << 18;
constexpr size_t kPixelsOfALabel = 16;  // what a label takes beside its pixels

constexpr double kTextX = 2.0;
constexpr double kBaseline = 5.0;  // above the bitmap's bottom edge

/// Columns that are scanned for a line of this width, at most all pixels of the bitmap.
int32_t scannedColumns(double width) {
  return std::clamp(truncateToInt32(width), -20, kBitmapPixels - 20) + 20;
}

/// Alpha is meant to be left out: it is full over the black background too.
bool isLit(const uint8_t* pixel) { return (pixel[0] | pixel[1] | pixel[2]) != 0; }

/// Whether any of the `count` pixels is lit; eight bytes at a time, since most rows are dark.
bool anyLit(const uint8_t* pixel, int32_t count) {
  constexpr uint8_t kColourBytes[8] = {255, 255, 255, 0, 255, 255, 255, 0};
  uint64_t mask = 0;
  std::memcpy(&mask, kColourBytes, sizeof mask);
  uint64_t seen = 0;
  int32_t i = 0;
  for (; i + 2 <= count; i += 2, pixel += 8) {
    uint64_t two = 0;
    std::memcpy(&two, pixel, sizeof two);
    seen |= two;
  }
  return (seen & mask) != 0 || (i < count && isLit(pixel));
}

float channel(uint8_t byte) { return static_cast<float>(byte) / 256.0f; }

}  // namespace

TextPrimitives::TextPrimitives(TextRasterizer& rasterizer, const Preferences& preferences,
                               const TextureSize& cvTextureSize)
    : rasterizer_(rasterizer),
      preferences_(preferences),
      cvTextureSize_(cvTextureSize),
      _textBmpData(std::make_unique<uint8_t[]>(size_t{kBytesPerRow} * kBitmapHeight)),
      sizes_(kKeptSizes),
      litPixels_(kKeptPixels) {}

Size TextPrimitives::measure(const TextLine& line) {
  // In any colour.
  if (const Size* size = sizes_.find(LineView{line.text, line.font, {}, 0})) return *size;
  return sizes_.add({line.text, line.font, {}, 0}, rasterizer_.imageBounds(line.text, line.font),
                    1);
}

TextPrimitives::LitPixels TextPrimitives::scan(const TextLine& line, int32_t columns) {
  // Only what is scanned below need be cleared, however far the text of before reached.
  if (columns >= kBitmapWidth) {
    std::memset(_textBmpData.get(), 0, size_t{kBytesPerRow} * kBitmapHeight);
  } else {
    for (int32_t r = 0; r < kBitmapHeight; ++r) {
      std::memset(rowOf(r), 0, static_cast<size_t>(columns) * 4);
    }
  }
  rasterizer_.drawLine(line.text, line.font, line.color, kTextX, kBaseline,
                       {_textBmpData.get(), kBitmapWidth, kBitmapHeight, kBytesPerRow});

  LitPixels lit;
  for (int32_t r = 0; r < kBitmapHeight; ++r) {
    const uint8_t* const row = rowOf(r);
    // A line wider than the bitmap is meant to read on into the rows below, to the end of the
    // block.
    const int32_t count = std::min(columns, kBitmapPixels - r * kBitmapWidth);
    if (!anyLit(row, count)) continue;
    for (int32_t c = 0; c < count; ++c) {
      const uint8_t* const pixel = row + size_t(c) * 4;
      if (isLit(pixel)) lit.push_back({c, r, {pixel[0], pixel[1], pixel[2], pixel[3]}});
    }
  }
  return lit;
}

const TextPrimitives::LitPixels& TextPrimitives::litPixels(const TextLine& line, int32_t columns) {
  if (const LitPixels* lit = litPixels_.find(LineView{line.text, line.font, line.color, columns}))
    return *lit;
  LitPixels lit = scan(line, columns);
  lit.shrink_to_fit();
  const size_t weight = lit.size() + kPixelsOfALabel;
  return litPixels_.add({line.text, line.font, line.color, columns}, std::move(lit), weight);
}

void TextPrimitives::addTextLineToPointVector(MyDataArray<PointVertex>& target,
                                              const TextLine& line, ImagePoint point, Size size) {
  const int32_t columns = scannedColumns(size.width);
  if (columns <= 0) return;
  const auto [width, height] = cvTextureSize_;
  const LitPixels& lit = litPixels(line, columns);
  const auto count = static_cast<int32_t>(lit.size());
  target.insert(target.count, count);
  PointVertex* vertex = target.data + target.count - count;
  int32_t row = -1;
  float y = 0.0f;
  for (const LitPixel& pixel : lit) {
    if (pixel.row != row) {
      row = pixel.row;
      y = clipCoordinate(-point.y - row + 256.0 + height / 2, height);
    }
    const float x = clipCoordinate(point.x + pixel.column - width / 2, width);
    // Divided by 256, not 255, and premultiplied as they stand.
    *vertex++ = {{x, y, 0.0f, 1.0f},
                 {channel(pixel.color[0]), channel(pixel.color[1]), channel(pixel.color[2]),
                  channel(pixel.color[3])}};
  }
}

void TextPrimitives::addTextToPointVector(MyDataArray<PointVertex>& target, const std::string& text,
                                          ImagePoint point, bool up, const Color& color) {
  const TextLine line{text, preferences_.font, color};
  const Size size = measure(line);
  double x = point.x;
  double y = point.y;

  if (cvTextureSize_.width < x + size.width + 2) {
    x -= size.width + 4;
  } else {
    x += 2;
  }

  const bool below =
      up ? y - size.height - 4 <= 0 : y + 2 * size.height - 8 <= cvTextureSize_.height;
  y += below ? size.height + 8 : 2.0;

  addTextLineToPointVector(target, line, {x, y}, size);
}

void TextPrimitives::add3TextToPointVector(MyDataArray<PointVertex>& target,
                                           const std::string& text, const std::string& text2,
                                           const std::string& text3, ImagePoint point, bool up,
                                           const Color& color) {
  const TextLine line1{text, preferences_.font, color};
  const TextLine line2{text2, preferences_.font, color};
  const TextLine line3{text3, preferences_.font, color};
  const Size size1 = measure(line1);
  const Size size2 = measure(line2);
  const Size size3 = measure(line3);
  const bool hasThird = !text3.empty();

  // Single precision, as the placement below is defined.
  const auto maxW = static_cast<float>(std::max({size1.width, size2.width, size3.width}));
  auto totalH = static_cast<float>(size1.height + size2.height + size3.height + 12.0);
  if (!hasThird) totalH = static_cast<float>(totalH - (size3.height + 2.0));

  double x = point.x;
  double y = point.y;
  const bool flipped = cvTextureSize_.width < x + maxW + 2;
  if (flipped) {
    x -= maxW + 4;
  } else {
    x += 2;
  }

  if (up) {
    y = -totalH + y - 4 > 0 ? y + 2 : y + totalH + 8;
  } else if (y + totalH + size1.height - 12 > cvTextureSize_.height) {
    y -= totalH - size1.height - 4;
  } else {
    y += size1.height + 8;
  }

  const auto lineX = [&](Size size) { return flipped ? x + maxW - size.width : x; };
  addTextLineToPointVector(target, line1, {lineX(size1), y}, size1);
  addTextLineToPointVector(target, line2, {lineX(size2), y + size1.height + 4}, size2);
  if (!hasThird) return;
  addTextLineToPointVector(target, line3, {lineX(size3), y + size1.height + size2.height + 8},
                           size3);
}

Size TextPrimitives::getTextSize(const std::string& text) {
  static const std::string kSampleText = "恭禧发财";
  const TextLine line{text.empty() ? kSampleText : text, preferences_.font, preferences_.textColor};
  const Size size = measure(line);
  return {size.width + 8.0, size.height + 8.0};
}

}  // namespace tessary
