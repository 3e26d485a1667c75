#include <cmath>
#include <limits>
#include <random>
#include <type_traits>

#include <gmock/gmock.h>

#include "FakeViewHost.h"
#include "preview/PassViewport.h"
#include "preview/ViewGeometry.h"

namespace tessary::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Delegate final : public PreviewViewLocationDelegate {
 public:
  explicit Delegate(std::vector<std::string>& calls) : calls_(calls) {}
  void previewViewFrameDidChange() override { calls_.emplace_back("frameDidChange"); }
  void previewViewLocationDidChange(ViewPoint point) override {
    calls_.emplace_back("locationDidChange");
    location = point;
  }
  void previewViewZoomDidChange() override { calls_.emplace_back("zoomDidChange"); }
  ViewPoint location{-1, -1};

 private:
  std::vector<std::string>& calls_;
};

using Convert = decltype(&ViewGeometry::convertPointFromSuperview);
static_assert(std::is_invocable_r_v<ViewPoint, Convert, ViewGeometry, ContainerPoint>);
static_assert(!std::is_invocable_v<Convert, ViewGeometry, ScreenPoint>);
static_assert(!std::is_invocable_v<Convert, ViewGeometry, ViewPoint>);

struct Fixture {
  Fixture(TextureSize frame, Size container) : texture(frame) {
    host.container = container;
    geometry.setLocationDelegate(&delegate);
    geometry.frameSizeDidChange(frame);
    geometry.zoomTo(-1);
    host.calls.clear();
  }
  FakeViewHost host;
  TextureSize texture;
  Delegate delegate{host.calls};
  ViewGeometry geometry{host, texture};
};

TEST(ViewGeometry, MapsZoomStepsToScales) {
  const std::pair<int32_t, float> table[] = {
      {0, 0.5F},
      {1, 0.75F},
      {2, 1.0F},
      {3, 1.25F},
      {4, 1.5F},
      {5, 2.0F},
      {6, 1.0F},
      {-1, 1.0F},
      {std::numeric_limits<int32_t>::max(), 1.0F},
      {std::numeric_limits<int32_t>::min(), 1.0F},
  };
  for (const auto& [step, scale] : table) EXPECT_EQ(mapZoom(step), scale) << step;
}

TEST(ViewGeometry, StartsWithoutPictureAndAHundredPixelsWide) {
  FakeViewHost host;
  const TextureSize none;
  const ViewGeometry geometry(host, none);
  EXPECT_EQ(geometry.zoom(), -1);
  EXPECT_EQ(geometry.bitmapSize(), (TextureSize{100, 100}));
  EXPECT_EQ(geometry.viewLocation(), (ViewPoint{0, 0}));
}

TEST(ViewGeometry, LaysOutThreeZoomsOfOnePictureInOneContainer) {
  struct Row {
    int32_t step;
    TextureSize bitmap;
    Size view;
    ContainerPoint frame;
    ViewPoint bounds, location;
    PassViewport viewport;
  };
  const Row table[] = {
      // step  B             V             F             O           L             viewport
      {2, {1280, 720}, {1280, 720}, {0, 0}, {240, 60}, {240, 60}, {-240, -60, 1280, 720}},
      {0, {640, 360}, {1280, 720}, {-240, -60}, {0, 0}, {-320, -180}, {320, 180, 640, 360}},
      {4,
       {1920, 1080},
       {1920, 1080},
       {0, 0},
       {560, 240},
       {560, 240},
       {-1120.0 / 3, -160, 1280, 720}},
  };
  Fixture f({1280, 720}, {800, 600});
  for (const Row& row : table) {
    SCOPED_TRACE(row.step);
    f.geometry.zoomTo(row.step);
    EXPECT_EQ(f.geometry.zoom(), row.step);
    EXPECT_EQ(f.geometry.bitmapSize(), row.bitmap);
    EXPECT_EQ(f.geometry.viewFrame(), (ContainerRect{row.frame, row.view}));
    EXPECT_EQ(f.geometry.viewBounds(), (ViewRect{row.bounds, row.view}));
    EXPECT_EQ(f.geometry.viewLocation(), row.location);
    const PassViewport viewport = passViewport(f.geometry.zoom(), f.geometry.viewLocation(),
                                               f.geometry.bitmapSize(), f.texture);
    EXPECT_DOUBLE_EQ(viewport.originX, row.viewport.originX);
    EXPECT_DOUBLE_EQ(viewport.originY, row.viewport.originY);
    EXPECT_EQ(viewport.width, row.viewport.width);
    EXPECT_EQ(viewport.height, row.viewport.height);
    EXPECT_EQ(viewport.znear, -1.0);
    EXPECT_EQ(viewport.zfar, 1.0);
  }
}

