#pragma once
// Numbers read out of stored or typed text. Most without ever rejecting it: leading blanks and a
// sign are allowed, the longest prefix that is a decimal number counts, and a text without one
// reads as 0. Hexadecimal, infinity and not-a-number are not numbers here. Independent of any
// locale.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessary {

/// Saturates at the ends of 32 bits.
int32_t intValue(std::string_view text);
/// Saturates at the ends of 64 bits.
int64_t int64Value(std::string_view text);
/// Single precision. Too large becomes the largest finite number, too small 0.
float floatValue(std::string_view text);
/// Too large becomes the largest finite number, too small 0.
double doubleValue(std::string_view text);

// These two do reject.

/// Nothing unless all of `text` is a decimal number of 32 bits: digits, and a minus at the most.
std::optional<int32_t> wholeInt(std::string_view text);
/// The byte that the first two hexadecimal digits of `text` stand for; nothing without two.
std::optional<char> hexByte(std::string_view text);

}  // namespace tessary
