#include "linux/CameraIdentity.h"

#include <optional>

#include <fmt/format.h>

#include "base/Number.h"

namespace tessary {
namespace {

// Length of the well-formed UTF-8 sequence that `text` starts with, 0 if it starts with none.
size_t utf8Length(std::string_view text) {
  const auto byte = [&](size_t i) { return i < text.size() ? uint8_t(text[i]) : uint8_t(0); };
  const auto follows = [&](size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
    return byte(i) >= low && byte(i) <= high;
  };
  const uint8_t lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : 0xBF;
    return follows(1, low, high) && follows(2) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
    return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
  }
  return 0;
}

}  // namespace

std::string usbModelID(uint32_t vendorID, uint32_t productID) {
  return fmt::format("UVC Camera VendorID_{} ProductID_{}", vendorID, productID);
}

std::string unescapeUdev(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    std::optional<char> byte;
    if (text.substr(i).starts_with("\\x")) byte = hexByte(text.substr(i + 2));
    plain += byte.value_or(text[i]);
    if (byte) i += 3;
  }
  return plain;
}

std::string printableText(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const size_t length = utf8Length(text);
    const bool control = length == 1 && (uint8_t(text[0]) < 0x20 || text[0] == 0x7F);
    if (length == 0 || control)
      clean += '?';
    else
      clean += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return clean;
}

std::string portIdentity(const NodeRecord& node) {
  std::string identity = node.path;
  if (node.isUsb) identity += fmt::format("-{:04x}:{:04x}", node.vendorID, node.productID);
  const std::string serial = printableText(node.serial);
  if (!serial.empty()) identity += "-" + serial;
  if (!node.index.empty()) identity += "-index" + node.index;
  return printableText(identity);
}

std::string displayName(const NodeRecord& node, const std::string& card) {
  std::string name = printableText(node.product);
  if (name.empty()) name = printableText(card);
  if (name.empty()) name = "Camera";
  return name;
}

}  // namespace tessary
