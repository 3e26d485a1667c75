#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tessary {

/// `text` (UTF-8) as it has to stand between the tags of HTML and XML. What neither may hold,
/// control characters and bytes that are no UTF-8, becomes U+FFFD; tabs and line breaks become
/// blanks.
std::string markupText(std::string_view text);

/// The first `limit` bytes of `text` (UTF-8), not in the middle of a character, and dots for the
/// rest; all of it if it is no longer than that.
std::string shortened(std::string_view text, size_t limit);

}  // namespace tessary
