#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Renderer.h"

namespace tessary::test {
namespace {

class Compose : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(renderer, nullptr); }

  void compose(const PixelBuffer& frame, const std::vector<PointVertex>& lines,
               const std::vector<PointVertex>& points) {
    compositor.setFrame(borrowed(frame));
    compositor.compose(lines, points);
  }
  /// What stands in the composed picture.
  PixelBuffer composed(const PixelBuffer& frame, const std::vector<PointVertex>& lines,
                       const std::vector<PointVertex>& points) {
    compositor.initBufferResources(frame.size());
    compose(frame, lines, points);
    PixelBuffer result(frame.size());
    EXPECT_TRUE(compositor.readBack(result));
    return result;
  }

  std::unique_ptr<Renderer> renderer = Renderer::make();
  Compositor& compositor = renderer->compositor();
};

using Places = std::set<std::pair<int32_t, int32_t>>;

/// Where two pictures of one size differ.
Places differences(const PixelBuffer& one, const PixelBuffer& other) {
  Places places;
  for (int32_t y = 0; y < one.size().height; ++y) {
    for (int32_t x = 0; x < one.size().width; ++x) {
      if (pixelAt(one, x, y) != pixelAt(other, x, y)) places.emplace(x, y);
    }
  }
  return places;
}

// Even and odd on either axis.
constexpr TextureSize kSizes[] = {{640, 480}, {641, 481},   {640, 481},
                                  {641, 480}, {1920, 1080}, {1279, 723}};

TEST_F(Compose, WithoutOverlayThePictureIsTheFrameByteForByte) {
  for (const TextureSize size : kSizes) {
    const PixelBuffer frame = gradientFrame(size);
    const PixelBuffer result = composed(frame, {}, {});
    EXPECT_EQ(std::memcmp(result.data(), frame.data(), frame.byteCount()), 0) << size.width;
  }
}

TEST_F(Compose, AFrameReplacesTheOneBeforeWithItsOverlay) {
  const TextureSize size{640, 480};
  composed(plainFrame(size, {{9, 9, 9, 255}}), {}, {vertexAt(size, 100, 100)});
  const PixelBuffer frame = gradientFrame(size);
  compose(frame, {}, {});
  PixelBuffer result(size);
  ASSERT_TRUE(compositor.readBack(result));
  EXPECT_EQ(differences(result, frame), Places{});
}

TEST_F(Compose, AVertexLightsThePixelOfItsImageCoordinateAndNoOther) {
  for (const TextureSize size : kSizes) {
    SCOPED_TRACE(::testing::Message() << size.width << "x" << size.height);
    const int32_t right = size.width - 1;
    const int32_t bottom = size.height - 1;
    const Places places{{0, 0},          {right, 0},      {0, bottom},
                        {right, bottom}, {1, 1},          {size.width / 2, size.height / 2},
                        {333, 77},       {right - 1, 10}, {17, bottom - 1}};
    std::vector<PointVertex> points;
    for (const auto& [x, y] : places) points.push_back(vertexAt(size, x, y));
    const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
    EXPECT_EQ(differences(composed(frame, {}, points), frame), places);
  }
}

TEST_F(Compose, ALabelAtHalfAPixelLightsThePixelBefore) {
  for (const TextureSize size : kSizes) {
    // A vertex of (x + 1/2, y + 1/2): halfway to the next one along each axis.
    std::vector<PointVertex> points;
    Places places;
    for (int32_t i = 0; i < size.height; ++i) {
      PointVertex point = vertexAt(size, i, i);
      point.position[0] += 1.0F / float(size.width);
      point.position[1] -= 1.0F / float(size.height);
      points.push_back(point);
      places.emplace(i, i);
    }
    const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
    EXPECT_EQ(differences(composed(frame, {}, points), frame), places) << size.width;
  }
}

TEST_F(Compose, EveryColumnAndRowIsHitExactlyOnce) {
  for (const TextureSize size : kSizes) {
    std::vector<PointVertex> points;
    Places places;
    for (int32_t x = 0; x < size.width; ++x) {
      points.push_back(vertexAt(size, x, 5));
      places.emplace(x, 5);
    }
    for (int32_t y = 0; y < size.height; ++y) {
      points.push_back(vertexAt(size, 7, y));
      places.emplace(7, y);
    }
    const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
    EXPECT_EQ(differences(composed(frame, {}, points), frame), places) << size.width;
  }
}

