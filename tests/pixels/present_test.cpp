#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "FakeViewHost.h"
#include "Renderer.h"
#include "preview/RenderPipeline.h"

namespace tessary::test {
namespace {

class Present : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(renderer, nullptr); }

  /// Frames of `size` arrive and the view is laid out for them.
  void show(std::shared_ptr<const PixelBuffer> frame) {
    const TextureSize size = frame->size();
    if (!ring.push(std::move(frame))) return;
    texture = size;
    geometry.frameSizeDidChange(size);
    geometry.zoomTo(-1);
  }
  bool draw(TestSurface& surface, double ratio = 1.0, const OverlayVertices& overlay = {}) {
    const bool drawn = pipeline.drawInView(geometry, overlay, surface.target(), ratio);
    surface.read();
    return drawn;
  }

  FakeViewHost host;
  TextureSize texture;
  ViewGeometry geometry{host, texture};
  FrameRing ring;
  std::unique_ptr<Renderer> renderer = Renderer::make();
  Compositor& compositor = renderer->compositor();
  RenderPipeline pipeline{ring, compositor};
};

/// Red and blue changed over: the camera's pixel as it has to look on screen.
Pixel onScreen(const Pixel& bgra) { return {{bgra.bytes[2], bgra.bytes[1], bgra.bytes[0], 255}}; }

/// The first pixel of `surface` that is not clear colour outside of `picture`.
std::string paintedOutside(const TestSurface& surface, const SurfaceRect& picture) {
  for (int32_t y = 0; y < surface.size().height; ++y) {
    for (int32_t x = 0; x < surface.size().width; ++x) {
      if (!contains(picture, {double(x), double(y)}) && !isClearColor(surface.at(x, y))) {
        return fmt::format("{}, {}", x, y);
      }
    }
  }
  return {};
}

/// The first pixel that is not `expected(x, y)` where `picture` lies on `surface`.
template <typename Expected>
std::string wrongInside(const TestSurface& surface, const SurfaceRect& picture, Expected expected) {
  for (int32_t y = 0; y < surface.size().height; ++y) {
    for (int32_t x = 0; x < surface.size().width; ++x) {
      if (contains(picture, {double(x), double(y)}) && surface.at(x, y) != expected(x, y)) {
        std::ostringstream text;
        text << x << ", " << y << ": " << surface.at(x, y) << " and not " << expected(x, y);
        return text.str();
      }
    }
  }
  return {};
}

TEST_F(Present, AtHundredPercentEveryPixelIsTheFramesAndItsTopIsUp) {
  struct Row {
    Size container;
    ViewPoint pan;
    SurfaceRect picture;
  };
  const Row table[] = {
      {{640, 480}, {0, 0}, {{0, 0}, {640, 480}}},            // just fits
      {{800, 600}, {0, 0}, {{80, 60}, {640, 480}}},          // centred
      {{801, 601}, {0, 0}, {{80, 60}, {640, 480}}},          // half a pixel is not split
      {{300, 200}, {340, 280}, {{-340, -280}, {640, 480}}},  // the lower right corner
      {{300, 200}, {0, 0}, {{0, 0}, {640, 480}}},            // the upper left corner
      {{300, 600}, {17, 0}, {{-17, 60}, {640, 480}}},        // overflows along one axis
  };
  const auto frame = std::make_shared<PixelBuffer>(gradientFrame({640, 480}));
  for (const Row& row : table) {
    SCOPED_TRACE(::testing::Message() << row.container.width << " by " << row.container.height);
    host.container = row.container;
    show(frame);
    geometry.offsetLocationTo(float(row.pan.x), float(row.pan.y));
    const auto surface =
        renderer->makeSurface({int32_t(row.container.width), int32_t(row.container.height)});
    ASSERT_TRUE(draw(*surface));
    EXPECT_EQ(paintedOutside(*surface, row.picture), "");
    EXPECT_EQ(wrongInside(*surface, row.picture,
                          [&](int32_t x, int32_t y) {
                            return onScreen(pixelAt(*frame, x - int32_t(row.picture.origin.x),
                                                    y - int32_t(row.picture.origin.y)));
                          }),
              "");
  }
}

