#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <fmt/format.h>

namespace tessary {

/// A per-user table from keys to values that outlives the process. Main thread.
class KeyValueStore {
 public:
  using Bytes = std::vector<uint8_t>;
  using Value = std::variant<int64_t, std::string, Bytes>;
  using Entry = std::pair<std::string, Value>;

  /// What a value is where all is kept as text.
  static std::string textOf(const Value& value) {
    if (const auto* number = std::get_if<int64_t>(&value)) return fmt::format("{}", *number);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const auto& bytes = std::get<Bytes>(value);
    return {bytes.begin(), bytes.end()};
  }

  virtual ~KeyValueStore() = default;
  /// What is stored under `key`, or nothing. A backing that keeps everything as text may answer
  /// with a string for a stored number or stored bytes. Whatever bytes are stored: never a failure.
  virtual std::optional<Value> value(const std::string& key) = 0;
  /// Takes note of what others have stored meanwhile.
  virtual void refresh() {}
  /// Stores all entries. When it returns they survive the process being killed. A store that can't
  /// be written keeps them for this run, logs what is wrong, and tells.
  virtual void store(std::span<const Entry> entries) = 0;

  /// Told what is wrong, in plain words, whenever what is stored can't be read or kept, and an
  /// empty text when that has passed.
  using ProblemHandler = std::function<void(const std::string& problem)>;
  /// Told at once of what is wrong already.
  virtual void setProblemHandler(ProblemHandler handler) = 0;
};

}  // namespace tessary