TEST_F(Compose, VerticesBeyondThePictureAreCutOff) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  const std::vector<PointVertex> points{vertexAt(size, -1, 10), vertexAt(size, 640, 10),
                                        vertexAt(size, 10, -1), vertexAt(size, 10, 480),
                                        vertexAt(size, 100000, -100000)};
  EXPECT_EQ(differences(composed(frame, {}, points), frame), Places{});
}

TEST_F(Compose, ALineLightsItsOwnRowOrColumnAlone) {
  struct Row {
    int32_t x0, y0, x1, y1;
  };
  const Row table[] = {
      {10, 20, 30, 20}, {30, 20, 10, 20},                                        // either direction
      {10, 20, 10, 50}, {10, 50, 10, 20},   {0, 0, 639, 0}, {0, 479, 639, 479},  // along the edges
      {0, 0, 0, 479},   {639, 0, 639, 479},
  };
  for (const TextureSize size : {TextureSize{640, 480}, TextureSize{641, 481}}) {
    const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
    for (const Row& row : table) {
      SCOPED_TRACE(::testing::Message() << size.width << ": " << row.x0 << ", " << row.y0 << " to "
                                        << row.x1 << ", " << row.y1);
      const Places lit = differences(
          composed(frame, {vertexAt(size, row.x0, row.y0), vertexAt(size, row.x1, row.y1)}, {}),
          frame);
      Places places{{row.x1, row.y1}};  // both ends belong to it
      const int32_t dx = (row.x1 > row.x0) - (row.x1 < row.x0);
      const int32_t dy = (row.y1 > row.y0) - (row.y1 < row.y0);
      for (int32_t x = row.x0, y = row.y0; x != row.x1 || y != row.y1; x += dx, y += dy) {
        places.emplace(x, y);
      }
      EXPECT_EQ(lit, places);
    }
  }
}

TEST_F(Compose, ASlantedLineHasOnePixelAColumnFromEndToEnd) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  const Places lit =
      differences(composed(frame, {vertexAt(size, 100, 100), vertexAt(size, 200, 140)}, {}), frame);
  EXPECT_TRUE(lit.contains({100, 100}));
  EXPECT_TRUE(lit.contains({150, 120}));
  EXPECT_TRUE(lit.contains({200, 140}));
  EXPECT_EQ(lit.size(), 101U);
}

TEST_F(Compose, ALaterLineLiesOverAnEarlierOneAndOverItsEnds) {
  const TextureSize size{640, 480};
  const std::array<float, 4> first{1, 0, 0, 1};
  const std::array<float, 4> second{0, 1, 0, 1};
  const PixelBuffer result =
      composed(plainFrame(size, {{0, 0, 0, 255}}),
               {vertexAt(size, 10, 20, first), vertexAt(size, 30, 20, first),
                vertexAt(size, 10, 10, second), vertexAt(size, 10, 40, second),
                vertexAt(size, 30, 40, second), vertexAt(size, 30, 10, second)},
               {});
  EXPECT_EQ(pixelAt(result, 10, 20), (Pixel{{0, 255, 0, 255}}));
  EXPECT_EQ(pixelAt(result, 20, 20), (Pixel{{0, 0, 255, 255}}));
  EXPECT_EQ(pixelAt(result, 30, 20), (Pixel{{0, 255, 0, 255}}));
}

TEST_F(Compose, LinesLieOverTheFrameAndPointsOverLines) {
  const TextureSize size{640, 480};
  const PixelBuffer result =
      composed(plainFrame(size, {{10, 20, 30, 255}}),
               {vertexAt(size, 10, 20, {0, 1, 0, 1}), vertexAt(size, 30, 20, {0, 1, 0, 1})},
               {vertexAt(size, 15, 20, {1, 0, 0, 1}), vertexAt(size, 15, 21, {0, 0, 1, 1})});
  EXPECT_EQ(pixelAt(result, 12, 20), (Pixel{{0, 255, 0, 255}}));
  EXPECT_EQ(pixelAt(result, 15, 20), (Pixel{{0, 0, 255, 255}}));  // red, in the camera's order
  EXPECT_EQ(pixelAt(result, 15, 21), (Pixel{{255, 0, 0, 255}}));
  EXPECT_EQ(pixelAt(result, 12, 21), (Pixel{{10, 20, 30, 255}}));
}

