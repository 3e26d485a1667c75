#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessary {

/// A per-user table from keys to values that outlives the process. Main thread.
class KeyValueStore {
 public:
  using Bytes = std::vector<uint8_t>;
  using Value = std::variant<int64_t, std::string, Bytes>;
  using Entry = std::pair<std::string, Value>;

  virtual ~KeyValueStore() = default;
  /// What is stored under `key`, or nothing. A backing that keeps everything as text may answer
  /// with a string for a stored number or stored bytes. Whatever bytes are stored: never a failure.
  virtual std::optional<Value> value(const std::string& key) = 0;
  /// Stores all entries. When it returns they survive the process being killed. A store that can't
  /// be written keeps them for this run and logs what is wrong.
  virtual void store(std::span<const Entry> entries) = 0;
};

}  // namespace tessary
