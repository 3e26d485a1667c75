#pragma once

#include <charconv>
#include <cmath>
#include <memory>
#include <string>

#include "platform/TextRasterizer.h"

namespace tessary::test {

/// Draws as the real one does, and remembers what was drawn last.
class RecordingRasterizer final : public TextRasterizer {
 public:
  RecordingRasterizer(std::unique_ptr<TextRasterizer> real, std::string& last)
      : real_(std::move(real)), last_(last) {}
  Size imageBounds(const std::string& text, const Font& font) override {
    return real_->imageBounds(text, font);
  }
  void drawLine(const std::string& text, const Font& font, const Color& color, double x,
                double baseline, const Bitmap& bitmap) override {
    last_ = text;
    real_->drawLine(text, font, color, x, baseline, bitmap);
  }

 private:
  std::unique_ptr<TextRasterizer> real_;
  std::string& last_;
};

/// The number that a label begins with.
inline double valueOf(const std::string& label) {
  double value = NAN;
  std::from_chars(label.data(), label.data() + label.size(), value);
  return value;
}

}  // namespace tessary::test