TEST_F(Present, EveryZoomStepPutsThePictureWhereItBelongsWithGreyAround) {
  struct Row {
    int32_t step;
    TextureSize surface;
    double ratio;
    SurfaceRect picture;
  };
  // 640 by 480.
  const Row table[] = {
      {0, {800, 600}, 1, {{240, 180}, {320, 240}}},
      {1, {800, 600}, 1, {{160, 120}, {480, 360}}},
      {2, {800, 600}, 1, {{80, 60}, {640, 480}}},
      {3, {800, 600}, 1, {{0, 0}, {800, 600}}},
      {4, {800, 600}, 1, {{-80, -60}, {960, 720}}},
      {5, {800, 600}, 1, {{-240, -180}, {1280, 960}}},
      {3, {1000, 700}, 1, {{100, 50}, {800, 600}}},
      {4, {1000, 740}, 1, {{20, 10}, {960, 720}}},
      {5, {1300, 1000}, 1, {{10, 20}, {1280, 960}}},
      {0, {300, 300}, 1, {{-10, 30}, {320, 240}}},
      {0, {800, 600}, 2, {{80, 60}, {640, 480}}},
      {2, {1400, 1000}, 2, {{60, 20}, {1280, 960}}},
      {1, {1400, 1000}, 2, {{220, 140}, {960, 720}}},
  };
  const auto white = std::make_shared<PixelBuffer>(plainFrame({640, 480}, {{255, 255, 255, 255}}));
  for (const Row& row : table) {
    SCOPED_TRACE(::testing::Message() << "step " << row.step << " on " << row.surface.width);
    host.container = {row.surface.width / row.ratio, row.surface.height / row.ratio};
    show(white);
    geometry.zoomTo(-1);
    geometry.zoomTo(row.step);
    const auto surface = renderer->makeSurface(row.surface);
    ASSERT_TRUE(draw(*surface, row.ratio));
    EXPECT_EQ(paintedOutside(*surface, row.picture), "");
    EXPECT_EQ(wrongInside(*surface, row.picture,
                          [](int32_t, int32_t) {
                            return Pixel{{255, 255, 255, 255}};
                          }),
              "");
  }
}

TEST_F(Present, AtTwiceTheSizeEveryTexelIsFourEqualPixels) {
  struct Row {
    int32_t step;
    double ratio;
  };
  const auto frame = std::make_shared<PixelBuffer>(gradientFrame({640, 480}));
  for (const Row& row : {Row{5, 1.0}, Row{2, 2.0}}) {
    host.container = {1280 / row.ratio, 960 / row.ratio};
    show(frame);
    geometry.zoomTo(-1);
    geometry.zoomTo(row.step);
    const auto surface = renderer->makeSurface({1280, 960});
    ASSERT_TRUE(draw(*surface, row.ratio));
    EXPECT_EQ(
        wrongInside(*surface, {{0, 0}, {1280, 960}},
                    [&](int32_t x, int32_t y) { return onScreen(pixelAt(*frame, x / 2, y / 2)); }),
        "");
  }
}

TEST_F(Present, AtHalfTheSizeEveryPixelIsTheAverageOfFourTexels) {
  const TextureSize size{640, 480};
  auto frame = std::make_shared<PixelBuffer>(plainFrame(size, {{0, 0, 0, 255}}));
  for (size_t i = 0; i < frame->byteCount(); ++i) {
    if (i % 4 != 3) frame->data()[i] = uint8_t(i * 2654435761U >> 13);
  }
  host.container = {320, 240};
  show(frame);
  geometry.zoomTo(0);
  const auto surface = renderer->makeSurface({320, 240});
  ASSERT_TRUE(draw(*surface));
  for (int32_t y = 0; y < 240; ++y) {
    for (int32_t x = 0; x < 320; ++x) {
      for (size_t channel = 0; channel < 3; ++channel) {
        int sum = 0;
        for (int32_t i = 0; i < 4; ++i) {
          sum += onScreen(pixelAt(*frame, 2 * x + i % 2, 2 * y + i / 2)).bytes[channel];
        }
        ASSERT_NEAR(surface->at(x, y).bytes[channel], sum / 4.0, 1.5) << x << ", " << y;
      }
    }
  }
}

