#include "dialogs/FailureMessages.h"

namespace tessary {

void FailureMessages::failed(Failure failure, const std::string& text) {
  const std::string before = this->text();
  std::erase_if(messages_, [failure](const Message& each) { return each.failure == failure; });
  messages_.push_back({failure, text, kSecondsShown});
  if (text != before) changed();
}

void FailureMessages::recovered(Failure failure) {
  const std::string before = text();
  std::erase_if(messages_, [failure](const Message& each) { return each.failure == failure; });
  if (text() != before) changed();
}

void FailureMessages::secondPassed() {
  if (messages_.empty()) return;
  Message& shown = messages_.back();
  if (shown.failure == Failure::Camera || --shown.secondsLeft > 0) return;
  messages_.pop_back();
  changed();
}

std::string FailureMessages::text() const {
  return messages_.empty() ? std::string() : messages_.back().text;
}

void FailureMessages::changed() const {
  if (didChange_) didChange_();
}

}  // namespace tessary
