#include "platform/qt/IniText.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace tessary {
namespace {

constexpr std::string_view kSection = "[General]";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isControl(char c) { return uint8_t(c) < 0x20 || c == 0x7F; }

std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// The key of a line, empty for one that sets nothing.
std::string_view keyOf(std::string_view line) {
  line = trimmed(line);
  if (line.starts_with(';') || line.starts_with('#') || line.starts_with('[')) return {};
  const size_t equals = line.find('=');
  return equals == std::string_view::npos ? std::string_view() : trimmed(line.substr(0, equals));
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// What stands between quotes, from behind the first one. Without a last one, up to the end.
std::string unquoted(std::string_view text) {
  std::string value;
  for (size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      value += text[i];
      continue;
    }
    const char c = text[++i];
    const int high = i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
    const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
    if (c == 'x' && high >= 0 && low >= 0) {
      value += char(high * 16 + low);
      i += 2;
    } else {
      value += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
    }
  }
  return value;
}

std::string valueOf(std::string_view line) {
  const std::string_view value = trimmed(line.substr(line.find('=') + 1));
  return value.starts_with('"') ? unquoted(value.substr(1)) : std::string(value);
}

std::string quoted(std::string_view value) {
  std::string text = "\"";
  for (const char c : value) {
    if (c == '"' || c == '\\')
      (text += '\\') += c;
    else if (isControl(c))
      fmt::format_to(std::back_inserter(text), "\\x{:02x}", uint8_t(c));
    else
      text += c;
  }
  return text += '"';
}

std::string lineOf(std::string_view key, std::string_view value) {
  const bool plain = trimmed(value) == value && !value.starts_with('"') &&
                     std::none_of(value.begin(), value.end(), isControl);
  return fmt::format("{}={}", key, plain ? std::string(value) : quoted(value));
}

}  // namespace

IniText::IniText(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    lines_.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

std::vector<IniText::Range> IniText::general() const {
  std::vector<Range> ranges{{0, 0}};
  bool inside = true;
  for (size_t i = 0; i < lines_.size(); ++i) {
    const std::string_view line = trimmed(lines_[i]);
    if (line.starts_with('[')) {
      inside = line == kSection;
      if (inside) ranges.push_back({i, i});
    }
    if (inside) ranges.back().end = i + 1;
  }
  return ranges;
}

std::optional<std::string> IniText::value(std::string_view key) const {
  std::optional<std::string> found;
  for (const Range& range : general())
    for (size_t i = range.begin; i < range.end; ++i)
      if (keyOf(lines_[i]) == key) found = valueOf(lines_[i]);
  return found;
}

void IniText::setValue(std::string_view key, std::string_view value) {
  std::vector<size_t> places;
  std::vector<Range> ranges = general();
  for (const Range& range : ranges)
    for (size_t i = range.begin; i < range.end; ++i)
      if (keyOf(lines_[i]) == key) places.push_back(i);
  if (!places.empty()) {
    lines_[places.back()] = lineOf(key, value);
    return;
  }

  if (ranges.size() == 1) {
    // In front of the other sections, behind what stands in none.
    const size_t place = ranges.back().end;
    if (place < lines_.size()) lines_.insert(lines_.begin() + ptrdiff_t(place), std::string());
    lines_.insert(lines_.begin() + ptrdiff_t(place), std::string(kSection));
    ranges.push_back({place, place + 1});
  }
  size_t place = ranges.back().end;
  while (trimmed(lines_[place - 1]).empty()) --place;  // before the gap to the next section
  lines_.insert(lines_.begin() + ptrdiff_t(place), lineOf(key, value));
}

std::string IniText::text() const {
  std::string text;
  for (const std::string& line : lines_) (text += line) += '\n';
  return text;
}

}  // namespace tessary
