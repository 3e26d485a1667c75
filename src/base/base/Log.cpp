#include "base/Log.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileDescriptor.h"

namespace tessary {
namespace {

/// Standard error, which may be a pipe that nobody reads or a terminal that was told to pause: a
/// line that can't be written at once is lost, and counted.
class StandardError {
 public:
  void write(std::string_view line) {
    if (lost_ > 0 && tryToWrite(fmt::format("{} lines of the log were lost\n", lost_))) lost_ = 0;
    if (lost_ > 0 || !tryToWrite(line)) ++lost_;
  }

 private:
  bool tryToWrite(std::string_view text) {
    look();
    if (brokenOff_ && !writeSome("\n")) return false;
    brokenOff_ = false;
    const size_t size = text.size();
    while (!text.empty()) {
      const size_t written = writeSome(text);
      brokenOff_ = written == 0 && text.size() < size;
      if (written == 0) return false;
      text.remove_prefix(written);
    }
    return true;
  }

  /// Opens a pipe or a terminal once more: whether writing to it waits is then ours alone to say,
  /// and not shared with the other programs that write there.
  void look() {
    struct stat status {};
    const bool isThere = ::fstat(STDERR_FILENO, &status) == 0;
    if (isThere && status.st_dev == device_ && status.st_ino == number_) return;
    own_.close();
    device_ = status.st_dev;
    number_ = status.st_ino;
    isSocket_ = S_ISSOCK(status.st_mode);
    if (isThere && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)))
      own_ = FileDescriptor(
          ::open("/proc/self/fd/2", O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  }

  /// How many bytes went out at once.
  size_t writeSome(std::string_view text) const {
    text = text.substr(0, PIPE_BUF);  // a pipe with room takes so much
    const int fd = own_.isOpen() ? own_.get() : STDERR_FILENO;
    ssize_t written = 0;
    do {
      if (isSocket_) {
        written = ::send(fd, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      } else {
        pollfd output{fd, POLLOUT, 0};
        if (::poll(&output, 1, 0) != 1 || !(output.revents & POLLOUT)) return 0;
        written = ::write(fd, text.data(), text.size());
      }
    } while (written < 0 && errno == EINTR);
    return written < 0 ? 0 : size_t(written);
  }

  FileDescriptor own_;
  dev_t device_ = 0;
  ino_t number_ = 0;
  bool isSocket_ = false;
  bool brokenOff_ = false;  // the last line went out in part
  uint64_t lost_ = 0;
};

std::mutex s_mutex;  // guards all below and keeps lines whole
std::function<void(std::string_view)> s_sink;

void writeToStandardError(std::string_view line) {
  using namespace std::chrono;
  // Never destroyed: there may be something to say until the very end.
  static auto& s_standardError = *new StandardError;
  const auto now = floor<milliseconds>(system_clock::now());
  const auto fraction = int((now - floor<seconds>(now)).count());
  s_standardError.write(fmt::format("{:%H:%M:%S}.{:03} {}\n",
                                    fmt::localtime(system_clock::to_time_t(now)), fraction, line));
}

}  // namespace

void logLine(std::string_view line) {
  const std::lock_guard lock(s_mutex);
  if (s_sink)
    s_sink(line);
  else
    writeToStandardError(line);
}

LogRedirection::LogRedirection(std::function<void(std::string_view)> sink) {
  const std::lock_guard lock(s_mutex);
  previous_ = std::exchange(s_sink, std::move(sink));
}

LogRedirection::~LogRedirection() {
  const std::lock_guard lock(s_mutex);
  s_sink = std::move(previous_);
}

}  // namespace tessary
