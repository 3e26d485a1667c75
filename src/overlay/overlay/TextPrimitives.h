#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/Color.h"
#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/MyDataArray.h"
#include "platform/TextRasterizer.h"

namespace tessary {

class Preferences;

/// Turns labels into point vertices, one a lit pixel. A label is rasterised once into a private
/// bitmap, with the font of the preferences over a black background, and what is not black becomes
/// vertices; so a text in pure black gives none, as meant. Points are image coordinates. Main
/// thread.
class TextPrimitives {
 public:
  /// One line of text on its way into the bitmap. Borrows the text.
  struct TextLine {
    const std::string& text;
    Font font;
    Color color;
  };

  /// All three are borrowed, and read at each call.
  TextPrimitives(TextRasterizer& rasterizer, const Preferences& preferences,
                 const TextureSize& cvTextureSize);

  /// Appends the pixels of `line`, `size` large, its lower left corner at `point`: the bitmap's
  /// bottom row ends just above it.
  void addTextLineToPointVector(MyDataArray<PointVertex>& target, const TextLine& line,
                                ImagePoint point, Size size);
  /// A label to the lower right of its anchor `point`. It flips to the left at the right edge of
  /// the image, and above the anchor at the bottom edge; with `up` it stands above where there is
  /// room.
  void addTextToPointVector(MyDataArray<PointVertex>& target, const std::string& text,
                            ImagePoint point, bool up, const Color& color);
  /// The same for three lines, stacked downward; a block that flips left is right-aligned. With
  /// `text3` "" there are two.
  void add3TextToPointVector(MyDataArray<PointVertex>& target, const std::string& text,
                             const std::string& text2, const std::string& text3, ImagePoint point,
                             bool up, const Color& color);
  /// Size of `text` in pixels, 8 added to both. For an empty text that of a sample of four letters.
  Size getTextSize(const std::string& text);

  static constexpr int32_t kBitmapWidth = 1920;
  static constexpr int32_t kBitmapHeight = 256;
  static constexpr int32_t kBytesPerRow = kBitmapWidth * 4;

 private:
  Size measure(const TextLine& line);
  uint8_t* rowOf(int32_t r) { return _textBmpData.get() + size_t(r) * kBytesPerRow; }

  TextRasterizer& rasterizer_;
  const Preferences& preferences_;
  const TextureSize& cvTextureSize_;
  std::unique_ptr<uint8_t[]> _textBmpData;
};

}  // namespace tessary
