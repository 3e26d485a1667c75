#pragma once

#include <optional>
#include <string>

namespace tessary::lab {

/// A named pipe that takes commands, a line each, from `echo COMMAND > PIPE`.
class CommandPipe {
 public:
  /// Made if it is not there. Throws std::system_error.
  explicit CommandPipe(const std::string& path);
  ~CommandPipe();
  CommandPipe(const CommandPipe&) = delete;
  CommandPipe& operator=(const CommandPipe&) = delete;

  int fd() const { return fd_; }
  /// The next whole line, if one has come.
  std::optional<std::string> nextLine();

 private:
  int fd_;
  std::string text_;
};

}  // namespace tessary::lab
