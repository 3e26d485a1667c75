#include <epoxy/gl.h>

#include <cstring>
#include <set>
#include <utility>

#include "GlFixture.h"
#include "LogCapture.h"
#include "opengl/GlCompositor.h"
#include "opengl/GlShaders.h"

namespace tessary::test {
namespace {

class GlCompose : public GlTest {
 protected:
  /// What stands in the composed texture.
  PixelBuffer composed(const PixelBuffer& frame, const std::vector<PointVertex>& lines,
                       const std::vector<PointVertex>& points) {
    compositor.initBufferResources(frame.size());
    compositor.compose(frame, lines, points);
    PixelBuffer result(frame.size());
    EXPECT_TRUE(compositor.readBack(result));
    return result;
  }

  GlCompositor compositor;
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

TEST_F(GlCompose, WithoutOverlayThePictureIsTheFrameByteForByte) {
  for (const TextureSize size : kSizes) {
    const PixelBuffer frame = gradientFrame(size);
    const PixelBuffer result = composed(frame, {}, {});
    EXPECT_EQ(std::memcmp(result.data(), frame.data(), frame.byteCount()), 0) << size.width;
  }
}

TEST_F(GlCompose, AFrameReplacesTheOneBeforeWithItsOverlay) {
  const TextureSize size{640, 480};
  composed(plainFrame(size, {{9, 9, 9, 255}}), {}, {vertexAt(size, 100, 100)});
  const PixelBuffer frame = gradientFrame(size);
  compositor.compose(frame, {}, {});
  PixelBuffer result(size);
  ASSERT_TRUE(compositor.readBack(result));
  EXPECT_EQ(differences(result, frame), Places{});
}

TEST_F(GlCompose, AVertexLightsTheTexelOfItsImageCoordinateAndNoOther) {
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

TEST(HalfTexel, MovesEveryVertexToItsTexelsCentreFarFromAnyRounding) {
  for (const int32_t size : {480, 481, 640, 641, 1079, 1080, 1920, 1921, 4095, 4096}) {
    for (int32_t i = 0; i < size; ++i) {
      const PointVertex vertex = vertexAt({size, size}, i, i);
      const float x = vertex.position[0] + halfTexel(size);
      const float y = halfTexel(size) - vertex.position[1];  // rows count from the top
      ASSERT_NEAR((x + 1.0F) * float(size) / 2.0F, float(i) + 0.5F, 0.01F) << size;
      ASSERT_NEAR((y + 1.0F) * float(size) / 2.0F, float(i) + 0.5F, 0.01F) << size;
    }
  }
}

TEST_F(GlCompose, ALabelAtHalfAPixelLightsThePixelBefore) {
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

TEST_F(GlCompose, EveryColumnAndRowIsHitExactlyOnce) {
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

TEST_F(GlCompose, VerticesBeyondThePictureAreCutOff) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  const std::vector<PointVertex> points{vertexAt(size, -1, 10), vertexAt(size, 640, 10),
                                        vertexAt(size, 10, -1), vertexAt(size, 10, 480),
                                        vertexAt(size, 100000, -100000)};
  EXPECT_EQ(differences(composed(frame, {}, points), frame), Places{});
}

TEST_F(GlCompose, ALineLightsItsOwnRowOrColumnAlone) {
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

TEST_F(GlCompose, ASlantedLineHasOnePixelAColumnFromEndToEnd) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  const Places lit =
      differences(composed(frame, {vertexAt(size, 100, 100), vertexAt(size, 200, 140)}, {}), frame);
  EXPECT_TRUE(lit.contains({100, 100}));
  EXPECT_TRUE(lit.contains({150, 120}));
  EXPECT_TRUE(lit.contains({200, 140}));
  EXPECT_EQ(lit.size(), 101U);
}

TEST_F(GlCompose, ALaterLineLiesOverAnEarlierOneAndOverItsEnds) {
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

TEST_F(GlCompose, LinesLieOverTheFrameAndPointsOverLines) {
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

TEST_F(GlCompose, ColorsAndAlphaReplaceAndAreNotBlended) {
  const TextureSize size{640, 480};
  glEnable(GL_BLEND);  // as a painter may have left it
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_SCISSOR_TEST);
  glScissor(0, 0, 1, 1);
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  const PixelBuffer result = composed(plainFrame(size, {{200, 200, 200, 255}}), {},
                                      {vertexAt(size, 5, 5, {1.0F, 0.2F, 0.4F, 0.0F}),
                                       vertexAt(size, 6, 5, {0.0F, 0.0F, 0.0F, 0.6F}),
                                       vertexAt(size, 7, 5, {2.0F, -1.0F, 0.0F, 1.0F})});
  EXPECT_EQ(pixelAt(result, 5, 5), (Pixel{{102, 51, 255, 0}}));
  EXPECT_EQ(pixelAt(result, 6, 5), (Pixel{{0, 0, 0, 153}}));
  EXPECT_EQ(pixelAt(result, 7, 5), (Pixel{{0, 0, 255, 255}}));
}

TEST_F(GlCompose, GrowsForALargeOverlayAndShrinksToNone) {
  const TextureSize size{640, 480};
  const PixelBuffer frame = plainFrame(size, {{0, 0, 0, 255}});
  compositor.initBufferResources(size);
  PixelBuffer result(size);
  for (const int32_t rows : {1, 100, 400, 3, 0}) {
    std::vector<PointVertex> points;
    for (int32_t y = 0; y < rows; ++y) {
      for (int32_t x = 0; x < size.width; ++x) points.push_back(vertexAt(size, x, y));
    }
    compositor.compose(frame, {}, points);
    ASSERT_TRUE(compositor.readBack(result));
    EXPECT_EQ(differences(result, frame).size(), points.size());
  }
}

TEST_F(GlCompose, LeavesTheFramebufferAndViewportAsItFoundThem) {
  const TextureSize size{640, 480};
  const Surface window({300, 200});
  window.bind();
  glViewport(1, 2, 30, 40);
  const PixelBuffer frame = gradientFrame(size);
  const auto expectUntouched = [&](const char* after) {
    GLint draw = -1;
    GLint read = -1;
    GLint viewport[4] = {};
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(GLuint(draw), window.name()) << after;
    EXPECT_EQ(GLuint(read), window.name()) << after;
    EXPECT_TRUE(viewport[0] == 1 && viewport[1] == 2 && viewport[2] == 30 && viewport[3] == 40)
        << after;
  };
  compositor.initBufferResources(size);
  expectUntouched("initBufferResources");
  compositor.compose(frame, std::vector{vertexAt(size, 1, 1), vertexAt(size, 9, 9)}, {});
  expectUntouched("compose");
  PixelBuffer result(size);
  EXPECT_TRUE(compositor.readBack(result));
  expectUntouched("readBack");
  compositor.present({{0, 0}, {640, 480}}, window.size());
  expectUntouched("present");
  compositor.clearBufferResources();
  expectUntouched("clearBufferResources");
}

TEST_F(GlCompose, IsIndependentOfPixelStorageLeftByOthers) {
  const TextureSize size{641, 481};
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 1000);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 3);
  glPixelStorei(GL_PACK_ROW_LENGTH, 2000);
  glPixelStorei(GL_PACK_ALIGNMENT, 8);
  const PixelBuffer frame = gradientFrame(size);
  EXPECT_EQ(differences(composed(frame, {}, {}), frame), Places{});
}

TEST_F(GlCompose, AnotherSizeMakesAnotherTexture) {
  for (const TextureSize size :
       {TextureSize{640, 480}, TextureSize{1280, 720}, TextureSize{640, 480}}) {
    const PixelBuffer frame = gradientFrame(size);
    const Places lit =
        differences(composed(frame, {}, {vertexAt(size, 11, 12, {1, 1, 1, 1})}), frame);
    EXPECT_EQ(lit, (Places{{11, 12}}));
  }
}

/// The shader programs that there are.
std::vector<GLuint> programs() {
  std::vector<GLuint> names;
  for (GLuint name = 1; name < 100; ++name)
    if (glIsProgram(name) == GL_TRUE) names.push_back(name);
  return names;
}

// Drivers keep a little of each program that they ever saw: sessions must not make new ones.
TEST_F(GlCompose, ShaderProgramsOutliveThePictureAndGoWithTheContext) {
  compositor.initBufferResources({640, 480});
  const std::vector<GLuint> made = programs();
  EXPECT_FALSE(made.empty());
  compositor.clearBufferResources();
  EXPECT_EQ(programs(), made);
  compositor.initBufferResources({1280, 720});
  EXPECT_EQ(programs(), made);
  compositor.contextWillBeDestroyed();
  EXPECT_FALSE(compositor.hasBufferResources());
  EXPECT_EQ(programs(), std::vector<GLuint>{});
}

TEST_F(GlCompose, RefusesWhatDoesNotFit) {
  PixelBuffer result({640, 480});
  EXPECT_FALSE(compositor.hasBufferResources());
  EXPECT_FALSE(compositor.readBack(result));
  compositor.clearBufferResources();  // harmless
  compositor.compose(gradientFrame({640, 480}), {}, {});

  compositor.initBufferResources({640, 480});
  EXPECT_TRUE(compositor.hasBufferResources());
  const PixelBuffer frame = gradientFrame({640, 480});
  compositor.compose(frame, {}, {});
  compositor.compose(plainFrame({640, 481}, {}), {}, {});  // of another size: left out
  EXPECT_TRUE(compositor.readBack(result));
  EXPECT_EQ(differences(result, frame), Places{});
  PixelBuffer other({640, 481});
  EXPECT_FALSE(compositor.readBack(other));
  compositor.clearBufferResources();
  EXPECT_FALSE(compositor.hasBufferResources());
}

TEST_F(GlCompose, ATextureLargerThanTheGraphicsCardsIsRefusedInPlainWords) {
  GLint largest = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
  const LogCapture log;
  compositor.initBufferResources({largest + 1, 480});
  EXPECT_FALSE(compositor.hasBufferResources());
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(
      log.lines()[0],
      fmt::format("A picture of {} by 480 pixels can't be shown: the graphics card ends at {}.",
                  largest + 1, largest));
}

}  // namespace
}  // namespace tessary::test
