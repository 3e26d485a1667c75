#include "settings/UserDefaults.h"

#include <limits>

#include <gtest/gtest.h>

#include "MemoryKeyValueStore.h"

namespace tessary {
namespace {

using Bytes = UserDefaults::Bytes;

class UserDefaultsTest : public ::testing::Test {
 protected:
  test::MemoryKeyValueStore store_;
  UserDefaults defaults_{store_};
};

TEST_F(UserDefaultsTest, AKeyThatWasNeverWrittenAnswersWithItsDefault) {
  defaults_.registerDefaults("size", 26);
  defaults_.registerDefaults("color", "0.0,0.9,0.9");
  EXPECT_EQ(defaults_.integerForKey("size"), 26);
  EXPECT_EQ(defaults_.stringForKey("color"), "0.0,0.9,0.9");
}

TEST_F(UserDefaultsTest, DefaultsAreNotStored) {
  defaults_.registerDefaults("size", 26);
  EXPECT_EQ(defaults_.integerForKey("size"), 26);
  EXPECT_TRUE(store_.values.empty());
  EXPECT_EQ(store_.storeCalls, 0);
}

TEST_F(UserDefaultsTest, TheLastRegisteredDefaultCounts) {
  defaults_.registerDefaults("size", 26);
  defaults_.registerDefaults("size", 27);
  EXPECT_EQ(defaults_.integerForKey("size"), 27);
}

TEST_F(UserDefaultsTest, WhatIsStoredHidesTheDefaultWhateverItIs) {
  defaults_.registerDefaults("size", 26);
  defaults_.registerDefaults("color", "red");
  store_.values["size"] = 0;
  store_.values["color"] = Bytes{1, 2};
  EXPECT_EQ(defaults_.integerForKey("size"), 0);
  EXPECT_EQ(defaults_.stringForKey("color"), std::nullopt);
}

TEST_F(UserDefaultsTest, AKeyThatIsNowhereReadsAsNothing) {
  EXPECT_EQ(defaults_.objectForKey("none"), std::nullopt);
  EXPECT_EQ(defaults_.stringForKey("none"), std::nullopt);
  EXPECT_EQ(defaults_.dataForKey("none"), std::nullopt);
  EXPECT_EQ(defaults_.integerForKey("none"), 0);
}

TEST_F(UserDefaultsTest, EveryKindOfValueReadsAsEveryOther) {
  constexpr int64_t high = std::numeric_limits<int64_t>::max();
  struct Row {
    UserDefaults::Value stored;
    std::optional<std::string> string;
    int64_t integer;
    std::optional<Bytes> data;
  };
  const Row rows[] = {
      {int64_t{-5}, "-5", -5, std::nullopt},
      {high, "9223372036854775807", high, std::nullopt},
      {"12", "12", 12, Bytes{'1', '2'}},
      {" 12 mm", " 12 mm", 12, Bytes{' ', '1', '2', ' ', 'm', 'm'}},
      {"99999999999999999999", "99999999999999999999", high, Bytes(20, '9')},
      {"junk", "junk", 0, Bytes{'j', 'u', 'n', 'k'}},
      {"", "", 0, Bytes{}},
      {Bytes{'1', '2'}, std::nullopt, 0, Bytes{'1', '2'}},
      {Bytes{}, std::nullopt, 0, Bytes{}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.string.value_or("bytes"));
    store_.values["key"] = row.stored;
    EXPECT_EQ(defaults_.objectForKey("key"), row.stored);
    EXPECT_EQ(defaults_.stringForKey("key"), row.string);
    EXPECT_EQ(defaults_.integerForKey("key"), row.integer);
    EXPECT_EQ(defaults_.dataForKey("key"), row.data);
  }
}

TEST_F(UserDefaultsTest, SeveralValuesAreStoredInOneGo) {
  const UserDefaults::Entry entries[] = {{"a", 1}, {"b", "two"}, {"c", Bytes{3}}};
  defaults_.setObjects(entries);
  EXPECT_EQ(store_.storeCalls, 1);
  EXPECT_EQ(defaults_.integerForKey("a"), 1);
  EXPECT_EQ(defaults_.stringForKey("b"), "two");
  EXPECT_EQ(defaults_.dataForKey("c"), Bytes{3});
}

TEST_F(UserDefaultsTest, OneValueIsStoredAlone) {
  defaults_.setObject("a", 1);
  EXPECT_EQ(store_.storeCalls, 1);
  EXPECT_EQ(store_.values.size(), 1U);
  EXPECT_EQ(defaults_.integerForKey("a"), 1);
}

}  // namespace
}  // namespace tessary
