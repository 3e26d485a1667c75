#pragma once

#include <map>
#include <string>

#include "base/Failures.h"

namespace tessary::test {

/// Keeps what it was told and was not taken back, and counts.
class FakeFailureListener final : public FailureListener {
 public:
  void failed(Failure failure, const std::string& text) override {
    texts_[failure] = text;
    ++told_;
  }
  void recovered(Failure failure) override { texts_.erase(failure); }

  /// What the user would read; empty for nothing.
  std::string text(Failure failure) const {
    const auto found = texts_.find(failure);
    return found == texts_.end() ? std::string() : found->second;
  }
  int told() const { return told_; }

 private:
  std::map<Failure, std::string> texts_;
  int told_ = 0;
};

}  // namespace tessary::test
