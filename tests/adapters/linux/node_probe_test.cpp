#include <cerrno>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeVideoDriver.h"
#include "base/FourCharCode.h"
#include "linux/NodeProbe.h"

namespace tessary {
namespace {

using test::FakeVideoDriver;
using testing::ElementsAre;
using testing::IsEmpty;
using State = NodeProbe::State;

std::vector<std::pair<int, int>> sizesOf(const NodeProbe& probe) {
  std::vector<std::pair<int, int>> sizes;
  for (const auto& f : probe.formats) sizes.emplace_back(f.format.width, f.format.height);
  return sizes;
}

TEST(NodeProbe, PixelFormatsKeepTheirFourCharacterCodes) {
  const struct {
    uint32_t pixelFormat;
    uint32_t subType;
  } rows[] = {
      {V4L2_PIX_FMT_MJPEG, fourCharCode("dmb1")},
      {V4L2_PIX_FMT_JPEG, fourCharCode("dmb1")},
      {V4L2_PIX_FMT_YUYV, fourCharCode("yuvs")},
      {V4L2_PIX_FMT_UYVY, fourCharCode("2vuy")},
      {V4L2_PIX_FMT_NV12, fourCharCode("420v")},
      {V4L2_PIX_FMT_H264, 0},
      {V4L2_PIX_FMT_YUV420, 0},
      {V4L2_PIX_FMT_RGB24, 0},
      {0, 0},
  };
  for (const auto& row : rows) EXPECT_EQ(mediaSubTypeForPixelFormat(row.pixelFormat), row.subType);
}

TEST(NodeProbe, FormatsAndRatesStandInTheDriversOrder) {
  FakeVideoDriver driver;
  driver.formats = {
      {V4L2_PIX_FMT_YUYV, {{640, 480, {{1, 30}, {1, 15}}}}},
      {V4L2_PIX_FMT_H264, {{1920, 1080}}},
      {V4L2_PIX_FMT_MJPEG, {{1920, 1080, {{1, 5}, {1, 30}}}, {640, 480, {}}}},
  };
  const NodeProbe probe = probeNode(driver, "/dev/video0");
  EXPECT_EQ(probe.state, State::Camera);
  const FrameRateRange r30{{1, 30}, {1, 30}}, r15{{1, 15}, {1, 15}}, r5{{1, 5}, {1, 5}};
  EXPECT_THAT(
      probe.formats,
      ElementsAre(VideoFormat{{kMediaSubTypeYUYV, 640, 480, {r30, r15}}, V4L2_PIX_FMT_YUYV},
                  VideoFormat{{kMediaSubTypeMJPEG, 1920, 1080, {r5, r30}}, V4L2_PIX_FMT_MJPEG},
                  VideoFormat{{kMediaSubTypeMJPEG, 640, 480, {}}, V4L2_PIX_FMT_MJPEG}));
}

TEST(NodeProbe, ARangeOfSizesOffersItsEndsAndTheCommonSizesOnItsSteps) {
  using Range = v4l2_frmsize_stepwise;
  using Sizes = std::vector<std::pair<int, int>>;
  const struct {
    const char* what;
    Range range;  // min, max, step of the width; then of the height
    Sizes sizes;
  } rows[] = {
      {"wide",
       {2, 8192, 2, 1, 8192, 1},
       {{2, 1}, {640, 480}, {1280, 720}, {1920, 1080}, {8192, 8192}}},
      {"ends at common sizes",
       {640, 1920, 16, 480, 1080, 8},
       {{640, 480}, {1280, 720}, {1920, 1080}}},
      {"steps miss 1080",
       {320, 2560, 32, 240, 1920, 16},
       {{320, 240}, {640, 480}, {1280, 720}, {2560, 1920}}},
      {"too small for most", {160, 800, 1, 120, 600, 1}, {{160, 120}, {640, 480}, {800, 600}}},
      {"one size", {800, 800, 0, 600, 600, 0}, {{800, 600}}},
  };
  for (const auto& row : rows) {
    FakeVideoDriver driver;
    driver.formats = {{V4L2_PIX_FMT_YUYV, {}, row.range}};
    EXPECT_EQ(sizesOf(probeNode(driver, "/dev/video0")), row.sizes) << row.what;
  }
}

TEST(NodeProbe, ARangeOfRatesIsOneRange) {
  FakeVideoDriver driver;
  driver.formats = {{V4L2_PIX_FMT_MJPEG, {{640, 480}}}};
  driver.formats[0].intervalRange = {{1, 60}, {1, 2}, {1, 1}};
  const NodeProbe probe = probeNode(driver, "/dev/video0");
  ASSERT_EQ(probe.formats.size(), 1u);
  EXPECT_THAT(probe.formats[0].format.videoSupportedFrameRateRanges,
              ElementsAre(FrameRateRange{{1, 60}, {1, 2}}));
}

TEST(NodeProbe, TheDefaultIsWhatTheDriverStandsAt) {
  FakeVideoDriver driver;
  driver.formats = {{V4L2_PIX_FMT_MJPEG, {{64, 48}}}, {V4L2_PIX_FMT_YUYV, {{8, 4}, {16, 8}}}};
  const NodeProbe probe = probeNode(driver, "/dev/video0");
  ASSERT_TRUE(probe.currentFormat);
  EXPECT_EQ(probe.currentFormat->format.mediaSubType, kMediaSubTypeYUYV);
  EXPECT_EQ(probe.currentFormat->format.width, 16);
}

TEST(NodeProbe, ADriverThatStandsAtWhatCantBeShownDefaultsToTheFirstFormat) {
  FakeVideoDriver driver;
  driver.formats = {{V4L2_PIX_FMT_MJPEG, {{64, 48}}}, {V4L2_PIX_FMT_H264, {{8, 4}}}};
  const NodeProbe probe = probeNode(driver, "/dev/video0");
  ASSERT_TRUE(probe.currentFormat);
  EXPECT_EQ(probe.currentFormat->pixelFormat, V4L2_PIX_FMT_MJPEG);
}

TEST(NodeProbe, ACameraWithoutFormatsIsACamera) {
  FakeVideoDriver driver;
  driver.formats = {};
  const NodeProbe probe = probeNode(driver, "/dev/video0");
  EXPECT_EQ(probe.state, State::Camera);
  EXPECT_THAT(probe.formats, IsEmpty());
  EXPECT_FALSE(probe.currentFormat);
}

TEST(NodeProbe, ADriversNameMayFillItsFieldWithoutAnEnd) {
  FakeVideoDriver driver;
  driver.card = std::string(32, 'n') + "cut off";
  EXPECT_EQ(probeNode(driver, "/dev/video0").card, std::string(32, 'n'));
}

TEST(NodeProbe, OnlyNodesThatStreamPicturesAreCameras) {
  const struct {
    uint32_t capabilities;
    State state;
  } rows[] = {
      {V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING, State::Camera},
      {V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING | V4L2_CAP_EXT_PIX_FORMAT, State::Camera},
      {V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING, State::NotACamera},
      {V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_READWRITE, State::NotACamera},
      {V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING, State::NotACamera},
      {V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING, State::NotACamera},
      {0, State::NotACamera},
  };
  for (const auto& row : rows) {
    FakeVideoDriver driver;
    driver.capabilities = row.capabilities;
    EXPECT_EQ(probeNode(driver, "/dev/video0").state, row.state) << row.capabilities;
    EXPECT_EQ(driver.openDescriptors(), 0);
  }
}

TEST(NodeProbe, ANodeThatCantBeAskedIsToldFromOneThatIsNoCamera) {
  const struct {
    int error;
    State state;
  } rows[] = {{EACCES, State::NoPermission}, {EPERM, State::NoPermission},
              {ENODEV, State::Unanswered},   {ENOENT, State::Unanswered},
              {EIO, State::Unanswered},      {EMFILE, State::Unanswered}};
  for (const auto& row : rows) {
    FakeVideoDriver driver;
    driver.setOpenError(row.error);
    EXPECT_EQ(probeNode(driver, "/dev/video0").state, row.state) << row.error;
  }
}

TEST(NodeProbe, ACameraThatVanishesWhileItIsAskedGivesNoHalfList) {
  int calls;
  {
    FakeVideoDriver driver;
    ASSERT_EQ(probeNode(driver, "/dev/video0").state, State::Camera);
    calls = driver.calls();
  }
  ASSERT_GT(calls, 10);
  for (int n = 1; n < calls; ++n) {  // the last one closes the node
    FakeVideoDriver driver;
    driver.failCall(n, ENODEV, true);
    EXPECT_EQ(probeNode(driver, "/dev/video0").state, State::Unanswered) << "call " << n;
    EXPECT_EQ(driver.openDescriptors(), 0) << "call " << n;
  }
}

}  // namespace
}  // namespace tessary
