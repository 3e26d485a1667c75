#pragma once

namespace tessary {

/// Red, green, blue and alpha, each nominally 0 to 1, not premultiplied. Values are not clamped.
struct Color {
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
  double alpha = 1.0;
  friend bool operator==(const Color&, const Color&) = default;
};

}  // namespace tessary
