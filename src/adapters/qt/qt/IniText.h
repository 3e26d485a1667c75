#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessary {

/// The text of an ini file, in which keys of the section [General] are read and set; all else in it
/// stays as it is. A value goes from the "=" to the end of its line, blanks around it left out. One
/// that would not survive this is put in quotes, inside which \" \\ \n \r \t and \x with two
/// hexadecimal digits stand for characters. Any text can be read, and takes its own size in memory.
/// Keys are plain words.
class IniText {
 public:
  explicit IniText(std::string_view text = {});

  /// Of several lines with one key the last counts.
  std::optional<std::string> value(std::string_view key) const;
  void setValue(std::string_view key, std::string_view value);
  /// Every line ends with a line end.
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace tessary