TEST(ViewGeometry, RoundsThePictureHalfAwayFromZeroInSinglePrecision) {
  struct Row {
    int32_t texture, step, bitmap;
  };
  const Row table[] = {
      {1279, 0, 640},  {1281, 0, 641},  {1281, 1, 961},  {1281, 3, 1601},         {1282, 3, 1603},
      {1281, 4, 1922}, {1281, 5, 2562}, {1281, 7, 1281}, {16777217, 2, 16777216},
  };
  for (const Row& row : table) {
    Fixture f({row.texture, row.texture}, {100, 100});
    f.geometry.zoomTo(row.step == 2 ? -1 : row.step);
    EXPECT_EQ(f.geometry.bitmapWidth(), row.bitmap) << row.texture << " at step " << row.step;
    EXPECT_EQ(f.geometry.bitmapHeight(), row.bitmap) << row.texture << " at step " << row.step;
  }
}

TEST(ViewGeometry, ZoomToThePresentStepDoesNothingAndMinusOneAlwaysLaysOut) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.zoomTo(2);
  EXPECT_THAT(f.host.calls, IsEmpty());
  f.geometry.zoomTo(-1);
  EXPECT_THAT(f.host.calls, ElementsAre("frameDidChange"));
  EXPECT_EQ(f.geometry.zoom(), 2);
  f.host.calls.clear();
  f.geometry.zoomTo(-7);
  EXPECT_THAT(f.host.calls, ElementsAre("frameDidChange"));
  EXPECT_EQ(f.geometry.zoom(), 2);
}

TEST(ViewGeometry, AStepAboveTheTableIsStoredAndActsAsHundredPercent) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.zoomTo(9);
  EXPECT_EQ(f.geometry.zoom(), 9);
  EXPECT_EQ(f.geometry.bitmapSize(), (TextureSize{1280, 720}));
}

TEST(ViewGeometry, ZoomForgetsThePan) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.offsetLocationTo(0, 0);
  f.geometry.zoomTo(4);
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{560, 240}));
  f.geometry.zoomTo(2);
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{240, 60}));
}

TEST(ViewGeometry, AFrameThatJustFitsIsNotScrolled) {
  Fixture f({640, 480}, {640, 480});
  EXPECT_EQ(f.geometry.viewFrame(), (ContainerRect{{0, 0}, {640, 480}}));
  EXPECT_EQ(f.geometry.viewBounds(), (ViewRect{{0, 0}, {640, 480}}));
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{0, 0}));
  EXPECT_TRUE(std::signbit(f.geometry.viewLocation().x));
}

TEST(ViewGeometry, OneAxisFitsWhileTheOtherOverflows) {
  Fixture f({1280, 720}, {1500, 600});
  EXPECT_EQ(f.geometry.viewFrame(), (ContainerRect{{110, 0}, {1280, 720}}));
  EXPECT_EQ(f.geometry.viewBounds().origin, (ViewPoint{0, 60}));
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{0, 60}));
}

TEST(ViewGeometry, AnOddOverflowIsHalvedDownAndPansToItsEnd) {
  Fixture f({645, 485}, {640, 480});  // B - C = 5
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{2, 2}));
  f.geometry.offsetLocationTo(100, 5);
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{5, 5}));
}

TEST(ViewGeometry, TheOverflowOfAFractionalContainerIsTruncated) {
  Fixture f({645, 645}, {639.5, 644.5});  // 5.5 and 0.5
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{2, 0}));
  f.geometry.offsetLocationTo(100, 100);
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{5, 0}));
}

TEST(ViewGeometry, BelowHundredPercentTheViewHangsOverTheContainerOnBothSides) {
  Fixture f({1280, 960}, {1000, 800});
  f.geometry.zoomTo(1);  // 960 by 720: the container is between picture and frame size
  EXPECT_EQ(f.geometry.viewFrame(), (ContainerRect{{-140, -80}, {1280, 960}}));
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{-160, -120}));
  // The picture's edge in the container: 20 on the left, and as much on the right.
  EXPECT_EQ(f.geometry.viewFrame().origin.x - f.geometry.viewLocation().x, 20);
}

