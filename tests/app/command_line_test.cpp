#include <gmock/gmock.h>

#include "app/CommandLine.h"

namespace tessary {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using Words = std::vector<std::string>;

TEST(CommandLine, StartsTheProgramAsItIsAskedTo) {
  const struct {
    Words words;
    Eligible eligible;
  } rows[] = {
      {{"tessary"}, Eligible::Microscopes},
      {{"/usr/bin/tessary", "--any-camera"}, Eligible::AnyCamera},
      // The toolkit's own.
      {{"tessary", "-platform", "wayland"}, Eligible::Microscopes},
      {{"tessary", "--platform", "xcb", "-style=fusion", "-reverse"}, Eligible::Microscopes},
      {{"tessary", "-session", "1_2", "--any-camera"}, Eligible::AnyCamera},
      {{"tessary", "-display", ":0", "-geometry", "800x600"}, Eligible::Microscopes},
      {{}, Eligible::Microscopes},
  };
  for (const auto& row : rows) {
    const CommandLine read = readCommandLine(row.words);
    EXPECT_EQ(read.exitStatus, std::nullopt) << read.answer;
    EXPECT_EQ(read.eligible, row.eligible) << testing::PrintToString(row.words);
  }
}

TEST(CommandLine, TakesTheRendererThatIsNamed) {
  EXPECT_EQ(readCommandLine({"tessary"}).renderer, std::nullopt);
  EXPECT_EQ(readCommandLine({"tessary", "--renderer=opengl"}).renderer, Renderer::kOpenGl);
  EXPECT_EQ(readCommandLine({"tessary", "--renderer", "raster"}).renderer, Renderer::kRaster);
}

TEST(CommandLine, RefusesWhatItDoesNotUnderstandInOneLine) {
  const struct {
    Words words;
    const char* what;
  } rows[] = {
      {{"tessary", "--any-camerra"}, "any-camerra"},
      {{"tessary", "--any-camera", "-x"}, "'x'"},
      {{"tessary", "--any-camera=yes"}, "any-camera"},
      {{"tessary", "--version", "--bogus"}, "bogus"},
      {{"tessary", "picture.png"}, "\"picture.png\""},
      {{"tessary", "-platform"}, "platform"},
      {{"tessary", "--renderer=vulkan"}, "\"vulkan\""},
      {{"tessary", "--renderer="}, "renderer"},
      {{"tessary", "--renderer"}, "renderer"},
      {{"tessary", ""}, "\"\""},
  };
  for (const auto& row : rows) {
    const CommandLine read = readCommandLine(row.words);
    EXPECT_EQ(read.exitStatus, 2) << row.what;
    EXPECT_THAT(read.answer, MatchesRegex("tessary: [^\n]*tessary --help[^\n]*\n"));
    EXPECT_THAT(read.answer, HasSubstr(row.what));
  }
}

TEST(CommandLine, TellsTheVersionUnderTheNameItWasCalledBy) {
  for (const char* option : {"--version", "-v"}) {
    const CommandLine read = readCommandLine({"./build/tessary-demo", option});
    EXPECT_EQ(read.exitStatus, 0);
    EXPECT_THAT(read.answer, MatchesRegex("tessary-demo [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  }
}

TEST(CommandLine, HelpNamesEveryOptionOfOursAndNoneOfTheToolkits) {
  for (const char* option : {"--help", "-h"}) {
    const CommandLine read = readCommandLine({"tessary", option});
    EXPECT_EQ(read.exitStatus, 0);
    EXPECT_THAT(read.answer, MatchesRegex("Usage: tessary \\[options\\]\n(.|\n)*"));
    for (const char* ours : {"--help", "--version", "--any-camera", "--renderer"})
      EXPECT_THAT(read.answer, HasSubstr(ours));
    EXPECT_THAT(read.answer, Not(HasSubstr("platform")));
  }
}

}  // namespace
}  // namespace tessary
