#pragma once
// What an errno of a camera's driver means for the program, and how it is told.

#include <string>

namespace tessary {

enum class DriverError {
  None,
  /// The camera was pulled out. Ordinary: the stream ends without a word.
  Gone,
  /// Something that trying again may cure: a transfer that failed, a camera that did not answer.
  Passing,
  /// Trying again won't help.
  Lasting,
};

DriverError classify(int error) noexcept;

/// What is wrong and what to do about it, for a node that can't be opened or claimed.
std::string openFailureText(const std::string& devNode, int error);
/// The same for a stream that can't be started.
std::string streamFailureText(const std::string& cameraName, int error);

/// The system's words for `error`. Any thread.
std::string errorText(int error);

}  // namespace tessary
