#include "base/Number.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace tessary {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutLeadingBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\n\v\f\r");
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

/// Takes one sign off the front of `text`; whether it was a minus.
bool takeSign(std::string_view& text) {
  if (text.empty() || (text[0] != '+' && text[0] != '-')) return false;
  const bool negative = text[0] == '-';
  text.remove_prefix(1);
  return negative;
}

template <typename T>
T integerPrefix(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const bool negative = takeSign(text);
  const T low = std::numeric_limits<T>::min();
  const T high = std::numeric_limits<T>::max();
  T value = 0;
  for (const char c : text) {
    if (!isDigit(c)) break;
    const T digit = T(c - '0');
    // Built on the negative side, which reaches one further.
    if (value < (low + digit) / 10) return negative ? low : high;
    value = T(value * 10 - digit);
  }
  if (negative) return value;
  return value == low ? high : T(-value);
}

/// Whether the decimal number `digits`, not zero, is below 1. For numbers that no floating-point
/// type holds, so that a power of ten more or less does not matter.
bool isBelowOne(std::string_view digits) {
  const size_t mantissaEnd = std::min(digits.find_first_of("eE"), digits.size());
  const std::string_view mantissa = digits.substr(0, mantissaEnd);
  const size_t point = std::min(mantissa.find('.'), mantissa.size());
  const size_t leading = mantissa.find_first_not_of("0.");
  int64_t power = int64_t(point) - int64_t(leading);
  if (mantissaEnd < digits.size()) {
    // In 32 bits, so that the sum can't overflow.
    power += integerPrefix<int32_t>(digits.substr(mantissaEnd + 1));
  }
  return power <= 0;
}

template <typename T>
T decimalPrefix(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const bool negative = takeSign(text);
  // A second sign, "inf" and "nan" are no numbers; from_chars would take them.
  if (text.empty() || !(isDigit(text[0]) || text[0] == '.')) return T(0);
  T value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    // from_chars leaves the value alone and does not say which end it passed.
    const std::string_view digits(text.data(), size_t(end - text.data()));
    value = isBelowOne(digits) ? T(0) : std::numeric_limits<T>::max();
  }
  return negative ? -value : value;
}

}  // namespace

int32_t intValue(std::string_view text) { return integerPrefix<int32_t>(text); }
int64_t int64Value(std::string_view text) { return integerPrefix<int64_t>(text); }
float floatValue(std::string_view text) { return decimalPrefix<float>(text); }
double doubleValue(std::string_view text) { return decimalPrefix<double>(text); }

std::optional<int32_t> wholeInt(std::string_view text) {
  int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<char> hexByte(std::string_view text) {
  text = text.substr(0, 2);
  uint8_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (end != text.data() + 2) return std::nullopt;
  return char(value);
}

}  // namespace tessary
