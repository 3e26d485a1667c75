#include "base/Geometry.h"

#include <limits>

#include <gtest/gtest.h>

namespace tessary {
namespace {

TEST(Geometry, ARectangleHoldsItsLowEdgesAndNotItsHighOnes) {
  constexpr Rect rect{{10.0, 20.0}, {30.0, 40.0}};
  struct Row {
    Point point;
    bool inside;
  };
  constexpr Row rows[] = {
      {{25.0, 40.0}, true},   {{10.0, 20.0}, true},
      {{10.0, 59.999}, true}, {{39.999, 20.0}, true},
      {{9.999, 40.0}, false}, {{25.0, 19.999}, false},
      {{40.0, 40.0}, false},  {{25.0, 60.0}, false},
      {{40.0, 60.0}, false},  {{std::numeric_limits<double>::quiet_NaN(), 40.0}, false},
  };
  for (const Row& row : rows)
    EXPECT_EQ(contains(rect, row.point), row.inside) << row.point.x << ' ' << row.point.y;
}

TEST(Geometry, ARectangleWithoutAreaHoldsNothing) {
  EXPECT_FALSE(contains(Rect{}, Point{}));
  EXPECT_FALSE(contains(Rect{{1.0, 1.0}, {0.0, 5.0}}, Point{1.0, 2.0}));
  EXPECT_FALSE(contains(Rect{{1.0, 1.0}, {5.0, 0.0}}, Point{2.0, 1.0}));
  EXPECT_FALSE(contains(Rect{{1.0, 1.0}, {-5.0, 5.0}}, Point{-1.0, 2.0}));
}

}  // namespace
}  // namespace tessary
