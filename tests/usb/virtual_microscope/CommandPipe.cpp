#include "virtual_microscope/CommandPipe.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessary::lab {
namespace {

int openPipe(const std::string& path) {
  constexpr mode_t kForAll = 0666;
  if (mkfifo(path.c_str(), kForAll) != 0 && errno != EEXIST)
    throw std::system_error(errno, std::generic_category(), path);
  // Open for writing too: otherwise it would be at its end between two commands.
  const int fd = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) throw std::system_error(errno, std::generic_category(), path);
  return fd;
}

}  // namespace

CommandPipe::CommandPipe(const std::string& path) : fd_(openPipe(path)) {}

CommandPipe::~CommandPipe() { close(fd_); }

std::optional<std::string> CommandPipe::nextLine() {
  char buffer[256];
  for (ssize_t count = 0; (count = read(fd_, buffer, sizeof buffer)) > 0;)
    text_.append(buffer, size_t(count));
  const size_t end = text_.find('\n');
  if (end == std::string::npos) return std::nullopt;
  std::string line = text_.substr(0, end);
  text_.erase(0, end + 1);
  return line;
}

}  // namespace tessary::lab
