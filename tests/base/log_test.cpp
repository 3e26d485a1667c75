#include "base/Log.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include "LogCapture.h"
#include "WaitLimit.h"
#include "base/FileDescriptor.h"

namespace tessary {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

TEST(Log, ALineGoesToStandardErrorWithItsTime) {
  ::testing::internal::CaptureStderr();
  log("{} of {}", 3, "ten");
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9].[0-9][0-9][0-9] 3 of ten\n"));
}

enum class Channel { Pipe, Socket, Terminal };

/// Standard error as one of these, whose reading end is ours.
class LogPipe {
 public:
  explicit LogPipe(Channel channel = Channel::Pipe) {
    int ends[2] = {-1, -1};
    switch (channel) {
      case Channel::Pipe: EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0); break;
      case Channel::Socket:
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        break;
      case Channel::Terminal: openTerminal(ends);
    }
    reading = FileDescriptor(ends[0]);
    const FileDescriptor writing(ends[1]);
    ::dup2(writing.get(), STDERR_FILENO);
  }
  ~LogPipe() { ::dup2(before_.get(), STDERR_FILENO); }
  LogPipe(const LogPipe&) = delete;
  LogPipe& operator=(const LogPipe&) = delete;

  /// What is in the pipe now.
  std::string read() const {
    std::string all;
    char some[65536];
    ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
    for (ssize_t count; (count = ::read(reading.get(), some, sizeof some)) > 0;)
      all.append(some, size_t(count));
    return all;
  }

  FileDescriptor reading{-1};

 private:
  static void openTerminal(int (&ends)[2]) {
    ends[0] = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::unlockpt(ends[0]), 0);
    ends[1] = ::open(::ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    ASSERT_EQ(::tcgetattr(ends[1], &settings), 0);
    ::cfmakeraw(&settings);  // line ends stay as they are
    ASSERT_EQ(::tcsetattr(ends[1], TCSANOW, &settings), 0);
  }

  const FileDescriptor before_{::dup(STDERR_FILENO)};
};

constexpr int kLines = 5000;  // more than anything takes that nobody reads

/// Writes them all, though nobody reads.
void expectNoWait(const LogPipe& pipe) {
  auto written = std::async(std::launch::async, [] {
    for (int i = 0; i < kLines; ++i) log("line {} of many that nobody reads", i);
  });
  const bool ended = written.wait_for(test::kWaitLimit) == std::future_status::ready;
  EXPECT_TRUE(ended) << "the log holds up who writes to it";
  while (!ended && written.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
    pipe.read();
}

TEST(Log, WhatNobodyReadsHoldsUpNothingAndWhatIsLostIsCounted) {
  for (const Channel channel : {Channel::Pipe, Channel::Socket}) {
    SCOPED_TRACE(int(channel));
    const LogPipe pipe(channel);
    expectNoWait(pipe);
    const auto linesOf = [](const std::string& text) {
      return int(std::ranges::count(text, '\n'));
    };
    const int inPipe = linesOf(pipe.read());
    EXPECT_GT(inPipe, 100);
    EXPECT_LT(inPipe, kLines);
    log("room again");
    EXPECT_THAT(pipe.read(),
                MatchesRegex(fmt::format("{} lines of the log were lost\n.* room again\n",
                                         kLines - inPipe)));
  }
}

// What it has taken comes out a little later, so lines are not counted here.
TEST(Log, ATerminalThatNobodyReadsHoldsUpNothingAndTellsWhatIsLost) {
  const LogPipe terminal(Channel::Terminal);
  expectNoWait(terminal);
  const auto end = std::chrono::steady_clock::now() + test::kWaitLimit;
  std::string text;
  while (text.find(" lines of the log were lost\n") == std::string::npos) {
    ASSERT_LT(std::chrono::steady_clock::now(), end);
    text += terminal.read();
    log("room again");
  }
}

TEST(Log, ALineThatIsLongerThanThePipeIsCutOffAndTheNextBeginsAnew) {
  const LogPipe pipe;
  log("{}", std::string(1 << 18, 'x'));
  const std::string cut = pipe.read();
  EXPECT_THAT(cut, EndsWith("xxx"));
  log("next");
  EXPECT_THAT(pipe.read(), MatchesRegex("\n1 lines of the log were lost\n.* next\n"));
}

TEST(Log, AReaderThatHasGoneEndsNothing) {
  struct Row {
    Channel channel;
    void (*brokenPipe)(int);
  };
  // A pipe's signal is ignored in the program, and a socket has none to begin with.
  for (const Row& row : {Row{Channel::Pipe, SIG_IGN}, Row{Channel::Socket, SIG_DFL}}) {
    const auto before = std::signal(SIGPIPE, row.brokenPipe);
    {
      LogPipe pipe(row.channel);
      pipe.reading.close();
      log("nobody");
    }
    const LogPipe pipe;
    log("somebody");
    EXPECT_THAT(pipe.read(), MatchesRegex("1 lines of the log were lost\n.* somebody\n"));
    std::signal(SIGPIPE, before);
  }
}

TEST(Log, TextThatLooksLikeAFormatIsLeftAlone) {
  const test::LogCapture capture;
  log("name: {}", "{} %s {0:d}");
  logLine("{}");
  EXPECT_THAT(capture.lines(), ElementsAre("name: {} %s {0:d}", "{}"));
}

TEST(Log, RedirectionsNest) {
  const test::LogCapture outer;
  {
    const test::LogCapture inner;
    log("in");
    EXPECT_THAT(inner.lines(), ElementsAre("in"));
    EXPECT_THAT(outer.lines(), IsEmpty());
  }
  log("out");
  EXPECT_THAT(outer.lines(), ElementsAre("out"));
}

TEST(Log, LinesOfSeveralThreadsStayWhole) {
  const test::LogCapture capture;
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([t] {
        for (int i = 0; i < 100; ++i) log("thread {} line", t);
      });
  }
  const std::vector<std::string> lines = capture.lines();
  EXPECT_EQ(lines.size(), 400U);
  for (const std::string& line : lines) EXPECT_THAT(line, MatchesRegex("thread [0-3] line"));
}

}  // namespace
}  // namespace tessary
