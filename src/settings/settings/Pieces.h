#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tessary {

/// Walks over the pieces of a text between separators. As many pieces as separators and one more:
/// an empty text is one empty piece. The text has to outlive this object.
class Pieces {
 public:
  Pieces(std::string_view text, char separator) : rest_(text), separator_(separator) {}

  /// The next piece, or nothing after the last one.
  std::optional<std::string_view> next() {
    if (!rest_) return std::nullopt;
    const size_t end = rest_->find(separator_);
    const std::string_view piece = rest_->substr(0, end);
    if (end == std::string_view::npos)
      rest_.reset();
    else
      rest_->remove_prefix(end + 1);
    return piece;
  }

 private:
  std::optional<std::string_view> rest_;
  char separator_;
};

/// The pieces of `text`, or nothing if there are not exactly `Count`.
template <size_t Count>
std::optional<std::array<std::string_view, Count>> exactPieces(std::string_view text,
                                                               char separator) {
  std::array<std::string_view, Count> found;
  Pieces pieces(text, separator);
  for (std::string_view& piece : found) {
    const std::optional<std::string_view> next = pieces.next();
    if (!next) return std::nullopt;
    piece = *next;
  }
  if (pieces.next()) return std::nullopt;
  return found;
}

}  // namespace tessary
