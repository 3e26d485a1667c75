#include "base/Result.h"

#include <memory>

#include <gtest/gtest.h>

namespace tessary {
namespace {

Result<std::unique_ptr<int>> halfOf(int number) {
  if (number % 2 != 0) return Error{"it is odd"};
  return std::make_unique<int>(number / 2);
}

Result<void> checkEven(int number) {
  if (auto half = halfOf(number); !half) return Error{half.error()};
  return {};
}

TEST(Result, IsAValueOrAReason) {
  auto half = halfOf(6);
  ASSERT_TRUE(half);
  EXPECT_EQ(half.error(), "");
  EXPECT_EQ(**half, 3);
  const std::unique_ptr<int> taken = *std::move(half);
  EXPECT_EQ(*taken, 3);

  const auto none = halfOf(5);
  EXPECT_FALSE(none);
  EXPECT_EQ(none.error(), "it is odd");
}

TEST(Result, WithoutAValueIsAReasonOrNone) {
  EXPECT_TRUE(checkEven(2));
  EXPECT_EQ(checkEven(2).error(), "");
  EXPECT_FALSE(checkEven(1));
  EXPECT_EQ(checkEven(1).error(), "it is odd");
}

TEST(Result, ATextIsAValueAndNotAReason) {
  const Result<std::string> text = std::string("whole");
  EXPECT_TRUE(text);
  EXPECT_EQ(text.error(), "");
}

}  // namespace
}  // namespace tessary