TEST(ViewGeometry, PanningIsLimitedToThePicture) {
  struct Row {
    float x, y;
    ViewPoint location;
  };
  const Row table[] = {
      {-1, -1000, {0, 0}},          {0, 0, {0, 0}},
      {480, 120, {480, 120}},       {481, 121, {480, 120}},
      {10.5F, 0.25F, {10.5, 0.25}}, {1e30F, -1e30F, {480, 0}},
  };
  Fixture f({1280, 720}, {800, 600});
  for (const Row& row : table) {
    f.geometry.offsetLocationTo(row.x, row.y);
    EXPECT_EQ(f.geometry.viewLocation(), row.location) << row.x << ", " << row.y;
    EXPECT_EQ(f.geometry.viewBounds().origin, row.location) << row.x << ", " << row.y;
  }
}

TEST(ViewGeometry, PanningTellsNobody) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.offsetLocationTo(1, 2);
  EXPECT_THAT(f.host.calls, IsEmpty());
}

TEST(ViewGeometry, AnAxisThatFitsIgnoresTheWantedLocation) {
  Fixture f({640, 480}, {800, 600});
  f.geometry.offsetLocationTo(50, 50);
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{0, 0}));
  EXPECT_EQ(f.geometry.viewFrame().origin, (ContainerPoint{80, 60}));
}

TEST(ViewGeometry, AResizeTakesBackOnlyThePanThatNoLongerFits) {
  struct Row {
    ViewPoint pan;
    Size container;
    ViewPoint location;
  };
  const Row table[] = {
      {{480, 120}, {900, 650}, {380, 70}},   // pulled back to M
      {{100, 50}, {900, 650}, {100, 50}},    // still inside
      {{0, 0}, {700, 500}, {0, 0}},          // stays at the left edge
      {{480, 120}, {700, 500}, {480, 120}},  // more room to scroll changes nothing
      {{480, 120}, {1280, 720}, {0, 0}},     // fits exactly
  };
  for (const Row& row : table) {
    Fixture f({1280, 720}, {800, 600});
    f.geometry.offsetLocationTo(float(row.pan.x), float(row.pan.y));
    f.host.calls.clear();
    f.host.container = row.container;
    f.geometry.windowDidResize();
    EXPECT_EQ(f.geometry.viewLocation(), row.location) << row.container.width;
    EXPECT_EQ(f.geometry.zoom(), 2);
    EXPECT_EQ(f.geometry.bitmapSize(), (TextureSize{1280, 720}));
    EXPECT_THAT(f.host.calls, ElementsAre("frameDidChange"));
  }
}

TEST(ViewGeometry, AWindowThatShrinksBelowThePictureDoesNotCentreIt) {
  Fixture f({1280, 720}, {1300, 740});
  f.host.container = {800, 600};
  f.geometry.windowDidResize();
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{0, 0}));
}

TEST(ViewGeometry, WithoutContainerEverythingOverflows) {
  Fixture f({640, 480}, {0, 0});
  EXPECT_EQ(f.geometry.viewFrame(), (ContainerRect{{0, 0}, {640, 480}}));
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{320, 240}));
}

TEST(ViewGeometry, DraggingMovesThePictureWithTheMouse) {
  struct Row {
    ScreenPoint to;  // pressed at (100, 100) with the picture at (240, 60)
    ViewPoint location;
    bool told;
  };
  const Row table[] = {
      {{100, 100}, {240, 60}, false},
      {{100.9, 100.9}, {240, 60}, false},  // parts of a pixel don't count
      {{110, 100}, {230, 60}, true},
      {{90.5, 100}, {249, 60}, true},  // -9.5 is truncated to -9
      {{100, 90}, {240, 70}, true},
      {{100, 110}, {240, 50}, true},
      {{1000, -800}, {0, 120}, true},
      {{-1000, 1200}, {480, 0}, true},
      {{1e300, 1e300}, {0, 0}, true},
  };
  for (const Row& row : table) {
    SCOPED_TRACE(::testing::Message() << row.to.x << ", " << row.to.y);
    Fixture f({1280, 720}, {800, 600});
    f.geometry.beginPan();
    f.geometry.pan({100, 100}, row.to);
    EXPECT_EQ(f.geometry.viewLocation(), row.location);
    if (row.told) {
      EXPECT_THAT(f.host.calls, ElementsAre("locationDidChange"));
      EXPECT_EQ(f.delegate.location, row.location);
    } else {
      EXPECT_THAT(f.host.calls, IsEmpty());
    }
  }
}

