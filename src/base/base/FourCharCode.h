#pragma once

#include <cstdint>

namespace tessary {

/// 'abcd' as a number, first character in the highest byte.
constexpr uint32_t fourCharCode(const char (&text)[5]) {
  return uint32_t(uint8_t(text[0])) << 24 | uint32_t(uint8_t(text[1])) << 16 |
         uint32_t(uint8_t(text[2])) << 8 | uint32_t(uint8_t(text[3]));
}

/// Media subtypes of camera formats.
inline constexpr uint32_t kMediaSubTypeMJPEG = fourCharCode("dmb1");
inline constexpr uint32_t kMediaSubTypeYUYV = fourCharCode("yuvs");
inline constexpr uint32_t kMediaSubTypeUYVY = fourCharCode("2vuy");
inline constexpr uint32_t kMediaSubTypeNV12 = fourCharCode("420v");

/// How a camera is attached: over USB.
inline constexpr uint32_t kTransportTypeUSB = fourCharCode("usb ");

}  // namespace tessary
