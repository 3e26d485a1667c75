#include <gmock/gmock.h>

#include "FakeCaptureSystem.h"
#include "LogCapture.h"
#include "capture/MicroscopeRules.h"

namespace tessary {
namespace {

using test::FakeCaptureSystem;
using test::format;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kMJPEG = kMediaSubTypeMJPEG;
constexpr uint32_t kYUYV = kMediaSubTypeYUYV;
constexpr uint32_t kUYVY = kMediaSubTypeUYVY;
constexpr uint32_t kNV12 = kMediaSubTypeNV12;

ResolutionList listOf(const std::vector<Resolution>& resolutions) {
  ResolutionList list;
  for (const Resolution& resolution : resolutions)
    list.push_back(std::make_shared<Resolution>(resolution));
  return list;
}

std::vector<Resolution> valuesOf(const ResolutionList& list) {
  std::vector<Resolution> values;
  for (const auto& resolution : list) values.push_back(*resolution);
  return values;
}

std::vector<std::string> linesOf(const LogCapture& log, size_t first, size_t count) {
  const auto lines = log.lines();
  if (lines.size() < first + count) return {};
  return {lines.begin() + std::ptrdiff_t(first), lines.begin() + std::ptrdiff_t(first + count)};
}

TEST(ParseModelID, ReadsVendorAndProduct) {
  struct Row {
    std::string text;
    bool parsed;
    int32_t vid, pid;
  };
  const std::string stem = "UVC Camera VendorID_1374 ProductID_41312";
  const std::string kept = "UVC Camera VendorID_7 ProductID_8";
  const Row rows[] = {
      {stem, true, 1374, 41312},
      {kept, true, 7, 8},
      // What follows the digits is ignored, and no digits read as 0.
      {"UVC Camera VendorID_1374x ProductID_41312 more", true, 1374, 41312},
      {"UVC Camera VendorID_0x55 ProductID_1.9e3", true, 0, 1},
      {"UVC Camera VendorID_ ProductID_", true, 0, 0},
      {"UVC Camera VendorID_abc ProductID_-5", true, 0, -5},
      {"UVC Camera VendorID_1 ProductID_ 5", true, 1, 5},
      {"UVC Camera VendorID_+1 ProductID_\t5", true, 1, 5},
      {"UVC Camera VendorID_1374VendorID_2 ProductID_3", true, 1374, 3},
      // Read at 64 bits and cut to 32.
      {"UVC Camera VendorID_4294968670 ProductID_4294967296", true, 1374, 0},
      {"UVC Camera VendorID_2147483648 ProductID_99999999999999999999", true, INT32_MIN, -1},
      {"UVC Camera VendorID_-99999999999999999999 ProductID_1", true, 0, 1},
      // 99 characters fit, 100 do not.
      {stem + std::string(99 - stem.size(), '1'), true, 1374, -1},
      {stem + " " + std::string(98 - stem.size(), 'x'), true, 1374, 41312},
      {stem + " " + std::string(99 - stem.size(), 'x'), false, -7, -7},
      {"", false, -7, -7},
      {"UVC Camera", false, -7, -7},
      {"UVC Camera ", false, -7, -7},
      {"uvc camera VendorID_1374 ProductID_41312", false, -7, -7},
      {"UVC Camera  VendorID_1374 ProductID_41312", false, -7, -7},
      {" UVC Camera VendorID_1374 ProductID_41312", false, -7, -7},
      {"UVC Camera VendorID_1374", false, -7, -7},
      {"UVC Camera VendorID_1374ProductID_41312", false, -7, -7},
      {"UVC Camera VendorID_1374  ProductID_41312", false, -7, -7},
      {"UVC Camera VendorID_1374 ProductID", false, -7, -7},
      {"UVC Camera VendorID_ 1374 ProductID_41312", false, -7, -7},
      {"UVC Camera VendorID_1374 productID_41312", false, -7, -7},
      {stem + " \xC3\xA9", false, -7, -7},
  };
  for (const Row& row : rows) {
    int32_t vid = -7;
    int32_t pid = -7;
    EXPECT_EQ(parseModelID(row.text, vid, pid), row.parsed) << row.text;
    EXPECT_EQ(vid, row.vid) << row.text;
    EXPECT_EQ(pid, row.pid) << row.text;
  }
}

TEST(IsVidPidValid, AcceptsSixtyProductsOfOneVendor) {
  struct Row {
    int32_t vid, pid;
    bool valid;
  };
  const Row rows[] = {
      {1374, 41312, true},  {1374, 41340, true},  {1374, 41371, true},  {1374, 41311, false},
      {1374, 41372, false}, {1373, 41312, false}, {1375, 41312, false}, {0, 0, false},
      {1374, -1, false},    {41312, 1374, false},
  };
  for (const Row& row : rows)
    EXPECT_EQ(isVidPidValid(row.vid, row.pid), row.valid) << row.vid << ' ' << row.pid;
  int accepted = 0;
  for (int32_t pid = 0; pid <= 0xFFFF; ++pid) accepted += isVidPidValid(1374, pid);
  EXPECT_EQ(accepted, 60);
}

TEST(AddDeviceResolution, DropsWhatIsSmallerThan320x240) {
  ResolutionList list;
  for (const auto& [width, height] : {std::pair{320, 240},
                                      {319, 240},
                                      {320, 239},
                                      {0, 0},
                                      {-640, -480},
                                      {320, 2000},
                                      {2000, 240}})
    addDeviceResolution(list, kMJPEG, width, height);
  EXPECT_THAT(valuesOf(list),
              ElementsAre(Resolution{kMJPEG, 320, 240}, Resolution{kMJPEG, 320, 2000},
                          Resolution{kMJPEG, 2000, 240}));
}

TEST(AddDeviceResolution, KeepsOneOfEachTypeAndSize) {
  ResolutionList list;
  addDeviceResolution(list, kMJPEG, 640, 480);
  addDeviceResolution(list, kYUYV, 640, 480);
  addDeviceResolution(list, kMJPEG, 640, 480);
  addDeviceResolution(list, kMJPEG, 480, 640);
  EXPECT_THAT(valuesOf(list), ElementsAre(Resolution{kMJPEG, 640, 480}, Resolution{kYUYV, 640, 480},
                                          Resolution{kMJPEG, 480, 640}));
}

TEST(SortDeviceResolutions, OrdersByTypeAndThenByPixelCount) {
  auto list = listOf({{kYUYV, 640, 480},
                      {kMJPEG, 1920, 1080},
                      {0xFFFFFFFF, 320, 240},
                      {kMJPEG, 640, 480},
                      {kYUYV, 320, 240},
                      {1, 4000, 3000},
                      {kMJPEG, 1280, 720}});
  sortDeviceResolutions(list);
  EXPECT_THAT(valuesOf(list),
              ElementsAre(Resolution{1, 4000, 3000}, Resolution{kMJPEG, 640, 480},
                          Resolution{kMJPEG, 1280, 720}, Resolution{kMJPEG, 1920, 1080},
                          Resolution{kYUYV, 320, 240}, Resolution{kYUYV, 640, 480},
                          // Type codes are unsigned.
                          Resolution{0xFFFFFFFF, 320, 240}));
}

TEST(SortDeviceResolutions, WrapsPixelCountsAt32Bits) {
  // 65536 * 32768 is the lowest 32-bit number, 65536 * 65536 is 0.
  auto list = listOf({{kMJPEG, 640, 480}, {kMJPEG, 65536, 65536}, {kMJPEG, 65536, 32768}});
  sortDeviceResolutions(list);
  EXPECT_THAT(valuesOf(list),
              ElementsAre(Resolution{kMJPEG, 65536, 32768}, Resolution{kMJPEG, 65536, 65536},
                          Resolution{kMJPEG, 640, 480}));
}

TEST(SortDeviceResolutions, TakesAnyNumberOfEntries) {
  ResolutionList list;
  for (int32_t i = 200; i > 0; --i)
    list.push_back(std::make_shared<Resolution>(
        Resolution{i % 2 ? kMJPEG : kYUYV, 320 + i * 7 % 50, 240 + i * 3 % 40}));
  sortDeviceResolutions(list);
  for (size_t i = 1; i < list.size(); ++i) {
    const Resolution& a = *list[i - 1];
    const Resolution& b = *list[i];
    EXPECT_LE(std::pair(a.type, a.width * a.height), std::pair(b.type, b.width * b.height)) << i;
  }
}

TEST(CleanUpDeviceResolutions, LeavesOnePixelFormat) {
  struct Row {
    std::vector<uint32_t> types, left;
  };
  const Row rows[] = {
      {{kMJPEG, kYUYV}, {kMJPEG}},
      {{kMJPEG, kMJPEG, kYUYV, kNV12}, {kMJPEG, kMJPEG}},
      {{kYUYV, kNV12, kYUYV}, {kYUYV, kYUYV}},
      {{kYUYV}, {kYUYV}},
      {{kMJPEG}, {kMJPEG}},
      {{kNV12}, {kNV12}},
      {{kUYVY, kUYVY}, {kUYVY, kUYVY}},
      {{kNV12, kUYVY}, {}},
      {{}, {}},
  };
  for (const Row& row : rows) {
    ResolutionList list;
    for (const uint32_t type : row.types)
      list.push_back(std::make_shared<Resolution>(Resolution{type, 640, 480}));
    cleanUpDeviceResolutions(list);
    std::vector<uint32_t> left;
    for (const auto& resolution : list) left.push_back(resolution->type);
    EXPECT_EQ(left, row.left) << testing::PrintToString(row.types);
  }
}

TEST(GetDefResolution, TakesTheMiddleOrTheLowerOfTwoMiddles) {
  EXPECT_EQ(getDefResolution({}), nullptr);
  const size_t indices[] = {0, 0, 1, 1, 2, 2, 3};
  ResolutionList list;
  for (const size_t index : indices) {
    list.push_back(std::make_shared<Resolution>());
    EXPECT_EQ(getDefResolution(list), list[index]) << list.size();
  }
}

TEST(GetDeviceResolutions, EmptiesSortsAndCleans) {
  FakeCaptureSystem system;
  const auto device = system.plug("m1");
  device->formats_ = {
      format(kYUYV, 640, 480),        format(kMJPEG, 1920, 1080), format(kMJPEG, 640, 480, {30}),
      format(kMJPEG, 640, 480, {15}), format(kMJPEG, 160, 120),   format(kMJPEG, 1280, 720),
  };
  auto list = listOf({{kNV12, 1, 1}});
  getDeviceResolutions(*device, list);
  EXPECT_THAT(valuesOf(list),
              ElementsAre(Resolution{kMJPEG, 640, 480}, Resolution{kMJPEG, 1280, 720},
                          Resolution{kMJPEG, 1920, 1080}));
}

TEST(GetAllDevices, DescribesEachMicroscope) {
  FakeCaptureSystem system;
  const auto device = system.plug("usb-1.2");
  device->modelID_ = "UVC Camera VendorID_1374 ProductID_41371";
  device->name_ = "A5 \xCE\xBCScope";
  const LogCapture log;
  MicroscopeList list;
  getAllDevices(system, list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]->uniqueID, "usb-1.2");
  EXPECT_EQ(list[0]->name, "A5 \xCE\xBCScope");
  EXPECT_EQ(list[0]->vid, 1374);
  EXPECT_EQ(list[0]->pid, 41371);
  EXPECT_EQ(list[0]->resolutions.size(), 3u);
  EXPECT_EQ(list[0]->defResolution, list[0]->resolutions[1]);
  EXPECT_EQ(list[0]->currResolution, nullptr);
}

TEST(GetAllDevices, SkipsAllThatIsNoMicroscopeAndLogsItNevertheless) {
  FakeCaptureSystem system;
  system.plug("built-in")->transportType_ = fourCharCode("bltn");
  system.plug("sound")->hasVideo_ = false;
  system.plug("odd")->modelID_ = "Some camera";
  system.plug("webcam")->modelID_ = "UVC Camera VendorID_1133 ProductID_41312";
  system.plug("m1");
  const LogCapture log;
  MicroscopeList list;
  getAllDevices(system, list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]->uniqueID, "m1");
  ASSERT_EQ(log.lines().size(), 20u);
  EXPECT_THAT(linesOf(log, 8, 4), ElementsAre("modelID:Some camera", "uniqueID:odd",
                                              "localizedName:Microscope", "manufacturer:Works"));
}