TEST(ViewGeometry, ADragIsMeasuredFromItsPressAndNotStepByStep) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.beginPan();
  for (int step = 1; step <= 4; ++step) f.geometry.pan({0, 0}, {0.5 * step, 0});
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{238, 60}));
}

TEST(ViewGeometry, TheRoomForTheWindowCountsFromItsTopLeftCorner) {
  struct Row {
    ScreenRect window;
    Size screen;
    double bottom;
    Size room;
  };
  const Row table[] = {
      {{{100, 480}, {300, 400}}, {1920, 1080}, 1080, {1820, 600}},
      {{{100.9, 478.2}, {300.9, 400.9}}, {1920.5, 1080}, 1080, {1820.5, 600}},
      {{{-100.9, 730.5}, {300, 400}}, {1920, 1080}, 1080, {2020, 350}},
      {{{2000, 480}, {300, 400}}, {1280, 1024}, 1080, {-720, 600}},  // second screen: meant
      {{}, {}, 0, {0, 0}},
      {{{1e300, -2e300}, {0, 1e300}}, {}, 0, {-2147483647, 4294967294}},
  };
  for (const Row& row : table) {
    FakeViewHost host;
    host.window = row.window;
    host.screen = row.screen;
    host.bottom = row.bottom;
    const TextureSize none;
    const ViewGeometry geometry(host, none);
    EXPECT_EQ(geometry.getMaxWindowSize(), row.room);
  }
}

TEST(ViewGeometry, StartFitsTheWindowAndKeepsItsTopLeftCorner) {
  struct Row {
    TextureSize frame;
    Size content;
  };
  const Row table[] = {
      {{640, 480}, {640, 480}},
      {{1280, 720}, {1280, 628}},   // higher than what is below the top edge
      {{1920, 1080}, {1820, 628}},  // and wider than what is to the right
  };
  for (const Row& row : table) {
    SCOPED_TRACE(row.frame.width);
    FakeViewHost host;
    host.windowIsContainer = true;
    host.titleBar = 28;
    host.window = {{100, 452}, {400, 428}};  // 628 to the bottom
    host.screen = {1920, 1080};
    host.bottom = 1080;
    Delegate delegate(host.calls);
    const TextureSize texture = row.frame;
    ViewGeometry geometry(host, texture);
    geometry.setLocationDelegate(&delegate);
    geometry.frameSizeDidChange(row.frame);
    EXPECT_EQ(geometry.zoom(), 2);
    EXPECT_EQ(geometry.bitmapSize(), row.frame);
    EXPECT_THAT(host.calls, IsEmpty());

    geometry.startPreview();
    EXPECT_THAT(host.calls, ElementsAre("setContentSize", "setFrameOrigin", "frameDidChange",
                                        "frameDidChange"));
    EXPECT_EQ(host.contentSize, row.content);
    EXPECT_EQ(host.window.origin, (ScreenPoint{100, 452}));
    EXPECT_EQ(geometry.viewFrame().size, (Size{double(row.frame.width), double(row.frame.height)}));
    EXPECT_EQ(geometry.viewLocation(),
              (ViewPoint{double(int((row.frame.width - row.content.width) / 2)),
                         double(int((row.frame.height - row.content.height) / 2))}));
  }
}

TEST(ViewGeometry, TheContentSizePassesThroughSinglePrecision) {
  FakeViewHost host;
  host.window = {{0, -99100}, {0, 100000}};
  host.screen = {16777217, 1000};
  host.bottom = 1000;
  const TextureSize texture{20000000, 20000};
  ViewGeometry geometry(host, texture);
  geometry.frameSizeDidChange(texture);
  geometry.startPreview();
  EXPECT_EQ(host.contentSize, (Size{16777216, 20000}));
}