TEST_F(Present, AThinLineIsNeverLostHoweverSmallThePicture) {
  const TextureSize size{640, 480};
  host.container = {640, 480};
  show(std::make_shared<PixelBuffer>(plainFrame(size, {{0, 0, 0, 255}})));
  uint64_t revision = 0;
  for (const int32_t step : {0, 1}) {
    for (int32_t column = 100; column < 110; ++column) {
      const std::vector<PointVertex> line{vertexAt(size, column, 0, {1, 1, 1, 1}),
                                          vertexAt(size, column, 479, {1, 1, 1, 1})};
      geometry.zoomTo(-1);
      geometry.zoomTo(step);
      const auto surface = renderer->makeSurface({640, 480});
      ASSERT_TRUE(draw(*surface, 1.0, {line, {}, ++revision}));
      int light = 0;
      for (int32_t x = 0; x < 640; ++x) {
        if (!isClearColor(surface->at(x, 240))) light += surface->at(x, 240).bytes[0];
      }
      EXPECT_GE(light, 100) << "step " << step << " column " << column;
    }
  }
}

TEST_F(Present, EnlargedByAFractionEdgesStayHardButForThePixelTheyRunThrough) {
  const TextureSize size{640, 480};
  auto frame = std::make_shared<PixelBuffer>(plainFrame(size, {{0, 0, 0, 255}}));
  for (int32_t y = 0; y < 480; ++y) {
    for (int32_t x = 320; x < 640; ++x) {
      std::fill_n(frame->data() + (size_t(y) * 640 + size_t(x)) * 4, 3, uint8_t(255));
    }
  }
  host.container = {960, 720};
  show(frame);
  geometry.zoomTo(4);
  const auto surface = renderer->makeSurface({960, 720});
  ASSERT_TRUE(draw(*surface));
  // 320 texels are 480 pixels: the edge falls between two, and nothing is mixed.
  EXPECT_EQ(surface->at(479, 100), (Pixel{{0, 0, 0, 255}}));
  EXPECT_EQ(surface->at(480, 100), (Pixel{{255, 255, 255, 255}}));

  // 319 texels are 478.5: one pixel holds half of each.
  for (int32_t y = 0; y < 480; ++y)
    std::fill_n(frame->data() + (size_t(y) * 640 + 319) * 4, 3, uint8_t(255));
  show(frame);
  ASSERT_TRUE(draw(*surface));
  EXPECT_EQ(surface->at(477, 100), (Pixel{{0, 0, 0, 255}}));
  EXPECT_NEAR(surface->at(478, 100).bytes[0], 127.5, 2.5);
  EXPECT_EQ(surface->at(479, 100), (Pixel{{255, 255, 255, 255}}));
}

TEST_F(Present, TheOverlayIsLockedToThePictureInItsOwnColors) {
  const TextureSize size{640, 480};
  host.container = {300, 200};
  show(std::make_shared<PixelBuffer>(plainFrame(size, {{0, 0, 0, 255}})));
  geometry.offsetLocationTo(100, 50);
  const std::vector<PointVertex> points{vertexAt(size, 110, 70, {1.0F, 0.6F, 0.2F, 0.0F})};
  const auto surface = renderer->makeSurface({300, 200});
  ASSERT_TRUE(draw(*surface, 1.0, {{}, points}));
  // Opaque on screen, whatever the colour's alpha: nothing behind the window shows through.
  EXPECT_EQ(surface->at(10, 20), (Pixel{{255, 153, 51, 255}}));
  EXPECT_EQ(surface->at(11, 20), (Pixel{{0, 0, 0, 255}}));
}

