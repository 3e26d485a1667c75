#include <gmock/gmock.h>

#include "MemoryKeyValueStore.h"
#include "settings/RememberedControls.h"

namespace tessary {
namespace {

using testing::IsEmpty;

class RememberedControlsTest : public testing::Test {
 protected:
  std::string stored() { return KeyValueStore::textOf(store.values.at("cameraControls")); }

  test::MemoryKeyValueStore store;
  UserDefaults defaults{store};
  RememberedControls remembered{defaults};
};

TEST_F(RememberedControlsTest, EachCameraHasItsOwnValues) {
  remembered.setValues("A 1", {{9963776, 12}, {9963777, -3}});
  remembered.setValues("B", {{9963776, 7}});
  EXPECT_EQ(stored(), "A 1=9963776:12,9963777:-3;B=9963776:7");
  EXPECT_EQ(remembered.values("A 1"), (ControlValues{{9963776, 12}, {9963777, -3}}));
  EXPECT_EQ(remembered.values("B"), (ControlValues{{9963776, 7}}));
  EXPECT_THAT(remembered.values("C"), IsEmpty());
}

TEST_F(RememberedControlsTest, NothingIsStoredBeforeSomethingIsRemembered) {
  EXPECT_THAT(remembered.values("A"), IsEmpty());
  EXPECT_THAT(store.values, IsEmpty());
}

TEST_F(RememberedControlsTest, TheOneAdjustedLastComesLastAndEmptyValuesForgetOne) {
  remembered.setValues("A", {{1, 1}});
  remembered.setValues("B", {{1, 2}});
  remembered.setValues("A", {{1, 3}});
  EXPECT_EQ(stored(), "B=1:2;A=1:3");
  remembered.setValues("B", {});
  EXPECT_EQ(stored(), "A=1:3");
}

TEST_F(RememberedControlsTest, WhatAnotherRunHasStoredMeanwhileStays) {
  remembered.setValues("A", {{1, 1}});
  store.values["cameraControls"] = std::string("A=1:1;other=5:5");
  remembered.setValues("A", {{1, 2}});
  EXPECT_EQ(stored(), "other=5:5;A=1:2");
}

TEST_F(RememberedControlsTest, AnyTextNamesACamera) {
  const std::string names[] = {"a=b", "a;b", "a%3db", "", "\"x\\", "a\nb", "\xCE\xBC", "\xFF"};
  int32_t value = 0;
  for (const std::string& name : names) remembered.setValues(name, {{1, ++value}});
  value = 0;
  for (const std::string& name : names)
    EXPECT_EQ(remembered.values(name), (ControlValues{{1, ++value}})) << name;
  EXPECT_EQ(stored().find('\n'), std::string::npos);
}

TEST_F(RememberedControlsTest, FiftyCamerasAreKept) {
  for (int camera = 0; camera < 52; ++camera)
    remembered.setValues(fmt::format("camera {}", camera), {{1, camera}});
  EXPECT_THAT(remembered.values("camera 1"), IsEmpty());
  EXPECT_EQ(remembered.values("camera 2"), (ControlValues{{1, 2}}));
  EXPECT_EQ(remembered.values("camera 51"), (ControlValues{{1, 51}}));
}

TEST_F(RememberedControlsTest, OfADamagedTextWhatCanBeReadCounts) {
  const struct {
    const char* text;
    ControlValues values;
  } rows[] = {
      {"A=1:2", {{1, 2}}},
      {"A=1:2,x,3:4", {{1, 2}, {3, 4}}},
      {"A=1:2:3,4:5", {{4, 5}}},
      {"A=1:two,2:3.5,3:99999999999,4:4", {{4, 4}}},
      {"A=-1:2,0:3", {}},
      {"A=1:2=3", {}},
      {"A", {}},
      {";;A=1:1;;", {{1, 1}}},
      {"A=1:1;A=1:2", {{1, 2}}},
      {"", {}},
  };
  for (const auto& row : rows) {
    store.values["cameraControls"] = std::string(row.text);
    EXPECT_EQ(remembered.values("A"), row.values) << row.text;
  }
  store.values["cameraControls"] = int64_t(7);
  EXPECT_THAT(remembered.values("A"), IsEmpty());
}

}  // namespace
}  // namespace tessary
