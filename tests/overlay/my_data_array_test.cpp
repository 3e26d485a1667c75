#include <limits>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/MyDataArray.h"

namespace tessary {
namespace {

using Ints = MyDataArray<int32_t>;

Ints numbered(int32_t n) {
  std::vector<int32_t> values(static_cast<size_t>(n));
  std::iota(values.begin(), values.end(), 0);
  Ints array;
  array.push_back(values.data(), n);
  return array;
}

std::vector<int32_t> contents(const Ints& array) {
  return {array.elements().begin(), array.elements().end()};
}

TEST(MyDataArray, StartsWithoutABlock) {
  const Ints array;
  EXPECT_EQ(array.data, nullptr);
  EXPECT_EQ(array.size, 0);
  EXPECT_EQ(array.count, 0);
  EXPECT_EQ(array.pos, -1);
  EXPECT_TRUE(array.elements().empty());
}

TEST(MyDataArray, TheFirstElementMakesRoomFor257) {
  const Ints array = numbered(1);
  EXPECT_EQ(array.size, 257);
  EXPECT_EQ(array.count, 1);
}

TEST(MyDataArray, AFullBlockGrowsByTheRequestAnd256) {
  Ints array = numbered(257);
  ASSERT_EQ(array.size, 257 + 256);
  array.count = array.size;
  const int32_t value = 7;
  array.push_back(&value, 1);
  EXPECT_EQ(array.size, 513 + 1 + 256);
  EXPECT_EQ(array.count, 514);
  EXPECT_EQ(array.data[513], 7);
  EXPECT_EQ(array.data[256], 256);
}

TEST(MyDataArray, A257thElementFitsAnd258thGrowsTo514) {
  Ints array;
  for (int32_t i = 0; i < 257; ++i) array.push_back(&i, 1);
  EXPECT_EQ(array.size, 257);
  const int32_t value = 257;
  array.push_back(&value, 1);
  EXPECT_EQ(array.size, 514);
  EXPECT_EQ(array.count, 258);
  for (int32_t i = 0; i < 258; ++i) ASSERT_EQ(array.data[i], i);
}

TEST(MyDataArray, RoomIsMadeOnlyIfItIsMissing) {
  Ints array = numbered(1);
  array.inc_capacity(256);
  EXPECT_EQ(array.size, 257);
  array.inc_capacity(257);
  EXPECT_EQ(array.size, 257 + 257 + 256);
  array.inc_capacity(0);
  EXPECT_EQ(array.size, 770);
  EXPECT_EQ(array.count, 1);
}

TEST(MyDataArray, CountsOfZeroOrBelowChangeNothing) {
  const int32_t value = 1;
  Ints empty;
  for (const int32_t n : {0, -1, std::numeric_limits<int32_t>::min()}) {
    empty.push_back(&value, n);
    empty.insert(0, n);
    empty.erase(0, n);
    empty.inc_capacity(n);
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(empty.size, 0);
    EXPECT_EQ(empty.count, 0);
  }
  Ints three = numbered(3);
  for (const int32_t n : {0, -1}) {
    three.push_back(&value, n);
    three.insert(1, n);
    three.erase(1, n);
    EXPECT_EQ(contents(three), (std::vector<int32_t>{0, 1, 2}));
  }
}

TEST(MyDataArray, InsertMovesTheTailUpAndLeavesTheGapAsItWas) {
  Ints array = numbered(6);
  array.insert(2, 2);
  EXPECT_EQ(contents(array), (std::vector<int32_t>{0, 1, 2, 3, 2, 3, 4, 5}));
  array = numbered(3);
  array.insert(3, 1);  // behind the end
  EXPECT_EQ(array.count, 4);
}

TEST(MyDataArray, InsertGrowsAFullBlock) {
  Ints array = numbered(4);
  array.size = 4;  // as if it were full; the block is larger
  array.insert(1, 1);
  EXPECT_EQ(array.size, 4 + 1 + 256);
  EXPECT_EQ(contents(array), (std::vector<int32_t>{0, 1, 1, 2, 3}));
}

TEST(MyDataArray, EraseMovesTheTailDownAndKeepsTheBlock) {
  Ints array = numbered(6);
  const int32_t* const block = array.data;
  array.erase(1, 2);
  EXPECT_EQ(contents(array), (std::vector<int32_t>{0, 3, 4, 5}));
  array.erase(2, 2);
  EXPECT_EQ(contents(array), (std::vector<int32_t>{0, 3}));
  EXPECT_EQ(array.data, block);
  EXPECT_EQ(array.size, 262);
}

TEST(MyDataArray, ReplaceSwapsARunForAnother) {
  const std::vector<int32_t> source{100, 101, 102, 103};
  struct Row {
    int32_t at, n, old;
    std::vector<int32_t> result;
  };
  const Row rows[] = {
      {1, 2, 2, {0, 100, 101, 3, 4, 5}},            // same length: overwritten in place
      {1, 1, 3, {0, 100, 4, 5}},                    // shorter
      {1, 4, 2, {0, 100, 101, 102, 103, 3, 4, 5}},  // longer
      {2, 0, 3, {0, 1, 5}},                         // pure erase
      {2, 2, 0, {0, 1, 100, 101, 2, 3, 4, 5}},      // pure insert
      {6, 2, 0, {0, 1, 2, 3, 4, 5, 100, 101}},      // at the end
      {0, 0, 6, {}},                                // everything
      {3, 0, 0, {0, 1, 2, 3, 4, 5}},                // nothing
  };
  for (const Row& row : rows) {
    Ints array = numbered(6);
    array.replace(source.data(), row.at, row.n, row.old);
    EXPECT_EQ(contents(array), row.result) << row.at << " " << row.n << " " << row.old;
  }
}

TEST(MyDataArray, ReplacingNothingByNothingNeedsNoSource) {
  Ints array;
  array.replace(nullptr, 0, 0, 0);
  EXPECT_EQ(array.data, nullptr);
}

TEST(MyDataArray, ACopyIsDeepAndHasTheSameCapacity) {
  Ints source = numbered(3);
  source.pos = 42;
  const Ints copy(source);
  EXPECT_NE(copy.data, source.data);
  EXPECT_EQ(copy.size, 259);
  EXPECT_EQ(copy.count, 3);
  EXPECT_EQ(copy.pos, 42);
  source.data[0] = 9;
  EXPECT_EQ(contents(copy), (std::vector<int32_t>{0, 1, 2}));
}

TEST(MyDataArray, ACopyOfAnEmptyArrayHasABlockOfSizeZeroThatGrowsLikeAnyOther) {
  const Ints source;
  Ints copy(source);
  EXPECT_NE(copy.data, nullptr);
  EXPECT_EQ(copy.size, 0);
  EXPECT_EQ(copy.pos, -1);
  const int32_t value = 5;
  copy.push_back(&value, 1);
  EXPECT_EQ(copy.size, 257);
  EXPECT_EQ(contents(copy), (std::vector<int32_t>{5}));
}

TEST(MyDataArray, AssignmentIsDeepAlsoFromASourceThatIsAboutToDie) {
  Ints source = numbered(2);
  source.pos = 7;
  const int32_t* const block = source.data;
  Ints target = numbered(5);
  target = std::move(source);
  EXPECT_NE(target.data, block);
  EXPECT_EQ(target.size, 258);
  EXPECT_EQ(target.count, 2);
  EXPECT_EQ(target.pos, 7);
  EXPECT_EQ(contents(source), (std::vector<int32_t>{0, 1}));  // NOLINT(bugprone-use-after-move)
}

TEST(MyDataArray, AssigningAnArrayToItselfChangesNothing) {
  Ints array = numbered(3);
  array.pos = 4;
  const int32_t* const block = array.data;
  const Ints& same = array;
  array = same;
  EXPECT_EQ(array.data, block);
  EXPECT_EQ(array.pos, 4);
  EXPECT_EQ(contents(array), (std::vector<int32_t>{0, 1, 2}));
}

TEST(MyDataArray, TwoArraysWithoutABlockCountAsTheSameArray) {
  Ints source, target;
  source.pos = 11;
  target.pos = 22;
  target = source;
  EXPECT_EQ(target.data, nullptr);
  EXPECT_EQ(target.pos, 22);
}

TEST(MyDataArray, AssigningAnEmptyArrayEmptiesTheTarget) {
  const Ints source;
  Ints target = numbered(3);
  target = source;
  EXPECT_NE(target.data, nullptr);
  EXPECT_EQ(target.size, 0);
  EXPECT_EQ(target.count, 0);
}

TEST(MyDataArray, AnEmptiedArrayKeepsItsBlock) {
  Ints array = numbered(200);
  const int32_t* const block = array.data;
  array.count = 0;
  const std::vector<int32_t> values(456, 3);
  array.push_back(values.data(), 456);
  EXPECT_EQ(array.data, block);
  EXPECT_EQ(array.size, 456);
}

TEST(MyDataArray, HoldsPointsAndVertices) {
  MyDataArray<ImagePoint> points;
  const ImagePoint point{1.5, -2.5};
  points.push_back(&point, 1);
  EXPECT_EQ(points.data[0], point);
  MyDataArray<PointVertex> vertices;
  const PointVertex vertex{{1, 2, 0, 1}, {3, 4, 5, 6}};
  vertices.push_back(&vertex, 1);
  EXPECT_EQ(vertices.data[0].color[3], 6.0f);
}

TEST(MyDataArrayDeathTest, MoreElementsThanCanBeCountedEndTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  MyDataArray<PointVertex> array;
  EXPECT_EXIT(array.inc_capacity(std::numeric_limits<int32_t>::max()), testing::ExitedWithCode(1),
              "Out of memory: no room for 2147483903 elements of 32 bytes");
}

TEST(MyDataArrayDeathTest, ABlockThatCanNotBeHadEndsTheProgram) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer reports the allocation by itself";
#endif
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct Huge {
    char bytes[size_t{1} << 44];
  };
  MyDataArray<Huge> array;
  EXPECT_EXIT(array.inc_capacity(1000), testing::ExitedWithCode(1), "Out of memory: no room");
}

}  // namespace
}  // namespace tessary
