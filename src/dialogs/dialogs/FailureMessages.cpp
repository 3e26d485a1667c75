#include "dialogs/FailureMessages.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"

namespace tessary {
namespace {

/// Whether it is told until it is over: there is no picture meanwhile.
bool lasts(Failure failure) {
  return failure == Failure::Camera || failure == Failure::FrameTooSmall;
}

}  // namespace

void FailureMessages::failed(Failure failure, const std::string& text) {
  const std::string before = this->text();
  // What is told again while it lasts was said. A picture that is not saved is another one each
  // time.
  const bool isSaid =
      failure != Failure::StillNotSaved && std::ranges::any_of(messages_, [&](const Message& each) {
        return each.isSaid && each.failure == failure && each.text == text;
      });
  std::erase_if(messages_, [failure](const Message& each) { return each.failure == failure; });
  messages_.push_back({failure, text, kSecondsShown, isSaid});
  if (text == before) return;
  log("{}", text);
  changed();
}

void FailureMessages::recovered(Failure failure) {
  const std::string before = text();
  std::erase_if(messages_, [failure](const Message& each) { return each.failure == failure; });
  if (text() != before) changed();
}

void FailureMessages::secondPassed() {
  if (messages_.empty()) return;
  Message& shown = messages_.back();
  if (lasts(shown.failure) || --shown.secondsLeft > 0) return;
  messages_.pop_back();
  changed();
}

std::string FailureMessages::text() const {
  return messages_.empty() ? std::string() : messages_.back().text;
}

std::string FailureMessages::takeUnsaid() {
  if (messages_.empty() || std::exchange(messages_.back().isSaid, true)) return {};
  return messages_.back().text;
}

void FailureMessages::changed() const {
  if (didChange_) didChange_();
}

}  // namespace tessary
