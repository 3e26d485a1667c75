#pragma once

#include <cassert>
#include <concepts>
#include <optional>
#include <string>
#include <utility>

namespace tessary {

/// Why something failed, in plain words; never empty.
struct Error {
  std::string text;
};

/// What a call that may fail comes to: a value, or an error. Where callers decide by a system
/// call's error number, that is what a function returns instead, 0 for none.
template <typename T>
class [[nodiscard]] Result {
 public:
  template <std::convertible_to<T> U>  // which a Result is not
  // NOLINTNEXTLINE(bugprone-forwarding-reference-overload)
  Result(U&& value) : value_(std::forward<U>(value)) {}
  Result(Error error) : error_(std::move(error.text)) {}

  explicit operator bool() const noexcept { return value_.has_value(); }
  // Only with a value.
  T& operator*() & {
    assert(value_);
    return *value_;
  }
  T&& operator*() && {
    assert(value_);
    return *std::move(value_);
  }
  /// Empty with a value.
  const std::string& error() const noexcept { return error_; }

 private:
  std::optional<T> value_;
  std::string error_;
};

/// Nothing, or an error.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Error error) : error_(std::move(error.text)) {}

  explicit operator bool() const noexcept { return error_.empty(); }
  const std::string& error() const noexcept { return error_; }

 private:
  std::string error_;
};

}  // namespace tessary
