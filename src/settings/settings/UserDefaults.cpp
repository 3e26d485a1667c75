#include "settings/UserDefaults.h"

#include <utility>

#include <fmt/format.h>

#include "base/Number.h"

namespace tessary {

void UserDefaults::registerDefaults(const std::string& key, Value value) {
  registered_[key] = std::move(value);
}

std::optional<UserDefaults::Value> UserDefaults::objectForKey(const std::string& key) const {
  if (std::optional<Value> stored = store_.value(key)) return stored;
  const auto found = registered_.find(key);
  if (found == registered_.end()) return std::nullopt;
  return found->second;
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
  const std::optional<Value> object = objectForKey(key);
  if (!object) return std::nullopt;
  if (const auto* text = std::get_if<std::string>(&*object)) return *text;
  if (const auto* number = std::get_if<int64_t>(&*object)) return fmt::format("{}", *number);
  return std::nullopt;
}

int64_t UserDefaults::integerForKey(const std::string& key) const {
  const std::optional<Value> object = objectForKey(key);
  if (!object) return 0;
  if (const auto* number = std::get_if<int64_t>(&*object)) return *number;
  if (const auto* text = std::get_if<std::string>(&*object)) return int64Value(*text);
  return 0;
}

std::optional<UserDefaults::Bytes> UserDefaults::dataForKey(const std::string& key) const {
  const std::optional<Value> object = objectForKey(key);
  if (!object) return std::nullopt;
  if (const auto* bytes = std::get_if<Bytes>(&*object)) return *bytes;
  if (const auto* text = std::get_if<std::string>(&*object))
    return Bytes(text->begin(), text->end());
  return std::nullopt;
}

std::optional<std::string> UserDefaults::storedText(const std::string& key) const {
  const std::optional<Value> stored = store_.value(key);
  if (!stored) return std::nullopt;
  return KeyValueStore::textOf(*stored);
}

void UserDefaults::setObject(const std::string& key, Value value) {
  const Entry entry(key, std::move(value));
  store_.store({&entry, 1});
}

void UserDefaults::setObjects(std::span<const Entry> entries) { store_.store(entries); }

}  // namespace tessary
