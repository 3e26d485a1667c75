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

}  // namespace
}  // namespace tessary
