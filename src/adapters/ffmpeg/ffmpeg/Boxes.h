#pragma once
// The little that is to be known of a QuickTime file's boxes: a length of 32 bits, big end first,
// and a type of four characters stand before each.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace tessary::box {

constexpr size_t kHeaderSize = 8;
/// A header with a length of 64 bits.
constexpr size_t kLargeHeaderSize = 16;

/// The header of a box of `size` bytes, header included.
std::array<uint8_t, kHeaderSize> header(uint32_t size, std::string_view type);
std::array<uint8_t, kLargeHeaderSize> largeHeader(uint64_t size, std::string_view type);

/// Where the first box of `type` lies in a row of boxes, or the end of `bytes`.
size_t find(std::span<const uint8_t> bytes, std::string_view type);
/// Where that box's payload begins, or 0 if there is none.
size_t payloadOf(std::span<const uint8_t> bytes, std::string_view type);

}  // namespace tessary::box