TEST(GetAllDevices, ListsAMicroscopeThatOffersNothingUsable) {
  FakeCaptureSystem system;
  system.plug("m1")->formats_ = {format(kNV12, 640, 480), format(kUYVY, 640, 480)};
  system.plug("m2")->formats_ = {};
  const LogCapture log;
  MicroscopeList list;
  getAllDevices(system, list);
  ASSERT_EQ(list.size(), 2u);
  for (const auto& microscope : list) {
    EXPECT_THAT(microscope->resolutions, IsEmpty());
    EXPECT_EQ(microscope->defResolution, nullptr);
  }
}

TEST(GetAllDevices, AppendsInThePlatformsOrder) {
  FakeCaptureSystem system;
  for (const char* id : {"z", "a", "m"}) system.plug(id);
  const LogCapture log;
  MicroscopeList list{std::make_shared<MicroscopeInfo>()};
  getAllDevices(system, list);
  std::vector<std::string> ids;
  for (const auto& microscope : list) ids.push_back(microscope->uniqueID);
  EXPECT_THAT(ids, ElementsAre("", "z", "a", "m"));
}

TEST(GetAllDevices, ListsEveryCameraThatCanBeShownWhereAnyCounts) {
  FakeCaptureSystem system;
  system.plug("webcam")->modelID_ = "UVC Camera VendorID_1133 ProductID_39321";
  const auto board = system.plug("board");
  board->transportType_ = 0;
  board->modelID_ = "A platform camera whose name is none of the numbers";
  board->formats_ = {format(kNV12, 320, 240)};
  system.plug("sound")->hasVideo_ = false;
  const auto infrared = system.plug("infrared");
  infrared->modelID_ = "Grey";
  infrared->formats_ = {};
  const auto forbidden = system.plug("forbidden");
  forbidden->modelID_ = "A camera that this user may not ask";
  forbidden->formats_ = {};
  forbidden->formatsAreKnown_ = false;
  system.plug("microscope");
  const LogCapture log;
  MicroscopeList list;
  getAllDevices(system, list, Eligible::AnyCamera);
  std::vector<std::string> ids;
  for (const auto& camera : list) ids.push_back(camera->uniqueID);
  ASSERT_THAT(ids, ElementsAre("webcam", "board", "forbidden", "microscope"));
  EXPECT_EQ(list[0]->pid, 39321);
  EXPECT_EQ(list[1]->vid, 0);
  EXPECT_THAT(valuesOf(list[1]->resolutions), ElementsAre(Resolution{kNV12, 320, 240}));
  EXPECT_THAT(list[2]->resolutions, IsEmpty());
  EXPECT_EQ(list[3]->pid, 41312);
}

