#pragma once

#include <cstdint>
#include <string>

#include "base/Color.h"
#include "base/Geometry.h"

namespace tessary {

/// The system font at a size, in its light weight. One point is one pixel of the text bitmap.
struct Font {
  int32_t pixelSize = 26;
  friend bool operator==(const Font&, const Font&) = default;
};

/// Turns one line of text into pixels. Main thread.
class TextRasterizer {
 public:
  virtual ~TextRasterizer() = default;

  /// Width and height in pixels of the ink of `text` (UTF-8) drawn as one line. 0 by 0 without ink.
  virtual Size imageBounds(const std::string& text, const Font& font) = 0;

  /// A block of pixels that text is drawn into: rows from the top, 4 bytes a pixel in the order
  /// red, green, blue, alpha, colours premultiplied.
  struct Bitmap {
    uint8_t* data;
    int32_t width;
    int32_t height;
    int32_t bytesPerRow;
  };
  /// Draws `text` in `color` over a black background, its baseline starting at x pixels from the
  /// left and `baseline` pixels above the bitmap's bottom edge. Grey anti-aliasing at the most,
  /// never subpixel; whatever lies outside the bitmap is cut off. Pixels without background or ink
  /// stay as they are.
  virtual void drawLine(const std::string& text, const Font& font, const Color& color, double x,
                        double baseline, const Bitmap& bitmap) = 0;
};

}  // namespace tessary
