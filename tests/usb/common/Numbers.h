#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace tessary::lab {

/// The whole of `text` as a number, or nothing. The same in every locale.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text, int base = 10) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// "640x480" as two numbers above 0, or nothing.
struct Size {
  int width = 0;
  int height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

inline std::optional<Size> parseSize(std::string_view text) {
  const size_t cross = text.find('x');
  if (cross == std::string_view::npos) return std::nullopt;
  const auto width = parseNumber<int>(text.substr(0, cross));
  const auto height = parseNumber<int>(text.substr(cross + 1));
  if (!width || !height || *width <= 0 || *height <= 0) return std::nullopt;
  return Size{*width, *height};
}

}  // namespace tessary::lab
