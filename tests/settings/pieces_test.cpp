#include "settings/Pieces.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace tessary {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> all(std::string_view text) {
  std::vector<std::string> found;
  Pieces pieces(text, ',');
  while (const auto piece = pieces.next()) found.emplace_back(*piece);
  EXPECT_FALSE(pieces.next());
  return found;
}

TEST(Pieces, AreOneMoreThanTheSeparators) {
  EXPECT_THAT(all("a,b,c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(all("abc"), ElementsAre("abc"));
  EXPECT_THAT(all(""), ElementsAre(""));
  EXPECT_THAT(all(","), ElementsAre("", ""));
  EXPECT_THAT(all(",a,,"), ElementsAre("", "a", "", ""));
}

TEST(Pieces, OfAFixedCountAreAllOrNothing) {
  EXPECT_FALSE(exactPieces<3>("", ','));
  EXPECT_FALSE(exactPieces<3>("a,b", ','));
  EXPECT_THAT(exactPieces<3>("a,,c", ',').value(), ElementsAre("a", "", "c"));
  EXPECT_FALSE(exactPieces<3>("a,b,c,", ','));
}

}  // namespace
}  // namespace tessary