TEST(GetAllDevices, OfAnyCameraOffersWhatItHasWhereTheRulesLeaveNothing) {
  struct Row {
    std::vector<CaptureFormat> offered;
    std::vector<Resolution> microscope, any;
  };
  const Row rows[] = {
      // Within the rules there is no difference.
      {{format(kYUYV, 640, 480), format(kMJPEG, 640, 480), format(kMJPEG, 160, 120)},
       {{kMJPEG, 640, 480}},
       {{kMJPEG, 640, 480}}},
      {{format(kNV12, 640, 480), format(kUYVY, 640, 480), format(kUYVY, 80, 60)},
       {},
       {{kUYVY, 80, 60}, {kUYVY, 640, 480}}},
      {{format(kYUYV, 256, 192), format(kYUYV, 256, 192, {9})}, {}, {{kYUYV, 256, 192}}},
  };
  for (const Row& row : rows) {
    FakeCaptureSystem system;
    system.plug("m1")->formats_ = row.offered;
    const LogCapture log;
    MicroscopeList microscopes;
    MicroscopeList any;
    getAllDevices(system, microscopes);
    getAllDevices(system, any, Eligible::AnyCamera);
    EXPECT_EQ(valuesOf(microscopes.at(0)->resolutions), row.microscope);
    EXPECT_EQ(valuesOf(any.at(0)->resolutions), row.any);
    EXPECT_EQ(any.at(0)->defResolution != nullptr, !row.any.empty());
  }
}

}  // namespace
}  // namespace tessary
