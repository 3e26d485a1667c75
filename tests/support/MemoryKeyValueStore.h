#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "platform/KeyValueStore.h"

namespace tessary::test {

/// A table in memory, open to the test.
class MemoryKeyValueStore final : public KeyValueStore {
 public:
  std::optional<Value> value(const std::string& key) override {
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    return found->second;
  }
  void store(std::span<const Entry> entries) override {
    ++storeCalls;
    for (const auto& [key, value] : entries) values[key] = value;
    if (didStore) didStore();
  }

  void setProblemHandler(ProblemHandler handler) override { tellProblem = std::move(handler); }

  std::map<std::string, Value> values;
  ProblemHandler tellProblem;
  int storeCalls = 0;
  std::function<void()> didStore;  ///< Called after each batch, if set.
};

}  // namespace tessary::test
