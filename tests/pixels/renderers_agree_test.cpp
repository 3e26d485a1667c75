#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "CompositorFrames.h"
#include "GlSurface.h"
#include "HeadlessContext.h"
#include "opengl/GlCompositor.h"
#include "raster/RasterCompositor.h"

namespace tessary::test {
namespace {

/// The same drawn by the processor alone and by OpenGL.
class RenderersAgree : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(context, nullptr); }

  void compose(const PixelBuffer& frame, const std::vector<PointVertex>& lines,
               const std::vector<PointVertex>& points) {
    for (Compositor* compositor :
         {static_cast<Compositor*>(&opengl), static_cast<Compositor*>(&raster)}) {
      compositor->initBufferResources(frame.size());
      compositor->setFrame(borrowed(frame));
      compositor->compose(lines, points);
    }
  }
  struct Comparison {
    size_t lit = 0;  ///< In both, on a black frame.
    std::vector<ImagePoint> different;
  };
  Comparison compare(TextureSize size) {
    PixelBuffer one(size);
    PixelBuffer other(size);
    EXPECT_TRUE(opengl.readBack(one));
    EXPECT_TRUE(raster.readBack(other));
    Comparison result;
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) {
        const Pixel pixel = pixelAt(one, x, y);
        if (pixel != pixelAt(other, x, y))
          result.different.push_back({double(x), double(y)});
        else if (pixel != Pixel{{0, 0, 0, 255}})
          ++result.lit;
      }
    }
    return result;
  }

  std::unique_ptr<HeadlessContext> context = HeadlessContext::make();
  GlCompositor opengl;
  RasterCompositor raster;
};

constexpr TextureSize kSizes[] = {{640, 480}, {641, 481}, {1280, 720}, {1279, 723}};

PointVertex moved(PointVertex vertex, TextureSize size, double dx, double dy) {
  vertex.position[0] += float(2 * dx / size.width);
  vertex.position[1] -= float(2 * dy / size.height);
  return vertex;
}

/// Where the line through both runs in the column of `pixel`, in its row if it is steeper, across:
/// in pixels from the middle of the nearest edge between two.
double distanceFromEdge(ImagePoint from, ImagePoint to, ImagePoint pixel) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double across = std::abs(dx) >= std::abs(dy) ? from.y + (pixel.x - from.x) * dy / dx
                                                     : from.x + (pixel.y - from.y) * dx / dy;
  return std::abs(across + 0.5 - std::round(across + 0.5));
}

// Graphics cards round the ends of lines to parts of a pixel: where a line runs along the edge of
// two pixels, that chooses. Ends are in the middle of pixels as those of shapes are, or anywhere.
TEST_F(RenderersAgree, OnEveryPixelOfALineThatIsNotOnAnEdge) {
  constexpr double kRounding = 1.0 / 128;
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  std::mt19937 random(1);
  std::uniform_real_distribution<double> anyX(-30, size.width + 30.0);
  std::uniform_real_distribution<double> anyY(-30, size.height + 30.0);
  const auto any = [&](bool whole) {
    const ImagePoint point{anyX(random), anyY(random)};
    return whole ? ImagePoint{std::round(point.x), std::round(point.y)} : point;
  };
  const auto vertex = [&](ImagePoint p) { return moved(vertexAt(size, 0, 0), size, p.x, p.y); };
  size_t same = 0;
  for (int i = 0; i < 300; ++i) {
    const ImagePoint from = any(i % 2 == 0);
    const ImagePoint to = any(i % 2 == 0);
    compose(frame, {vertex(from), vertex(to)}, {});
    const auto [lit, different] = compare(size);
    same += lit;
    for (const ImagePoint& pixel : different) {
      ASSERT_LT(distanceFromEdge(from, to, pixel), kRounding)
          << from.x << ", " << from.y << " to " << to.x << ", " << to.y << " at " << pixel.x << ", "
          << pixel.y;
    }
  }
  EXPECT_GT(same, 50000U) << "lines lit something";
}

TEST_F(RenderersAgree, OnEveryPixelOfLabelsAtWholeAndHalfPixels) {
  std::mt19937 random(3);
  for (const TextureSize size : kSizes) {
    const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
    std::uniform_int_distribution<int32_t> anyX(-2, size.width + 2);
    std::uniform_int_distribution<int32_t> anyY(-2, size.height + 2);
    std::vector<PointVertex> points;
    for (int i = 0; i < 20000; ++i) {
      points.push_back(
          moved(vertexAt(size, anyX(random), anyY(random)), size, i % 2 * 0.5, i % 3 / 2 * 0.5));
    }
    compose(frame, {}, points);
    const auto [lit, different] = compare(size);
    EXPECT_EQ(different.size(), 0U) << size.width;
    EXPECT_GT(lit, 10000U);
  }
}

TEST_F(RenderersAgree, OnWhatIsShownAtEveryZoomStepAndScaleWithinTheLastBits) {
  const TextureSize size{1280, 720};
  PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  std::mt19937 random(4);
  for (size_t i = 0; i < frame.byteCount(); ++i) {
    if (i % 4 != 3) frame.data()[i] = uint8_t(random());
  }
  compose(frame, {vertexAt(size, 3, 5), vertexAt(size, 1200, 5)}, {vertexAt(size, 9, 40)});
  const TextureSize shown{1001, 601};
  std::vector<uint8_t> pixels(size_t(shown.width) * size_t(shown.height) * 4);
  for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
    for (const double zoom : {0.5, 0.75, 1.0, 1.25, 1.5, 2.0}) {
      SCOPED_TRACE(::testing::Message() << zoom << " at " << ratio);
      const SurfaceRect picture{{-20, 33},
                                {std::round(1280 * zoom * ratio), std::round(720 * zoom * ratio)}};
      GlSurface window(shown);
      window.bind();
      opengl.present(picture, Surface::framebuffer(shown));
      window.read();
      raster.present(picture, Surface::memory(shown, pixels.data(), size_t(shown.width) * 4,
                                              {0, 0, shown.width, shown.height}));
      int largest = 0;
      for (int32_t y = 0; y < shown.height; ++y) {
        for (int32_t x = 0; x < shown.width; ++x) {
          const Pixel gl = window.at(x, y);
          const uint8_t* p = pixels.data() + (size_t(y) * size_t(shown.width) + size_t(x)) * 4;
          const Pixel own{{p[2], p[1], p[0], p[3]}};
          for (size_t i = 0; i < 4; ++i) {
            largest = std::max(largest, std::abs(gl.bytes[i] - own.bytes[i]));
          }
        }
      }
      const double whole = zoom * ratio;
      EXPECT_LE(largest, whole == std::floor(whole) ? 0 : 4);
    }
  }
}

}  // namespace
}  // namespace tessary::test