TEST(ViewGeometry, StopForgetsThePictureAndLeavesTheViewAlone) {
  Fixture f({1280, 720}, {800, 600});
  f.geometry.offsetLocationTo(100, 100);
  f.host.calls.clear();
  const ContainerRect frame = f.geometry.viewFrame();
  const ViewRect bounds = f.geometry.viewBounds();
  f.texture = {};
  f.geometry.stopPreview();
  EXPECT_EQ(f.geometry.zoom(), -1);
  EXPECT_EQ(f.geometry.bitmapSize(), (TextureSize{0, 0}));
  EXPECT_EQ(f.geometry.viewLocation(), (ViewPoint{0, 0}));
  EXPECT_THAT(f.host.calls, IsEmpty());
  EXPECT_EQ(f.geometry.viewFrame(), frame);
  EXPECT_EQ(f.geometry.viewBounds(), bounds);
}

TEST(ViewGeometry, WorksWithoutADelegate) {
  FakeViewHost host;
  const TextureSize texture{1280, 720};
  ViewGeometry geometry(host, texture);
  geometry.frameSizeDidChange(texture);
  geometry.startPreview();
  geometry.beginPan();
  geometry.pan({0, 0}, {-3, 0});
  geometry.windowDidResize();
  EXPECT_EQ(geometry.viewLocation(), (ViewPoint{643, 360}));
}

TEST(ViewGeometry, AMousePositionConvertedIntoTheViewIsThePictureCoordinate) {
  Fixture overflowing({1280, 720}, {800, 600});
  EXPECT_EQ(overflowing.geometry.convertPointFromSuperview({10, 20}), (ViewPoint{250, 80}));
  Fixture fitting({640, 480}, {800, 600});
  EXPECT_EQ(fitting.geometry.convertPointFromSuperview({80, 60}), (ViewPoint{0, 0}));
}

TEST(ViewGeometry, HoldsItsPromisesForAnySequenceOfOperations) {
  std::mt19937 random(20240607);
  const auto number = [&random](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  for (int round = 0; round < 300; ++round) {
    Fixture f({number(1, 4000), number(1, 3000)},
              {double(number(0, 4000)), double(number(0, 3000))});
    for (int step = 0; step < 30; ++step) {
      const int operation = number(0, 3);
      switch (operation) {
        case 0: f.geometry.zoomTo(number(-1, 6)); break;
        case 1:
          f.geometry.offsetLocationTo(float(number(-500, 9000)), float(number(-500, 9000)));
          break;
        case 2:
          f.host.container = {number(0, 8000) / 2.0, number(0, 6000) / 2.0};
          f.geometry.windowDidResize();
          break;
        default:
          f.geometry.beginPan();
          f.geometry.pan({0, 0}, {number(-900, 900) / 4.0, number(-900, 900) / 4.0});
      }
      struct OneAxis {
        double container, bitmap, texture, frame, size, origin, location;
      };
      const OneAxis axes[] = {
          {f.host.container.width, double(f.geometry.bitmapWidth()), double(f.texture.width),
           f.geometry.viewFrame().origin.x, f.geometry.viewFrame().size.width,
           f.geometry.viewBounds().origin.x, f.geometry.viewLocation().x},
          {f.host.container.height, double(f.geometry.bitmapHeight()), double(f.texture.height),
           f.geometry.viewFrame().origin.y, f.geometry.viewFrame().size.height,
           f.geometry.viewBounds().origin.y, f.geometry.viewLocation().y},
      };
      for (const OneAxis& axis : axes) {
        SCOPED_TRACE(::testing::Message() << "round " << round << " step " << step << " C "
                                          << axis.container << " B " << axis.bitmap);
        ASSERT_EQ(axis.size, std::max(axis.bitmap, axis.texture));
        if (axis.container >= axis.bitmap) {
          // Centred: the same margin on both sides, and nothing scrolled.
          const double low = axis.frame - axis.location;
          ASSERT_EQ(low, axis.container - (low + axis.bitmap));
          ASSERT_GE(low, 0.0);
          ASSERT_EQ(axis.origin, 0.0);
        } else {
          const double most = std::trunc(axis.bitmap - axis.container);
          ASSERT_EQ(axis.frame, 0.0);
          ASSERT_GE(axis.origin, 0.0);
          ASSERT_LE(axis.origin, most);
          ASSERT_EQ(axis.location, axis.origin);
          // The picture covers the container, but for less than a pixel that was truncated away.
          ASSERT_LE(-axis.location, 0.0);
          ASSERT_GT(-axis.location + axis.bitmap, axis.container - 1);
        }
      }
      ASSERT_EQ(f.geometry.viewBounds().size, f.geometry.viewFrame().size);
    }
  }
}

}  // namespace
}  // namespace tessary::test
