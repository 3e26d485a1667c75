#pragma once
// Numbers read out of stored or typed text, without ever rejecting it: leading blanks and a sign
// are allowed, the longest prefix that is a decimal number counts, and a text without one reads as
// 0. Hexadecimal, infinity and not-a-number are not numbers here. Independent of any locale.

#include <cstdint>
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

}  // namespace tessary
