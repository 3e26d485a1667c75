#pragma once

#include <optional>
#include <string>
#include <vector>

#include "capture/MicroscopeRules.h"
#include "platform/Renderer.h"

namespace tessary {

/// What the words behind the program's name ask for.
struct CommandLine {
  Eligible eligible = Eligible::Microscopes;
  std::optional<Renderer> renderer;  ///< Nothing to leave it to the program.
  /// Set when the program is not to start: what `main` returns, 0 after a question that `answer`
  /// answers and 2 for words that are not understood, which `answer` says in one line.
  std::optional<int> exitStatus;
  std::string answer;

  /// Writes `answer`, to standard output or, if something is wrong, to standard error. Returns
  /// `exitStatus`, which is set.
  int tell() const;
};

/// Reads `words`, whose first is the program's name. Needs neither display nor toolkit object. The
/// toolkit's own words, such as "-platform wayland", are understood and left to it.
CommandLine readCommandLine(const std::vector<std::string>& words);

}  // namespace tessary
