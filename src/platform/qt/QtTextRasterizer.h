#pragma once

#include "platform/TextRasterizer.h"

namespace tessary {

/// Draws text in Open Sans Light. Glyphs are filled as outlines, without hinting, so the pixels
/// depend neither on the machine's font settings nor on the screen; only characters that Open Sans
/// lacks come from whatever font has them. Needs a QGuiApplication on any platform plugin.
class QtTextRasterizer final : public TextRasterizer {
 public:
  QtTextRasterizer();

  /// From the outlines, rounded outward to whole pixels of a line that starts on a whole pixel.
  Size imageBounds(const std::string& text, const Font& font) override;
  void drawLine(const std::string& text, const Font& font, const Color& color, double x,
                double baseline, const Bitmap& bitmap) override;
};

}  // namespace tessary
