#include "dialogs/LengthText.h"

#include <algorithm>

namespace tessary {

std::optional<std::string> lengthText(std::string_view typed) {
  std::string text(typed);
  std::replace(text.begin(), text.end(), ',', '.');
  if (std::count(text.begin(), text.end(), '.') > 1) return std::nullopt;
  return text;
}

}  // namespace tessary
