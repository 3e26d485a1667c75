#include "output/FileNames.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tessary {
namespace {

class SetClock final : public Clock {
 public:
  CalendarTime localTime() override { return now; }
  CalendarTime now;
};

struct Step {
  CalendarTime now;
  std::string_view extension;
  std::string name;
};

void expectNames(const std::vector<Step>& steps) {
  SetClock clock;
  FileNames names(clock);
  for (const Step& step : steps) {
    clock.now = step.now;
    EXPECT_EQ(names.makeNewFileName(step.extension), step.name);
  }
}

TEST(FileNames, FurtherNamesOfASecondAreNumbered) {
  expectNames({
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005.jpg"},
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005_1.jpg"},
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005_2.jpg"},
      {{2024, 1, 31, 9, 30, 6}, "jpg", "20240131_093006.jpg"},
      {{2024, 1, 31, 9, 30, 6}, "jpg", "20240131_093006_1.jpg"},
  });
}

TEST(FileNames, StillsAndMoviesAreNumberedTogether) {
  expectNames({
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005.jpg"},
      {{2024, 1, 31, 9, 30, 5}, "mp4", "20240131_093005_1.mp4"},
      {{2024, 1, 31, 9, 30, 5}, "mp4", "20240131_093005_2.mp4"},
      {{2024, 1, 31, 9, 30, 5}, "png", "20240131_093005_3.png"},
  });
}

TEST(FileNames, TheFirstNameOfARunAtMidnightIsNumbered) {
  expectNames({
      {{2024, 2, 1, 0, 0, 0}, "jpg", "20240201_000000_1.jpg"},
      {{2024, 2, 1, 0, 0, 0}, "jpg", "20240201_000000_2.jpg"},
      {{2024, 2, 1, 0, 0, 1}, "jpg", "20240201_000001.jpg"},
  });
}

TEST(FileNames, MidnightIsOrdinaryAfterAnotherName) {
  expectNames({
      {{2024, 1, 31, 23, 59, 59}, "jpg", "20240131_235959.jpg"},
      {{2024, 2, 1, 0, 0, 0}, "jpg", "20240201_000000.jpg"},
  });
}

TEST(FileNames, ANameADayLaterToTheSecondIsNumbered) {
  expectNames({
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005.jpg"},
      {{2024, 2, 1, 9, 30, 5}, "jpg", "20240201_093005_1.jpg"},
  });
}

TEST(FileNames, ANameInBetweenStartsTheSecondAnew) {
  expectNames({
      {{2024, 1, 31, 9, 30, 5}, "jpg", "20240131_093005.jpg"},
      {{2024, 1, 31, 12, 0, 0}, "jpg", "20240131_120000.jpg"},
      {{2024, 2, 1, 9, 30, 5}, "jpg", "20240201_093005.jpg"},
  });
}

TEST(FileNames, YearsAreAsLongAsTheyAre) {
  expectNames({
      {{987, 6, 5, 4, 3, 2}, "jpg", "9870605_040302.jpg"},
      {{12024, 11, 22, 13, 14, 15}, "jpg", "120241122_131415.jpg"},
  });
}

TEST(FileNames, ThePhotoFormatChoosesTheExtension) {
  EXPECT_EQ(imageExtension(0), "jpg");
  EXPECT_EQ(imageExtension(1), "png");
  EXPECT_EQ(imageExtension(-1), "png");
  EXPECT_EQ(imageExtension(7), "png");
  EXPECT_EQ(kMovieExtension, "mp4");
}

}  // namespace
}  // namespace tessary
