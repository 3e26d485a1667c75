#include "qt/IniText.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "base/Number.h"

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

/// What stands between quotes, from behind the first one. Without a last one, up to the end.
std::string unquoted(std::string_view text) {
  std::string value;
  for (size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      value += text[i];
      continue;
    }
    const char c = text[++i];
    const auto byte = c == 'x' ? hexByte(text.substr(i + 1)) : std::nullopt;
    if (byte) {
      value += *byte;
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

/// Walks over the lines of a text that ends with a line end.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  bool next() {
    begin_ = end_;
    if (begin_ == text_.size()) return false;
    end_ = text_.find('\n', begin_) + 1;
    const std::string_view name = trimmed(line());
    isSectionName_ = name.starts_with('[');
    if (isSectionName_) isGeneral_ = name == kSection;
    return true;
  }
  /// Without its end.
  std::string_view line() const { return text_.substr(begin_, end_ - begin_ - 1); }
  size_t begin() const { return begin_; }
  size_t end() const { return end_; }
  /// Lines before any section are the section's too.
  bool isGeneral() const { return isGeneral_; }
  bool isSectionName() const { return isSectionName_; }

 private:
  std::string_view text_;
  size_t begin_ = 0;
  size_t end_ = 0;
  bool isGeneral_ = true;
  bool isSectionName_ = false;
};

}  // namespace

IniText::IniText(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  text_ = text;
  if (!text_.empty() && !text_.ends_with('\n')) text_ += '\n';
}

std::optional<std::string> IniText::value(std::string_view key) const {
  std::optional<std::string_view> found;
  for (Lines lines(text_); lines.next();)
    if (lines.isGeneral() && keyOf(lines.line()) == key) found = lines.line();
  if (!found) return std::nullopt;
  return valueOf(*found);
}

void IniText::setValue(std::string_view key, std::string_view value) {
  std::optional<size_t> found;
  size_t foundSize = 0;
  bool hasSection = false;
  size_t place = 0;  // behind the last line of the section that is not empty
  for (Lines lines(text_); lines.next();) {
    if (!lines.isGeneral()) continue;
    // Lines before any section are the section's, but a new key goes where it has its name.
    if (lines.isSectionName()) hasSection = true;
    if (!trimmed(lines.line()).empty() || !hasSection) place = lines.end();
    if (keyOf(lines.line()) != key) continue;
    found = lines.begin();
    foundSize = lines.line().size();
  }
  if (found) {
    text_.replace(*found, foundSize, lineOf(key, value));
    return;
  }
  std::string added = lineOf(key, value) + '\n';
  if (!hasSection) {
    // In front of the other sections, behind what stands in none.
    added = fmt::format("{}\n{}{}", kSection, added, place < text_.size() ? "\n" : "");
  }
  text_.insert(place, added);
}

}  // namespace tessary
