#include "output/Markup.h"

#include <algorithm>
#include <cstdint>

namespace tessary {
namespace {

constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::string_view kDots = "\u2026";

bool isContinuation(char byte) { return (uint8_t(byte) & 0xC0U) == 0x80U; }

/// How many bytes the character takes that `text`, not empty, begins with: 0 if they are no UTF-8
/// or name what markup may not hold.
size_t characterLength(std::string_view text) {
  const auto byte = [text](size_t i) { return uint32_t(uint8_t(text[i])); };
  const uint32_t lead = byte(0);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7F ? 1 : 0;
  const size_t length = lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
  if (length == 0 || length > text.size()) return 0;
  uint32_t code = lead & (0xFFU >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) return 0;
    code = code << 6 | (byte(i) & 0x3FU);
  }
  constexpr uint32_t kLeast[] = {0x80, 0x800, 0x10000};  // below, a shorter form would do
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  const bool isControl = code < 0xA0;
  const bool isNone = code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
  return code < kLeast[length - 2] || isSurrogate || isControl || isNone ? 0 : length;
}

}  // namespace

std::string markupText(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    size_t length = 1;
    switch (text.front()) {
      case '&': result += "&amp;"; break;
      case '<': result += "&lt;"; break;
      case '>': result += "&gt;"; break;
      case '"': result += "&quot;"; break;
      case '\t':
      case '\n':
      case '\r': result += ' '; break;
      default:
        length = characterLength(text);
        result += length == 0 ? kReplacement : text.substr(0, length);
        length = std::max<size_t>(length, 1);
    }
    text.remove_prefix(length);
  }
  return result;
}

std::string shortened(std::string_view text, size_t limit) {
  if (text.size() <= limit) return std::string(text);
  while (limit > 0 && isContinuation(text[limit])) --limit;
  return std::string(text.substr(0, limit)).append(kDots);
}

}  // namespace tessary
