#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/TextRasterizer.h"

namespace tessary {

/// Draws text in Open Sans Light. Glyphs are filled as outlines, without hinting, so the pixels
/// depend neither on the machine's font settings nor on the screen; only characters that Open Sans
/// lacks come from whatever font has them. Needs a QGuiApplication on any platform plugin. One
/// thread at a time.
class QtTextRasterizer final : public TextRasterizer {
 public:
  QtTextRasterizer();
  ~QtTextRasterizer() override;

  /// From the outlines, rounded outward to whole pixels of a line that starts on a whole pixel.
  Size imageBounds(const std::string& text, const Font& font) override;
  void drawLine(const std::string& text, const Font& font, const Color& color, double x,
                double baseline, const Bitmap& bitmap) override;

 private:
  struct Line;
  const Line& layOut(const std::string& text, const Font& font);

  /// By text and pixel size. Labels are measured and then drawn, and drawn again as they are when
  /// something else changes.
  std::map<std::pair<std::string, int32_t>, std::unique_ptr<const Line>> lines_;
};

}  // namespace tessary
