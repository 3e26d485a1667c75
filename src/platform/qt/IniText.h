#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessary {

/// The text of an ini file, in which keys of the section [General] are read and set; all else in it
/// stays as it is. A value goes from the "=" to the end of its line, blanks around it left out. One
/// that would not survive this is put in quotes, inside which \" \\ \n \r \t and \x with two
/// hexadecimal digits stand for characters. Any text can be read. Keys are plain words.
class IniText {
 public:
  explicit IniText(std::string_view text = {});

  /// Of several lines with one key the last counts.
  std::optional<std::string> value(std::string_view key) const;
  void setValue(std::string_view key, std::string_view value);
  std::string text() const;

 private:
  /// Line numbers at which section [General] begins and ends; lines before any section are its too.
  struct Range {
    size_t begin;
    size_t end;
  };
  std::vector<Range> general() const;

  std::vector<std::string> lines_;
};

}  // namespace tessary
