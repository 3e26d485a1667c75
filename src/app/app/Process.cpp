#include "app/Process.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "base/Log.h"
#include "base/SerialQueue.h"

namespace tessary {
namespace {

/// A movie has eight seconds to be finished, and what else waits for a disk has some more.
constexpr std::chrono::seconds kEndLimit{13};

std::atomic<WakeUp*> s_asked{nullptr};
std::function<void()> s_brokenOff;

void noteSignal(int) {
  const int error = errno;
  if (WakeUp* asked = s_asked) asked->signal();
  errno = error;
}

/// The first of the exit handlers to run, as it is entered last.
void endBrokenOff() {
  if (!s_brokenOff) return;
  std::exchange(s_brokenOff, nullptr)();
  std::_Exit(EXIT_FAILURE);
}

void logMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
  logLine(message.toStdString());
}

/// Without them the next file that is opened would take the place of the log.
void openStandardFiles() {
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDWR);
  const FileDescriptor oneTooMany(fd);
}

}  // namespace

Process::Process() {
  openStandardFiles();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  qInstallMessageHandler(logMessage);
}

Process::~Process() {
  s_asked = nullptr;
  s_brokenOff = nullptr;
  if (SerialQueue::abandonedThreads() > 0) std::_Exit(status_);
}

void Process::setEndHandler(std::function<void()> end) {
  notifier_ = std::make_unique<QSocketNotifier>(asked_.fd(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this, end = std::move(end)] {
                     asked_.drain();
                     end();
                   });
  s_asked = &asked_;
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    struct sigaction action {};
    // Ignored from the start, it was meant to outlive its terminal.
    if (signal == SIGHUP && ::sigaction(signal, nullptr, &action) == 0 &&
        action.sa_handler == SIG_IGN)
      continue;
    action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
  }
}

void Process::setBrokenOffHandler(std::function<void()> end) {
  static const bool s_entered = std::atexit(endBrokenOff) == 0;
  if (!s_entered) log("A display that goes will break off a recording");
  s_brokenOff = std::move(end);
}

void Process::beginEnd(int status) {
  status_ = status;
  notifier_.reset();
  std::thread([status] {
    std::this_thread::sleep_for(kEndLimit);
    log("Something hangs: the program ends without it");
    std::_Exit(status);
  }).detach();
}

}  // namespace tessary
