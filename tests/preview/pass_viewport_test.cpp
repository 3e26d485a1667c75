#include <gtest/gtest.h>

#include "FakeViewHost.h"
#include "preview/PassViewport.h"
#include "preview/ViewGeometry.h"

namespace tessary::test {
namespace {

TEST(PassViewport, ShrinksThePictureUpToHundredPercentAndShiftsItAbove) {
  const TextureSize texture{1280, 720};
  struct Row {
    int32_t zoom;
    ViewPoint location;
    TextureSize bitmap;
    PassViewport viewport;
  };
  const Row table[] = {
      {-1, {0, 0}, {0, 0}, {0, 0, 0, 0}},
      {0, {-320, -180}, {640, 360}, {320, 180, 640, 360}},
      {0, {140, 60}, {640, 360}, {-140, -60, 640, 360}},
      {1, {-160, -90}, {960, 540}, {160, 90, 960, 540}},
      {2, {240, 60}, {1280, 720}, {-240, -60, 1280, 720}},
      {3, {400, 150}, {1600, 900}, {-320, -120, 1280, 720}},
      {4, {561, 240}, {1920, 1080}, {-374, -160, 1280, 720}},
      {5, {880, 420}, {2560, 1440}, {-440, -210, 1280, 720}},
      {6, {240, 60}, {1280, 720}, {-240, -60, 1280, 720}},
  };
  for (const Row& row : table) {
    EXPECT_EQ(passViewport(row.zoom, row.location, row.bitmap, texture), row.viewport) << row.zoom;
  }
}

/// Where the picture lies in a container, through geometry, viewport and surface.
SurfaceRect pictureIn(Size container, TextureSize texture, int32_t step, double ratio,
                      float panX = -1, float panY = -1) {
  FakeViewHost host;
  host.container = container;
  ViewGeometry geometry(host, texture);
  geometry.frameSizeDidChange(texture);
  geometry.zoomTo(-1);
  geometry.zoomTo(step);
  if (panX >= 0) geometry.offsetLocationTo(panX, panY);
  return pictureOnSurface(
      passViewport(geometry.zoom(), geometry.viewLocation(), geometry.bitmapSize(), texture),
      geometry.viewFrame(), texture, ratio);
}

TEST(PictureOnSurface, LiesWhereTheViewStretchesItInDevicePixels) {
  struct Row {
    int32_t step;
    double ratio;
    SurfaceRect picture;
  };
  // 1280 by 720 in 800 by 600.
  const Row table[] = {
      {0, 1.0, {{80, 120}, {640, 360}}},       {1, 1.0, {{-80, 30}, {960, 540}}},
      {2, 1.0, {{-240, -60}, {1280, 720}}},    {3, 1.0, {{-400, -150}, {1600, 900}}},
      {4, 1.0, {{-560, -240}, {1920, 1080}}},  {5, 1.0, {{-880, -420}, {2560, 1440}}},
      {0, 2.0, {{160, 240}, {1280, 720}}},     {2, 2.0, {{-480, -120}, {2560, 1440}}},
      {4, 2.0, {{-1120, -480}, {3840, 2160}}}, {2, 1.25, {{-300, -75}, {1600, 900}}},
  };
  for (const Row& row : table) {
    EXPECT_EQ(pictureIn({800, 600}, {1280, 720}, row.step, row.ratio), row.picture)
        << row.step << " at " << row.ratio;
  }
}

TEST(PictureOnSurface, AHalfPixelGoesToTheTopLeft) {
  EXPECT_EQ(pictureIn({801, 601}, {640, 480}, 2, 1.0), (SurfaceRect{{80, 60}, {640, 480}}));
  EXPECT_EQ(pictureIn({801, 601}, {640, 480}, 2, 2.0), (SurfaceRect{{161, 121}, {1280, 960}}));
}

TEST(PictureOnSurface, WholeLocationsStayWholeAtEveryZoomAndPan) {
  for (int32_t step = 0; step <= 5; ++step) {
    for (int pan = 0; pan <= 200; ++pan) {
      const SurfaceRect picture = pictureIn({300, 200}, {1280, 720}, step, 1.0, float(pan), 0);
      ASSERT_EQ(picture.origin, (SurfacePoint{double(-pan), 0})) << step;
    }
  }
}

TEST(PictureOnSurface, ARatioThatBinaryNumbersMissLosesNoPixel) {
  // 50 times 1.1 comes out above 55, so that minus that would be floored to -56.
  EXPECT_EQ(pictureIn({300, 200}, {1280, 720}, 2, 1.1, 50, 0).origin, (SurfacePoint{-55, 0}));
  EXPECT_EQ(pictureIn({300, 200}, {1280, 720}, 2, 1.35, 180, 340).origin,
            (SurfacePoint{-243, -459}));
}

TEST(PictureOnSurface, IsNothingWithoutATexture) {
  EXPECT_EQ(pictureOnSurface({0, 0, 100, 100}, {{0, 0}, {100, 100}}, {0, 0}, 1.0), SurfaceRect{});
}

}  // namespace
}  // namespace tessary::test
