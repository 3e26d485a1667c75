#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Color.h"
#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/MyDataArray.h"
#include "overlay/RecentlyUsed.h"
#include "platform/TextRasterizer.h"

namespace tessary {

class Preferences;

/// Turns labels into point vertices, one a lit pixel. A label is rasterised into a private bitmap,
/// with the font of the preferences over a black background, and what is not black becomes
/// vertices; so a text in pure black gives none, as meant. Its size and its lit pixels are kept
/// while it is in use: the rasteriser has to answer the same question always alike. Points are
/// image coordinates. Main thread.
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
  /// A line as the two stores below know it: drawn in its colour, as far as it is scanned.
  template <typename Text>
  struct LineOf {
    Text text;
    Font font;
    Color color;
    int32_t columns;
  };
  using Line = LineOf<std::string>;
  using LineView = LineOf<std::string_view>;
  struct Hash {
    using is_transparent = void;
    template <typename Text>
    size_t operator()(const LineOf<Text>& line) const {
      return std::hash<std::string_view>()(line.text);
    }
  };
  struct Equal {
    using is_transparent = void;
    template <typename One, typename Other>
    bool operator()(const LineOf<One>& one, const LineOf<Other>& other) const {
      return one.columns == other.columns && one.font == other.font && one.color == other.color &&
             std::string_view(one.text) == std::string_view(other.text);
    }
  };
  template <typename Value>
  using Kept = RecentlyUsed<Line, Value, Hash, Equal>;

  /// A lit pixel: its column, which may lie past the bitmap's last, its row, and its bytes.
  struct LitPixel {
    int32_t column;
    int32_t row;
    uint8_t color[4];
  };
  using LitPixels = std::vector<LitPixel>;

  Size measure(const TextLine& line);
  const LitPixels& litPixels(const TextLine& line, int32_t columns);
  LitPixels scan(const TextLine& line, int32_t columns);
  uint8_t* rowOf(int32_t r) { return _textBmpData.get() + size_t(r) * kBytesPerRow; }

  TextRasterizer& rasterizer_;
  const Preferences& preferences_;
  const TextureSize& cvTextureSize_;
  std::unique_ptr<uint8_t[]> _textBmpData;
  Kept<Size> sizes_;
  Kept<LitPixels> litPixels_;
};

}  // namespace tessary
