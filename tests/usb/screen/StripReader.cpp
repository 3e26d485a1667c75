#include "screen/StripReader.h"

#include "common/PictureStrip.h"

namespace tessary::lab {
namespace {

constexpr int kHigh = 180;  // at least this much of a colour that is there
constexpr int kLow = 90;    // at most this much of one that is not
constexpr int kMiddle = kStripSquare / 2;
/// Labels may cover the strip, but not its last rows.
constexpr int kReadAboveBottom = 3;

int channel(uint32_t color, int shift) { return int(color >> shift & 0xFF); }

bool isMark(uint32_t color, int shift) {
  for (const int other : {16, 8, 0}) {
    const int value = channel(color, other);
    if (other == shift ? value < kHigh : value > kLow) return false;
  }
  return true;
}

bool isRed(uint32_t color) { return isMark(color, 16); }

/// Whether red, green and blue squares follow each other from `x` on.
bool areMarks(const FrameBuffer& screen, int x, int y) {
  return isRed(screen.pixel(x + kMiddle, y)) &&
         isMark(screen.pixel(x + kStripSquare + kMiddle, y), 8) &&
         isMark(screen.pixel(x + 2 * kStripSquare + kMiddle, y), 0);
}

/// White 1, black 0, anything else nothing.
std::optional<int> readSquare(const FrameBuffer& screen, int left, int y) {
  const uint32_t color = screen.pixel(left + kMiddle, y);
  bool white = true;
  bool black = true;
  for (const int shift : {16, 8, 0}) {
    white = white && channel(color, shift) >= kHigh;
    black = black && channel(color, shift) <= kLow;
  }
  if (white) return 1;
  if (black) return 0;
  return std::nullopt;
}

std::optional<uint16_t> readNumber(const FrameBuffer& screen, int left, int y) {
  unsigned number = 0;
  constexpr int kComplement = (kStripBits + kStripMarks) * kStripSquare;
  for (int bit = 0; bit < kStripBits; ++bit) {
    const auto plain = readSquare(screen, left + bit * kStripSquare, y);
    const auto inverted = readSquare(screen, left + kComplement + bit * kStripSquare, y);
    if (!plain || !inverted || *plain == *inverted) return std::nullopt;
    number |= unsigned(*plain) << bit;
  }
  return uint16_t(number);
}

}  // namespace

std::optional<PictureFound> findPicture(const FrameBuffer& screen) {
  const Size size = screen.size();
  const int rightmost = size.width - (kStripWidth - kStripMarksLeft);
  for (int y = size.height - 1; y >= kStripSquare; --y) {
    for (int x = kStripMarksLeft; x <= rightmost; ++x) {
      const bool isEdge = isRed(screen.pixel(x, y)) && !isRed(screen.pixel(x - 1, y));
      if (!isEdge || !areMarks(screen, x, y)) continue;
      const int left = x - kStripMarksLeft;
      const auto number = readNumber(screen, left, y - kReadAboveBottom);
      if (!number) return std::nullopt;
      return PictureFound{*number, left, y};
    }
  }
  return std::nullopt;
}

}  // namespace tessary::lab
