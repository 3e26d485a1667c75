#include "base/Geometry.h"

#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

namespace tessary {
namespace {

// A point of one space is none of another, neither by conversion nor by construction.
template <typename From, typename To>
constexpr bool kGoesFor = std::is_convertible_v<From, To> || std::is_constructible_v<To, From> ||
                          std::is_assignable_v<To&, From>;
template <typename Space, typename... Others>
constexpr bool kStandsAlone = kGoesFor<PointIn<Space>, PointIn<Space>> &&
                              !(kGoesFor<PointIn<Space>, PointIn<Others>> || ...) &&
                              !(kGoesFor<RectIn<Space>, RectIn<Others>> || ...);
static_assert(kStandsAlone<ImageSpace, ViewSpace, ContainerSpace, ScreenSpace, SurfaceSpace>);
static_assert(kStandsAlone<ViewSpace, ImageSpace, ContainerSpace, ScreenSpace, SurfaceSpace>);
static_assert(kStandsAlone<ContainerSpace, ImageSpace, ViewSpace, ScreenSpace, SurfaceSpace>);
static_assert(kStandsAlone<ScreenSpace, ImageSpace, ViewSpace, ContainerSpace, SurfaceSpace>);
static_assert(kStandsAlone<SurfaceSpace, ImageSpace, ViewSpace, ContainerSpace, ScreenSpace>);

template <typename Rect, typename Point>
concept Holds = requires(Rect rect, Point point) {
  contains(rect, point);
};
static_assert(Holds<ImageRect, ImagePoint>);
static_assert(!Holds<ImageRect, ViewPoint> && !Holds<ContainerRect, ScreenPoint>);

TEST(Geometry, ARectangleHoldsItsLowEdgesAndNotItsHighOnes) {
  constexpr ImageRect rect{{10.0, 20.0}, {30.0, 40.0}};
  struct Row {
    ImagePoint point;
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
  EXPECT_FALSE(contains(ImageRect{}, ImagePoint{}));
  EXPECT_FALSE(contains(ImageRect{{1.0, 1.0}, {0.0, 5.0}}, ImagePoint{1.0, 2.0}));
  EXPECT_FALSE(contains(ImageRect{{1.0, 1.0}, {5.0, 0.0}}, ImagePoint{2.0, 1.0}));
  EXPECT_FALSE(contains(ImageRect{{1.0, 1.0}, {-5.0, 5.0}}, ImagePoint{-1.0, 2.0}));
}

}  // namespace
}  // namespace tessary
