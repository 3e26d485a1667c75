#pragma once

#include <cstdint>
#include <vector>

#include "common/Numbers.h"

namespace tessary::lab {

struct Rgb {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// A picture to draw on: 8 bits a colour, rows from the top, red first.
class Canvas {
 public:
  explicit Canvas(Size size);

  Size size() const { return size_; }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

  /// Clamped to what 8 bits hold.
  void set(int x, int y, const Rgb& color);
  /// What is outside the picture is left out.
  void fill(int left, int top, int width, int height, const Rgb& color);

 private:
  Size size_;
  std::vector<uint8_t> bytes_;
};

}  // namespace tessary::lab
