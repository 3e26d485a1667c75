#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>

namespace tessary {

/// Keeps what was expensive to make for as long as it is asked for now and then, in bounded room:
/// when the newer half is full it becomes the older, and what was in the older half is forgotten.
///
/// `Hash` and `Equal` are transparent, so that something cheaper than a key finds what it is for.
template <typename Key, typename Value, typename Hash, typename Equal>
class RecentlyUsed {
 public:
  /// `room` is how much a half holds, in the units of `add`.
  explicit RecentlyUsed(size_t room) : room_(room) {}

  /// Null if there is none. Good until the next `add`.
  template <typename Lookup>
  const Value* find(const Lookup& lookup) {
    if (const auto newer = newer_.find(lookup); newer != newer_.end()) return &newer->second.value;
    const auto older = older_.find(lookup);
    if (older == older_.end()) return nullptr;
    used_ += older->second.weight;
    return &newer_.insert(older_.extract(older)).position->second.value;
  }

  /// Good until the next `add`.
  const Value& add(Key key, Value value, size_t weight) {
    if (used_ + weight > room_) {
      older_ = std::exchange(newer_, {});
      used_ = 0;
    }
    used_ += weight;
    return newer_.insert_or_assign(std::move(key), Entry{std::move(value), weight})
        .first->second.value;
  }

 private:
  struct Entry {
    Value value;
    size_t weight;
  };
  using Map = std::unordered_map<Key, Entry, Hash, Equal>;

  size_t room_;
  size_t used_ = 0;  // by newer_
  Map newer_;
  Map older_;
};

}  // namespace tessary
