#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/Failures.h"

namespace tessary {

/// What the line over the picture says, and for how long: of several failures the one told last. A
/// message goes with its cause, and after ten seconds in sight otherwise; why there is no picture
/// stays until it is put right, since there is nothing to cover. What comes into sight is logged.
/// Main thread.
class FailureMessages final : public FailureListener {
 public:
  static constexpr int kSecondsShown = 10;

  /// `didChange` is called whenever `text` has.
  void setDidChange(std::function<void()> didChange) { didChange_ = std::move(didChange); }

  void failed(Failure failure, const std::string& text) override;
  void recovered(Failure failure) override;
  /// The text in sight has been in sight for a second more.
  void secondPassed();

  /// The message to show; empty for none.
  std::string text() const;
  /// The same for those who hear it: once for each failure, empty when it was taken.
  std::string takeUnsaid();

 private:
  struct Message {
    Failure failure;
    std::string text;
    int secondsLeft;
    bool isSaid;
  };

  void changed() const;

  std::vector<Message> messages_;  // the one told last stands last
  std::function<void()> didChange_;
};

}  // namespace tessary