TEST_F(Compose, ColorsAndAlphaReplaceAndAreNotBlended) {
  const TextureSize size{640, 480};
  const PixelBuffer result = composed(plainFrame(size, {{200, 200, 200, 255}}), {},
                                      {vertexAt(size, 5, 5, {1.0F, 0.2F, 0.4F, 0.0F}),
                                       vertexAt(size, 6, 5, {0.0F, 0.0F, 0.0F, 0.6F}),
                                       vertexAt(size, 7, 5, {2.0F, -1.0F, 0.0F, 1.0F})});
  EXPECT_EQ(pixelAt(result, 5, 5), (Pixel{{102, 51, 255, 0}}));
  EXPECT_EQ(pixelAt(result, 6, 5), (Pixel{{0, 0, 0, 153}}));
  EXPECT_EQ(pixelAt(result, 7, 5), (Pixel{{0, 0, 255, 255}}));
}

TEST_F(Compose, GrowsForALargeOverlayAndShrinksToNone) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  compositor.initBufferResources(size);
  PixelBuffer result(size);
  for (const int32_t rows : {1, 100, 400, 3, 0}) {
    std::vector<PointVertex> points;
    for (int32_t y = 0; y < rows; ++y) {
      for (int32_t x = 0; x < size.width; ++x) points.push_back(vertexAt(size, x, y));
    }
    compose(frame, {}, points);
    ASSERT_TRUE(compositor.readBack(result));
    EXPECT_EQ(differences(result, frame).size(), points.size());
  }
}

TEST_F(Compose, AnOverlayThatChangesAloneLeavesNothingOfTheOneBefore) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = gradientFrame(size);
  compositor.initBufferResources(size);
  compositor.setFrame(borrowed(frame));
  PixelBuffer result(size);
  for (int32_t x = 10; x < 14; ++x) {
    const PointVertex ends[] = {vertexAt(size, x, 20, {1, 1, 1, 1}),
                                vertexAt(size, x, 22, {1, 1, 1, 1})};
    const PointVertex label[] = {vertexAt(size, x, 21, {0, 0, 0, 1})};
    compositor.compose(ends, label);
    ASSERT_TRUE(compositor.readBack(result));
    EXPECT_EQ(differences(result, frame), (Places{{x, 20}, {x, 21}, {x, 22}}));
  }
  compositor.compose({}, {});
  ASSERT_TRUE(compositor.readBack(result));
  EXPECT_EQ(differences(result, frame), Places{});
}

TEST_F(Compose, WithoutAFrameNothingIsComposed) {
  compositor.initBufferResources({640, 480});
  const PointVertex point[] = {vertexAt({640, 480}, 1, 1)};
  compositor.compose({}, point);
  compositor.clearBufferResources();
  compositor.compose({}, point);
  PixelBuffer result({640, 480});
  EXPECT_FALSE(compositor.readBack(result));
}

TEST_F(Compose, AnotherSizeMakesAnotherPicture) {
  for (const TextureSize size :
       {TextureSize{640, 480}, TextureSize{1280, 720}, TextureSize{640, 480}}) {
    const PixelBuffer frame = gradientFrame(size);
    const Places lit =
        differences(composed(frame, {}, {vertexAt(size, 11, 12, {1, 1, 1, 1})}), frame);
    EXPECT_EQ(lit, (Places{{11, 12}}));
  }
}

TEST_F(Compose, RefusesWhatDoesNotFit) {
  PixelBuffer result({640, 480});
  EXPECT_FALSE(compositor.hasBufferResources());
  EXPECT_FALSE(compositor.readBack(result));
  compositor.clearBufferResources();  // harmless
  compose(gradientFrame({640, 480}), {}, {});

  compositor.initBufferResources({640, 480});
  EXPECT_TRUE(compositor.hasBufferResources());
  const PixelBuffer frame = gradientFrame({640, 480});
  compose(frame, {}, {});
  compose(plainFrame({640, 481}, {}), {}, {});  // of another size: left out
  EXPECT_TRUE(compositor.readBack(result));
  EXPECT_EQ(differences(result, frame), Places{});
  PixelBuffer other({640, 481});
  EXPECT_FALSE(compositor.readBack(other));
  compositor.clearBufferResources();
  EXPECT_FALSE(compositor.hasBufferResources());
}

}  // namespace
}  // namespace tessary::test
