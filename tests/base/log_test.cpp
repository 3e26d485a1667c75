#include "base/Log.h"

#include <algorithm>
#include <csignal>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "LogCapture.h"
#include "Patience.h"
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

/// Standard error as a pipe, whose reading end is ours.
class LogPipe {
 public:
  LogPipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    reading = FileDescriptor(ends[0]);
    const FileDescriptor writing(ends[1]);
    ::dup2(writing.get(), STDERR_FILENO);
  }
  ~LogPipe() { ::dup2(before_.get(), STDERR_FILENO); }
  LogPipe(const LogPipe&) = delete;
  LogPipe& operator=(const LogPipe&) = delete;

  /// What is in the pipe now.
  std::string read() const {
    std::string text(1 << 20, '\0');
    ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
    const ssize_t count = ::read(reading.get(), text.data(), text.size());
    return text.substr(0, size_t(std::max<ssize_t>(count, 0)));
  }

  FileDescriptor reading{-1};

 private:
  const FileDescriptor before_{::dup(STDERR_FILENO)};
};

TEST(Log, APipeThatNobodyReadsHoldsUpNothingAndWhatIsLostIsCounted) {
  const LogPipe pipe;
  constexpr int kLines = 5000;
  auto written = std::async(std::launch::async, [] {
    for (int i = 0; i < kLines; ++i) log("line {} of many that nobody reads", i);
  });
  const bool ended = written.wait_for(test::kPatience) == std::future_status::ready;
  EXPECT_TRUE(ended) << "the log holds up who writes to it";
  while (!ended && written.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
    pipe.read();
  const auto linesOf = [](const std::string& text) { return int(std::ranges::count(text, '\n')); };
  const int inPipe = linesOf(pipe.read());
  EXPECT_GT(inPipe, 100);
  EXPECT_LT(inPipe, kLines);
  log("room again");
  EXPECT_THAT(pipe.read(), MatchesRegex(fmt::format(
                               "{} lines of the log were lost\n.* room again\n", kLines - inPipe)));
}

TEST(Log, ALineThatIsLongerThanThePipeIsCutOffAndTheNextBeginsAnew) {
  const LogPipe pipe;
  log("{}", std::string(1 << 18, 'x'));
  const std::string cut = pipe.read();
  EXPECT_THAT(cut, EndsWith("xxx"));
  log("next");
  EXPECT_THAT(pipe.read(), MatchesRegex("\n1 lines of the log were lost\n.* next\n"));
}

TEST(Log, APipeWhoseReaderHasGoneEndsNothing) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);  // as in the program
  {
    LogPipe pipe;
    pipe.reading.close();
    log("nobody");
  }
  {
    const LogPipe pipe;
    log("somebody");
    EXPECT_THAT(pipe.read(), MatchesRegex("1 lines of the log were lost\n.* somebody\n"));
  }
  std::signal(SIGPIPE, before);
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
