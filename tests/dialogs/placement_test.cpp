#include "dialogs/Placement.h"

#include <gtest/gtest.h>

namespace tessary {
namespace {

TEST(Placement, IsCentredAndBelowTheParentsUpperEdge) {
  EXPECT_EQ(placementIn({{100, 25}, {800, 600}}, 300, kBelowTitle), (ScreenPoint{350, 102}));
  EXPECT_EQ(placementIn({{100, 25}, {800, 600}}, 300, kNoticeBelowTop), (ScreenPoint{350, 92}));
}

TEST(Placement, TakesTheIntegerPartOfTheWholeSum) {
  struct Row {
    double parentX;
    double parentWidth;
    double width;
    double x;
  };
  constexpr Row kRows[] = {{100, 801, 300, 350},    // 350.5
                           {100, 300, 801, -150},   // -150.5, towards 0
                           {-300, 801, 300, -49},   // -49.5: the parts alone would give -50
                           {-1, 301, 300, 0},       // -0.5
                           {0.75, 300.5, 300, 1}};  // 1.0: the parts alone would give 0
  for (const Row& row : kRows)
    EXPECT_EQ(placementIn({{row.parentX, 0}, {row.parentWidth, 600}}, row.width, 0).x, row.x)
        << row.parentX << " " << row.parentWidth << " " << row.width;
  EXPECT_EQ(placementIn({{0, -100}, {800, 600}}, 300, kBelowTitle).y, -23);
  EXPECT_EQ(placementIn({{0, -77.5}, {800, 600}}, 300, kBelowTitle).y, 0);
}

TEST(Placement, BesideTheParentIsWhereThereIsRoom) {
  constexpr ScreenRect kScreen{{100, 30}, {1800, 1000}};
  struct Row {
    double parentX, parentY, parentWidth;
    ScreenPoint place;
  };
  constexpr Row kRows[] = {{100, 50, 800, {900, 50}},    // right
                           {500, 50, 1000, {1500, 50}},  // right, to the edge
                           {501, 50, 1000, {101, 50}},   // left
                           {500, 50, 1001, {100, 50}},   // left, to the edge
                           {499, 50, 1002, {1500, 50}},  // neither: over the parent
                           {100, 10, 800, {900, 30}}};   // not above the screen
  for (const Row& row : kRows)
    EXPECT_EQ(placementBeside({{row.parentX, row.parentY}, {row.parentWidth, 600}}, kScreen, 400),
              row.place)
        << row.parentX << " " << row.parentWidth;
}

TEST(Placement, BroughtWithinAScreenAFrameIsMovedAndOnlyThenCut) {
  constexpr ScreenRect kScreen{{100, 30}, {1000, 700}};  // to 1100 and 730
  struct Row {
    ScreenRect frame, within;
  };
  constexpr Row kRows[] = {
      {{{200, 50}, {800, 600}}, {{200, 50}, {800, 600}}},     // there is room
      {{{100, 30}, {1000, 700}}, {{100, 30}, {1000, 700}}},   // just enough
      {{{200, 50}, {901, 600}}, {{199, 50}, {901, 600}}},     // too far right
      {{{200, 50}, {800, 681}}, {{200, 49}, {800, 681}}},     // too far down
      {{{200, 50}, {5000, 5000}}, {{100, 30}, {1000, 700}}},  // too large
      {{{620, 370}, {800, 600}}, {{300, 130}, {800, 600}}},   // both
      {{{900, 700}, {800, 600}}, {{300, 130}, {800, 600}}},   // and further
      {{{60, 10}, {800, 600}}, {{100, 30}, {800, 600}}},      // above and left of it
      {{{60, 10}, {1200, 900}}, {{100, 30}, {1000, 700}}},    // and too large
      {{{200, 50}, {300, 200}}, {{200, 50}, {300, 200}}},     // smaller than the least
  };
  for (const Row& row : kRows)
    EXPECT_EQ(broughtWithin(row.frame, kScreen, {480, 360}), row.within)
        << row.frame.origin.x << " " << row.frame.origin.y << " " << row.frame.size.width;
  EXPECT_EQ(broughtWithin({{150, 50}, {800, 600}}, {{100, 30}, {400, 300}}, {480, 360}),
            (ScreenRect{{100, 30}, {480, 360}}))
      << "a screen that is too small shows its beginning";
}

}  // namespace
}  // namespace tessary
