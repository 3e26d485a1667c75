#include "base/Log.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "LogCapture.h"

namespace tessary {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

TEST(Log, ALineGoesToStandardErrorWithItsTime) {
  ::testing::internal::CaptureStderr();
  log("{} of {}", 3, "ten");
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9].[0-9][0-9][0-9] 3 of ten\n"));
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
