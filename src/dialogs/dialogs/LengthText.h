#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessary {

/// What a field for a length takes over from `typed`: numbers are read with a decimal point only,
/// so a decimal comma becomes one, and what the field shows is what will be read. Nothing for a
/// text with two separators, which could be read in more than one way.
std::optional<std::string> lengthText(std::string_view typed);

}  // namespace tessary