TEST_F(Present, AFrameBelowTheSmallestLeavesTheScreenAloneAndFillsTheRing) {
  host.container = {800, 600};
  for (const TextureSize size : {TextureSize{639, 480}, TextureSize{640, 479}}) {
    show(std::make_shared<PixelBuffer>(gradientFrame(size)));
    const auto surface = renderer->makeSurface({800, 600});
    EXPECT_FALSE(draw(*surface));
    EXPECT_EQ(surface->at(400, 300), kUntouched);
    EXPECT_FALSE(compositor.hasBufferResources());
    EXPECT_EQ(ring.cvLastTexture(), 1);
  }
}

TEST_F(Present, SizesMayChangeInMidStream) {
  host.container = {640, 480};
  const auto surface = renderer->makeSurface({640, 480});
  for (const TextureSize size :
       {TextureSize{640, 480}, TextureSize{1280, 720}, TextureSize{320, 240}, TextureSize{641, 481},
        TextureSize{640, 480}}) {
    SCOPED_TRACE(size.width);
    const auto frame = std::make_shared<PixelBuffer>(gradientFrame(size));
    show(frame);
    const bool largeEnough = size.width >= 640;
    ASSERT_EQ(draw(*surface), largeEnough);
    if (!largeEnough) continue;
    const int32_t panX = int32_t(geometry.viewLocation().x);
    const int32_t panY = int32_t(geometry.viewLocation().y);
    EXPECT_EQ(wrongInside(*surface, {{0, 0}, {640, 480}},
                          [&](int32_t x, int32_t y) {
                            return onScreen(pixelAt(*frame, x + panX, y + panY));
                          }),
              "");
    PixelBuffer still(size);
    EXPECT_TRUE(pipeline.readBack(still));
    EXPECT_TRUE(std::equal(still.data(), still.data() + still.byteCount(), frame->data()));
  }
}

TEST_F(Present, WithoutAPictureItOnlyClears) {
  const auto surface = renderer->makeSurface({100, 80});
  compositor.present({{0, 0}, {100, 80}}, surface->target());
  surface->read();
  EXPECT_EQ(paintedOutside(*surface, {}), "");
}

TEST_F(Present, APictureFarBeyondTheSurfaceIsHarmless) {
  compositor.initBufferResources({640, 480});
  const PixelBuffer frame = plainFrame({640, 480}, {{255, 255, 255, 255}});
  compositor.setFrame(borrowed(frame));
  compositor.compose({}, {});
  const auto surface = renderer->makeSurface({100, 80});
  for (const SurfaceRect picture :
       {SurfaceRect{{1e12, 0}, {640, 480}}, SurfaceRect{{-1e12, -5}, {640, 480}},
        SurfaceRect{{100, 0}, {640, 480}}, SurfaceRect{{0, -480}, {640, 480}},
        SurfaceRect{{0, 0}, {0, 0}}}) {
    compositor.present(picture, surface->target());
    surface->read();
    EXPECT_EQ(paintedOutside(*surface, {}), "") << picture.origin.x;
  }
}

TEST_F(Present, APartOfASurfaceInMemoryIsDrawnAsInTheWholeAndTheRestIsLeftAlone) {
  if (!renderer->makeSurface({1, 1})->target().pixels) GTEST_SKIP() << "drawn as a whole";
  const PixelBuffer frame = gradientFrame({640, 480});
  compositor.initBufferResources({640, 480});
  compositor.setFrame(borrowed(frame));
  compositor.compose({}, {});
  for (const Size shown : {Size{320, 240}, Size{640, 480}, Size{960, 720}, Size{1280, 960}}) {
    const SurfaceRect picture{{-20, 30}, shown};
    const auto whole = renderer->makeSurface({700, 500});
    compositor.present(picture, whole->target());
    const auto part = renderer->makeSurface({700, 500});
    Surface target = part->target();
    target.clip = {11, 21, 402, 303};
    compositor.present(picture, target);
    for (int32_t y = 0; y < 500; ++y) {
      for (int32_t x = 0; x < 700; ++x) {
        const bool inside = x >= 11 && x < 402 && y >= 21 && y < 303;
        ASSERT_EQ(part->at(x, y), inside ? whole->at(x, y) : kUntouched) << x << ", " << y;
      }
    }
  }
}

}  // namespace
}  // namespace tessary::test
