#pragma once

#include <memory>
#include <utility>

namespace tessary {

/// Keeps what was posted for an object from running after the object's end: a member of it, the
/// last one where the order matters. A new one takes the place of another only for work posted from
/// then on.
class Lifetime {
 public:
  Lifetime() = default;
  Lifetime(const Lifetime&) = delete;
  Lifetime& operator=(const Lifetime&) = delete;

  /// `work`, which does nothing once this has ended. It may be made and carried on any thread while
  /// this lives, and is to be run on the thread on which this ends.
  template <typename Work>
  auto guard(Work work) const {
    return [weak = std::weak_ptr(lives_), work = std::move(work)](auto&&... arguments) {
      if (!weak.expired()) work(std::forward<decltype(arguments)>(arguments)...);
    };
  }

 private:
  const std::shared_ptr<const bool> lives_ = std::make_shared<const bool>(true);
};

}  // namespace tessary
