#include "dialogs/FailureMessages.h"

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
  std::erase_if(messages_, [failure](const Message& each) { return each.failure == failure; });
  messages_.push_back({failure, text, kSecondsShown});
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

void FailureMessages::changed() const {
  if (didChange_) didChange_();
}

}  // namespace tessary
