#include "settings/Preferences.h"

#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "LogCapture.h"
#include "MemoryKeyValueStore.h"

namespace tessary {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;
using Bytes = UserDefaults::Bytes;

const Color kBlue{0.0, 0.0, 1.0, 1.0};

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

/// Grants everything but what the test forbids.
class FakeGrants final : public FolderGrants {
 public:
  std::optional<Bytes> bookmarkData(const std::string& url) const override {
    if (failing) return std::nullopt;
    return bytes("grant:" + url);
  }
  std::optional<ResolvedFolder> resolveBookmarkData(const Bytes& data) const override {
    if (failing || data.size() < 6) return std::nullopt;
    return ResolvedFolder{std::string(data.begin() + 6, data.end()), stale};
  }

  bool failing = false;
  bool stale = false;
};

class PreferencesTest : public ::testing::Test {
 protected:
  PreferencesTest() { Preferences::registerDefaults(defaults_); }
  /// As at launch. Kept by pointer, since there is one that is never copied.
  std::unique_ptr<Preferences> load() { return std::make_unique<Preferences>(defaults_, grants_); }

  test::LogCapture log_;
  test::MemoryKeyValueStore store_;
  UserDefaults defaults_{store_};
  FakeGrants grants_;
};

TEST_F(PreferencesTest, AFirstLaunchHasTheDefaultsAndWritesNothing) {
  const auto preferences = load();
  const Color cyan{0.0, 0.9F, 0.9F, 1.0};
  EXPECT_EQ(preferences->url, std::nullopt);
  EXPECT_EQ(preferences->gridColor, cyan);
  EXPECT_EQ(preferences->lineColor, cyan);
  EXPECT_EQ(preferences->textColor, cyan);
  EXPECT_EQ(preferences->textSize, 26);
  EXPECT_EQ(preferences->imagePNG, 0);
  EXPECT_EQ(preferences->maxRecord, 60);
  EXPECT_EQ(preferences->uniqueID, "");
  EXPECT_EQ(*preferences->resolution, (Resolution{0, 640, 480}));
  EXPECT_EQ(preferences->calibration, 0);
  EXPECT_EQ(preferences->calibrations, CalibrationSlots{});
  EXPECT_EQ(preferences->font, Font{26});
  EXPECT_EQ(store_.storeCalls, 0);
  EXPECT_THAT(log_.lines(), ElementsAre("CalibrationsFromString: "));
}

TEST_F(PreferencesTest, SavingStoresTheWholeVocabularyInOneGo) {
  load()->save();
  const std::string cyan = "0.000000,0.900000,0.900000";
  std::string empty;
  for (int i = 0; i < 10; ++i) empty += ",0,0,0.000000,0,0;";
  const std::map<std::string, UserDefaults::Value> expected{
      {"gridColor", cyan}, {"lineColor", cyan}, {"textColor", cyan}, {"textSize", 26},
      {"imagePNG", 0},     {"maxRecord", 60},   {"uniqueID", ""},    {"videoType", 0},
      {"width", 640},      {"height", 480},     {"calibration", 0},  {"calibrations", empty},
  };
  EXPECT_EQ(store_.values, expected);
  EXPECT_EQ(store_.storeCalls, 1);
  EXPECT_THAT(log_.lines(), Contains("CalibrationsToString: " + empty));
}

TEST_F(PreferencesTest, EverythingComesBackAfterARestart) {
  const auto before = load();
  before->gridColor = {0.25, 0.5, 0.75, 1.0};
  before->lineColor = {1.0, 0.0, 0.0, 1.0};
  before->textColor = {0.0, 0.0, 0.0, 1.0};
  before->textSize = 13;
  before->imagePNG = 1;
  before->maxRecord = 300;
  before->uniqueID = "usb-055e:a160-μ, 1;2";
  *before->resolution = {0x646d6231, 1920, 1080};
  before->calibration = 9;
  before->calibrations[9] = {"lens", 1, 853, 0.5, 47187200, 20250115, 1706.0};
  before->url = "/pictures";
  before->save();
  before->saveURL();

  const auto after = load();
  EXPECT_EQ(after->gridColor, before->gridColor);
  EXPECT_EQ(after->lineColor, before->lineColor);
  EXPECT_EQ(after->textColor, before->textColor);
  EXPECT_EQ(after->textSize, 13);
  EXPECT_EQ(after->imagePNG, 1);
  EXPECT_EQ(after->maxRecord, 300);
  EXPECT_EQ(after->uniqueID, "usb-055e:a160-μ, 1;2");
  EXPECT_EQ(*after->resolution, (Resolution{0x646d6231, 1920, 1080}));
  EXPECT_EQ(after->calibration, 9);
  EXPECT_EQ(after->calibrations, before->calibrations);
  EXPECT_EQ(after->font, Font{13});
  EXPECT_EQ(after->url, "/pictures");
}

TEST_F(PreferencesTest, TheDefaultColourReadsBackWithinSinglePrecision) {
  const auto before = load();
  before->save();
  EXPECT_EQ(load()->gridColor, before->gridColor);
}

TEST_F(PreferencesTest, ColoursAreReadFromThreePieces) {
  struct Row {
    const char* text;
    Color color;
  };
  const double max = std::numeric_limits<float>::max();
  const Row rows[] = {
      {"1,0.5,0.25", {1.0, 0.5, 0.25, 1.0}},
      {"0.100000,0.2,.3", {0.1F, 0.2F, 0.3F, 1.0}},
      {" 1, 0.5, 0.25 ", {1.0, 0.5, 0.25, 1.0}},
      {"2,-1,100", {2.0, -1.0, 100.0, 1.0}},  // not clamped
      {"1,0,x", {1.0, 0.0, 0.0, 1.0}},
      {",,", {0.0, 0.0, 0.0, 1.0}},
      {"inf,nan,1e300", {0.0, 0.0, max, 1.0}},
      {"1,0", kBlue},
      {"1,0,0,1", kBlue},
      {"1,0,0,", kBlue},
      {"", kBlue},
      {"red", kBlue},
      {"0.0;0.9;0.9", kBlue},
  };
  const auto preferences = load();
  for (const Row& row : rows)
    EXPECT_EQ(preferences->ColorFromString(row.text), row.color) << row.text;
}

TEST_F(PreferencesTest, ColoursAreWrittenWithSixDecimalsAndWithoutAlpha) {
  const double infinity = std::numeric_limits<double>::infinity();
  const auto preferences = load();
  EXPECT_EQ(preferences->ColoToString({0.0, 0.9, 1.0, 0.5}), "0.000000,0.900000,1.000000");
  EXPECT_EQ(preferences->ColoToString({0.9F, 1.0 / 3.0, 2.0}), "0.900000,0.333333,2.000000");
  EXPECT_EQ(preferences->ColoToString({-0.5, infinity, -infinity}), "-0.500000,inf,-inf");
  EXPECT_EQ(preferences->ColoToString({1e300, 0.0, 0.0}).size(), 301 + 7 + 2 * 9U);
}

TEST_F(PreferencesTest, ADamagedColourIsBlueAndNotTheDefault) {
  store_.values["gridColor"] = "1,0";
  store_.values["lineColor"] = "1,0,x";
  store_.values["textColor"] = Bytes{1, 2, 3};
  const auto preferences = load();
  EXPECT_EQ(preferences->gridColor, kBlue);
  EXPECT_EQ(preferences->lineColor, (Color{1.0, 0.0, 0.0, 1.0}));
  EXPECT_EQ(preferences->textColor, kBlue);
}

TEST_F(PreferencesTest, TheTextSizeIsRepairedOnLoading) {
  struct Row {
    UserDefaults::Value stored;
    int32_t size;
  };
  const Row rows[] = {
      {12, 12},
      {48, 48},
      {26, 26},
      {11, 26},
      {49, 26},
      {0, 26},
      {-1, 26},
      {"14", 14},
      {"14 pt", 14},
      {"junk", 26},
      {Bytes{14}, 26},
      {"", 26},
      {int64_t{1} << 32 | 20, 20},  // narrowed to 32 bits first
      {std::numeric_limits<int64_t>::min(), 26},
      {std::numeric_limits<int64_t>::max(), 26},
  };
  for (const Row& row : rows) {
    store_.values["textSize"] = row.stored;
    const auto preferences = load();
    EXPECT_EQ(preferences->textSize, row.size);
    EXPECT_EQ(preferences->font, Font{row.size});
    EXPECT_EQ(store_.values["textSize"], row.stored);  // not written back
  }
}

TEST_F(PreferencesTest, OtherNumbersGoOnAsTheyAre) {
  struct Row {
    UserDefaults::Value stored;
    int32_t value;
  };
  const Row rows[] = {
      {-7, -7},
      {2147483647, 2147483647},
      {int64_t{2147483648}, std::numeric_limits<int32_t>::min()},
      {int64_t{0x1'0000'0005}, 5},
      {"77", 77},
      {"junk", 0},
      {"1e9", 1},
      {Bytes{7}, 0},
      {"99999999999999999999", -1},
  };
  for (const Row& row : rows) {
    for (const char* key : {"imagePNG", "maxRecord", "width", "height", "calibration", "videoType"})
      store_.values[key] = row.stored;
    const auto preferences = load();
    EXPECT_EQ(preferences->imagePNG, row.value);
    EXPECT_EQ(preferences->maxRecord, row.value);
    EXPECT_EQ(*preferences->resolution, (Resolution{uint32_t(row.value), row.value, row.value}));
    EXPECT_EQ(preferences->calibration, row.value);
  }
}

TEST_F(PreferencesTest, EveryMediaSubtypeIsStoredAsAPlainNumber) {
  const auto preferences = load();
  preferences->resolution->type = 0xFFFFFFFEU;
  preferences->save();
  EXPECT_EQ(store_.values["videoType"], UserDefaults::Value(int64_t{0xFFFFFFFE}));
  EXPECT_EQ(load()->resolution->type, 0xFFFFFFFEU);
}

TEST_F(PreferencesTest, TheResolutionStaysTheSameObject) {
  const auto preferences = load();
  const std::shared_ptr<Resolution> alias = preferences->resolution;
  *alias = {1, 2, 3};
  preferences->save();
  EXPECT_EQ(preferences->resolution, alias);
  EXPECT_EQ(store_.values["width"], UserDefaults::Value(2));
}

TEST_F(PreferencesTest, TheFontFollowsTheTextSizeOnlyThroughSave) {
  const auto preferences = load();
  preferences->textSize = 30;
  EXPECT_EQ(preferences->font, Font{26});
  preferences->save();
  EXPECT_EQ(preferences->font, Font{30});
  for (const int32_t size : {5, 0, -3, 1000}) {
    preferences->textSize = size;
    preferences->save();
    EXPECT_EQ(preferences->font, Font{size});
    EXPECT_EQ(store_.values["textSize"], UserDefaults::Value(size));
  }
}

TEST_F(PreferencesTest, CalibrationsAreLoggedAndKept) {
  const std::string text = "lens,0,853,0.500000,47187200,20250115;";
  store_.values["calibrations"] = text;
  const auto preferences = load();
  EXPECT_THAT(log_.lines(), ElementsAre("CalibrationsFromString: " + text));
  EXPECT_EQ(preferences->calibrations[0],
            (CalibrationRecord{"lens", 0, 853, 0.5, 47187200, 20250115, 1706.0}));
  EXPECT_EQ(preferences->calibrations[1], CalibrationRecord{});
}

TEST_F(PreferencesTest, ReadingCalibrationsResetsTheSlotsFirst) {
  const auto preferences = load();
  preferences->CalibrationsFromString("a,0,1,1,0,0;b,0,1,1,0,0;");
  EXPECT_EQ(preferences->calibrations[1].name, "b");
  preferences->CalibrationsFromString("c,0,1,1,0,0;");
  EXPECT_EQ(preferences->calibrations[0].name, "c");
  EXPECT_EQ(preferences->calibrations[1], CalibrationRecord{});
  preferences->CalibrationsFromString(std::nullopt);
  EXPECT_EQ(preferences->calibrations, CalibrationSlots{});
  EXPECT_THAT(log_.lines(), Contains("CalibrationsFromString: (null)"));
}

TEST_F(PreferencesTest, CalibrationsThatAreNoTextAreLikeNone) {
  store_.values["calibrations"] = Bytes{1};
  EXPECT_EQ(load()->calibrations, CalibrationSlots{});
  EXPECT_THAT(log_.lines(), ElementsAre("CalibrationsFromString: (null)"));
}

TEST_F(PreferencesTest, ACommaInANameCostsTheSlotsFromThereForGood) {
  const auto preferences = load();
  for (auto& slot : preferences->calibrations) slot = {"lens", 0, 853, 0.5, 1, 2, 1706.0};
  preferences->calibrations[4].name = "a,b";
  preferences->save();
  const auto reloaded = load();
  for (size_t i = 0; i < 10; ++i)
    EXPECT_EQ(reloaded->calibrations[i].name, i < 4 ? "lens" : "") << i;
  reloaded->save();
  EXPECT_EQ(load()->calibrations, reloaded->calibrations);
}

TEST_F(PreferencesTest, TheSlotInForceIsTheOneThatTheCalibrationCameFrom) {
  const auto preferences = load();
  preferences->calibrations[0].ppu = 400.0;
  preferences->calibrations[3].ppu = 1.0 / 3.0;
  preferences->calibrations[9].ppu = 400.0;
  preferences->calibrations[9].unit = 2;  // any but 0 is micrometres
  struct Row {
    int32_t calibration;
    float pixelsPerUnit;
    std::string_view unit;
    std::optional<int32_t> slot;
  };
  const Row rows[] = {
      {0, 400.0F, "mm", 0},  {9, 400.0F, "μm", 9},   {3, float(1.0 / 3.0), "mm", 3},
      {0, -1.0F, "mm", {}},                          // none in force
      {1, -1.0F, "mm", {}},                          // an empty slot was applied
      {0, 0.0F, "mm", {}},   {1, 400.0F, "mm", {}},  // deleted, and its calibration still in force
      {0, 401.0F, "mm", {}}, {0, 400.0F, "μm", {}},  // the same number of the other unit
      {9, 400.0F, "mm", {}}, {-1, 400.0F, "mm", {}}, {10, 400.0F, "mm", {}}};
  for (const Row& row : rows) {
    preferences->calibration = row.calibration;
    EXPECT_EQ(preferences->slotInForce(row.pixelsPerUnit, row.unit), row.slot)
        << row.calibration << " " << row.pixelsPerUnit << row.unit;
  }
}

TEST_F(PreferencesTest, AStoredFolderIsUsed) {
  store_.values["imagePath"] = bytes("grant:/pictures");
  EXPECT_EQ(load()->url, "/pictures");
  EXPECT_THAT(log_.lines(), ElementsAre("filePath: /pictures", "CalibrationsFromString: "));
}

TEST_F(PreferencesTest, AStaleFolderIsForgottenForThisRun) {
  store_.values["imagePath"] = bytes("grant:/pictures");
  grants_.stale = true;
  EXPECT_EQ(load()->url, std::nullopt);
  EXPECT_THAT(log_.lines(), Contains("filePath: (null)"));
  EXPECT_EQ(store_.values["imagePath"], UserDefaults::Value(bytes("grant:/pictures")));
  grants_.stale = false;
  EXPECT_EQ(load()->url, "/pictures");
}

TEST_F(PreferencesTest, AFolderThatIsLostIsForgottenForThisRun) {
  store_.values["imagePath"] = bytes("grant:/pictures");
  grants_.failing = true;
  EXPECT_EQ(load()->url, std::nullopt);
  EXPECT_THAT(log_.lines(), Contains("filePath: (null)"));
  EXPECT_EQ(store_.storeCalls, 0);
}

TEST_F(PreferencesTest, JunkForAFolderIsALostOne) {
  for (const UserDefaults::Value& junk : {UserDefaults::Value(Bytes{}), UserDefaults::Value("")}) {
    store_.values["imagePath"] = junk;
    const test::LogCapture log;
    EXPECT_EQ(load()->url, std::nullopt);
    EXPECT_THAT(log.lines(), Contains("filePath: (null)"));
  }
}

TEST_F(PreferencesTest, SaveLeavesTheFolderAlone) {
  const auto preferences = load();
  preferences->url = "/pictures";
  preferences->save();
  EXPECT_FALSE(store_.values.contains("imagePath"));
}

TEST_F(PreferencesTest, SavingTheFolderStoresNothingElse) {
  const auto preferences = load();
  preferences->url = "/pictures";
  preferences->saveURL();
  EXPECT_THAT(store_.values, ElementsAre(std::pair<const std::string, UserDefaults::Value>(
                                 "imagePath", bytes("grant:/pictures"))));
  EXPECT_EQ(store_.storeCalls, 1);
}

TEST_F(PreferencesTest, SavingWithoutAFolderLeavesTheStoredOne) {
  store_.values["imagePath"] = bytes("grant:/pictures");
  const auto preferences = load();
  preferences->url.reset();
  preferences->saveURL();
  EXPECT_EQ(store_.values["imagePath"], UserDefaults::Value(bytes("grant:/pictures")));
  EXPECT_EQ(store_.storeCalls, 0);
}

TEST_F(PreferencesTest, AFolderThatCannotBeGrantedIsUsedForThisRunOnly) {
  store_.values["imagePath"] = bytes("grant:/old");
  const auto preferences = load();
  preferences->url = "/new";
  grants_.failing = true;
  preferences->saveURL();
  EXPECT_EQ(preferences->url, "/new");
  EXPECT_EQ(store_.values["imagePath"], UserDefaults::Value(bytes("grant:/old")));
  EXPECT_THAT(log_.lines(), Contains("filePath failed to save: /new"));
}

TEST_F(PreferencesTest, WhateverIsStoredNeverFails) {
  std::mt19937_64 random(7);
  const char* keys[] = {"gridColor",   "lineColor",    "textColor", "textSize", "imagePNG",
                        "maxRecord",   "uniqueID",     "videoType", "width",    "height",
                        "calibration", "calibrations", "imagePath"};
  const std::string_view likely = "0123456789,;.-+einfnax ";
  const auto randomText = [&] {
    std::string text(random() % 80, '\0');
    for (char& c : text) c = random() % 4 ? likely[random() % likely.size()] : char(random() % 256);
    return text;
  };
  for (int round = 0; round < 5000; ++round) {
    for (const char* key : keys) {
      switch (random() % 4) {
        case 0: store_.values[key] = int64_t(random()); break;
        case 1: store_.values[key] = randomText(); break;
        case 2: store_.values[key] = bytes(randomText()); break;
        default: store_.values.erase(key);
      }
    }
    const test::LogCapture quiet;
    const auto preferences = load();
    ASSERT_GE(preferences->textSize, 12);
    ASSERT_LE(preferences->textSize, 48);
    preferences->save();
    preferences->saveURL();
    const auto again = load();
    ASSERT_EQ(again->textSize, preferences->textSize);
    ASSERT_EQ(again->uniqueID, preferences->uniqueID);
    ASSERT_EQ(*again->resolution, *preferences->resolution);
    ASSERT_EQ(again->calibrations[0].name, preferences->calibrations[0].name);
  }
}

TEST_F(PreferencesTest, TwoRunsKeepWhatTheOtherCalibrated) {
  const CalibrationRecord lens{"lens", 0, 853, 0.5, 47187200, 20250115, 1706.0};
  const CalibrationRecord wide{"wide", 1, 100, 2.0, 31457920, 20250116, 50.0};
  const auto one = load();
  const auto two = load();
  one->calibrations[0] = lens;
  one->save();
  two->calibrations[1] = wide;
  two->save();
  EXPECT_EQ(load()->calibrations[0], lens);
  EXPECT_EQ(load()->calibrations[1], wide);
  // What a run holds stays as it is, and is not taken for a change.
  EXPECT_EQ(two->calibrations[0], CalibrationRecord{});
  for (const auto& run : {one.get(), two.get(), two.get(), one.get()}) {
    run->maxRecord += 1;
    run->save();
    EXPECT_EQ(load()->calibrations[0], lens);
    EXPECT_EQ(load()->calibrations[1], wide);
  }
  // A slot that is emptied is a change like any other.
  one->calibrations[0] = {};
  one->save();
  EXPECT_EQ(load()->calibrations[0], CalibrationRecord{});
  EXPECT_EQ(load()->calibrations[1], wide);
  // Of two changes to one slot the later counts.
  one->calibrations[1] = lens;
  one->save();
  EXPECT_EQ(load()->calibrations[1], lens);
}

TEST_F(PreferencesTest, TwoRunsKeepWhatTheOtherSet) {
  load()->save();
  const auto one = load();
  const auto two = load();
  one->gridColor = {1.0, 0.0, 0.0, 1.0};
  one->textSize = 40;
  one->save();
  two->imagePNG = 1;
  two->save();
  two->save();
  const auto both = load();
  EXPECT_EQ(both->gridColor, (Color{1.0, 0.0, 0.0, 1.0}));
  EXPECT_EQ(both->textSize, 40);
  EXPECT_EQ(both->imagePNG, 1);
  EXPECT_EQ(two->textSize, 26);
  two->textSize = 12;
  two->save();
  EXPECT_EQ(load()->textSize, 12);
}

TEST_F(PreferencesTest, AMicroscopeKeepsTheResolutionItWasChosenWith) {
  load()->save();
  const auto one = load();
  const auto two = load();
  one->uniqueID = "one";
  *one->resolution = {0x646d6231, 1280, 960};
  one->save();
  two->uniqueID = "two";
  two->resolution->height = 600;  // the rest is as it was
  two->save();
  const auto after = load();
  EXPECT_EQ(after->uniqueID, "two");
  EXPECT_EQ(*after->resolution, (Resolution{0, 640, 600}));
}

TEST_F(PreferencesTest, ASingleRunWritesEveryField) {
  store_.values["textSize"] = "5";
  store_.values["gridColor"] = "red";
  store_.values["calibrations"] = "a,b,0,1,2,3,4;lens,0,1,2,3,4;";
  load()->save();
  EXPECT_EQ(store_.values["textSize"], UserDefaults::Value(26));
  EXPECT_EQ(store_.values["gridColor"], UserDefaults::Value("0.000000,0.000000,1.000000"));
  std::string empty;
  for (int i = 0; i < 10; ++i) empty += ",0,0,0.000000,0,0;";
  EXPECT_EQ(store_.values["calibrations"], UserDefaults::Value(empty));
}

}  // namespace
}  // namespace tessary
