#include "base/Truncate.h"

#include <gtest/gtest.h>

namespace tessary {
namespace {

TEST(Truncate, CutsFractionsTowardsZeroAndSaturates) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
  constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
  struct Row {
    double value;
    int32_t result;
  };
  const Row rows[] = {
      {0.0, 0},
      {0.999, 0},
      {-0.999, 0},
      {12.5, 12},
      {-12.5, -12},
      {2147483646.9, 2147483646},
      {2147483647.0, kHighest},
      {2147483647.5, kHighest},
      {2147483648.0, kHighest},
      {-2147483647.9, -2147483647},
      {-2147483648.0, kLowest},
      {-2147483648.5, kLowest},
      {-2147483649.0, kLowest},
      {1e300, kHighest},
      {-1e300, kLowest},
      {kInfinite, kHighest},
      {-kInfinite, kLowest},
      {std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const Row& row : rows) EXPECT_EQ(truncateToInt32(row.value), row.result) << row.value;
}

}  // namespace
}  // namespace tessary
