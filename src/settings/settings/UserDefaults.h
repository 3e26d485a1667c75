#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "platform/KeyValueStore.h"

namespace tessary {

/// The per-user table of settings: what was written lies in the store; a key that was never written
/// answers with its registered default, which is itself never stored. Main thread.
class UserDefaults {
 public:
  using Bytes = KeyValueStore::Bytes;
  using Value = KeyValueStore::Value;
  using Entry = KeyValueStore::Entry;

  /// `store` has to outlive this object.
  explicit UserDefaults(KeyValueStore& store) : store_(store) {}

  void registerDefaults(const std::string& key, Value value);

  /// A stored value of the wrong kind hides the default like any other; it then reads as nothing.
  std::optional<Value> objectForKey(const std::string& key) const;
  /// A number is given as decimal text.
  std::optional<std::string> stringForKey(const std::string& key) const;
  /// A text is read as far as it is a number; 0 without one.
  int64_t integerForKey(const std::string& key) const;
  /// A text is given as its bytes, so that a value edited by hand counts too.
  std::optional<Bytes> dataForKey(const std::string& key) const;

  /// What is stored, whatever the default is, as text.
  std::optional<std::string> storedText(const std::string& key) const;

  /// Takes note of what another run has stored meanwhile.
  void synchronize() { store_.refresh(); }
  void setObject(const std::string& key, Value value);
  /// Stores all entries in one go. Like all writing here, it has reached the store on return.
  void setObjects(std::span<const Entry> entries);

 private:
  KeyValueStore& store_;
  std::map<std::string, Value> registered_;
};

}  // namespace tessary
