#include <epoxy/gl.h>

#include <cstring>
#include <vector>

#include "CompositorFrames.h"
#include "GlFixture.h"
#include "GlSurface.h"
#include "LogCapture.h"
#include "opengl/GlCompositor.h"

namespace tessary::test {
namespace {

// What it draws is tested in tests/pixels; here is what it owes the graphics context.
class GlCompositorTest : public GlTest {
 protected:
  PixelBuffer composed(const PixelBuffer& frame, const std::vector<PointVertex>& points) {
    compositor.initBufferResources(frame.size());
    compositor.setFrame(borrowed(frame));
    compositor.compose({}, points);
    PixelBuffer result(frame.size());
    EXPECT_TRUE(compositor.readBack(result));
    return result;
  }

  GlCompositor compositor;
};

bool isSame(const PixelBuffer& one, const PixelBuffer& other) {
  return one.size() == other.size() && std::memcmp(one.data(), other.data(), one.byteCount()) == 0;
}

TEST_F(GlCompositorTest, LeavesTheFramebufferAndViewportAsItFoundThem) {
  const TextureSize size{640, 480};
  const GlSurface window({300, 200});
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
  compositor.setFrame(borrowed(frame));
  expectUntouched("setFrame");
  compositor.compose(std::vector{vertexAt(size, 1, 1), vertexAt(size, 9, 9)}, {});
  expectUntouched("compose");
  PixelBuffer result(size);
  EXPECT_TRUE(compositor.readBack(result));
  expectUntouched("readBack");
  compositor.present({{0, 0}, {640, 480}}, Surface::framebuffer(window.size()));
  expectUntouched("present");
  compositor.clearBufferResources();
  expectUntouched("clearBufferResources");
}

TEST_F(GlCompositorTest, IsIndependentOfPixelStorageLeftByOthers) {
  const TextureSize size{641, 481};
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 1000);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 3);
  glPixelStorei(GL_PACK_ROW_LENGTH, 2000);
  glPixelStorei(GL_PACK_ALIGNMENT, 8);
  const PixelBuffer frame = gradientFrame(size);
  EXPECT_TRUE(isSame(composed(frame, {}), frame));
}

/// The shader programs that there are.
std::vector<GLuint> programs() {
  std::vector<GLuint> names;
  for (GLuint name = 1; name < 100; ++name)
    if (glIsProgram(name) == GL_TRUE) names.push_back(name);
  return names;
}

// Drivers keep a little of each program that they ever saw: sessions must not make new ones.
TEST_F(GlCompositorTest, ShaderProgramsOutliveThePictureAndGoWithTheContext) {
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

TEST_F(GlCompositorTest, ATextureLargerThanTheGraphicsCardsIsRefusedInPlainWords) {
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

TEST_F(GlCompositorTest, DrawsItsOwnWayWhateverAPainterLeft) {
  const TextureSize size{640, 480};
  const auto leaveAsAPainter = [] {
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 1, 1);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  };
  const PixelBuffer frame = plainFrame(size, {{200, 200, 200, 255}});
  compositor.initBufferResources(size);
  leaveAsAPainter();
  compositor.setFrame(borrowed(frame));
  leaveAsAPainter();
  compositor.compose({}, std::vector{vertexAt(size, 5, 5, {1.0F, 0.2F, 0.4F, 0.0F}),
                                     vertexAt(size, 6, 5, {0.0F, 0.0F, 0.0F, 0.6F})});
  PixelBuffer result(size);
  ASSERT_TRUE(compositor.readBack(result));
  EXPECT_EQ(pixelAt(result, 5, 5), (Pixel{{102, 51, 255, 0}}));
  EXPECT_EQ(pixelAt(result, 6, 5), (Pixel{{0, 0, 0, 153}}));
  EXPECT_EQ(pixelAt(result, 7, 5), (Pixel{{200, 200, 200, 255}}));
}

TEST_F(GlCompositorTest, OfALostContextNothingIsDeleted) {
  const PixelBuffer frame = gradientFrame({640, 480});
  composed(frame, {vertexAt({640, 480}, 9, 9)});
  const std::vector<GLuint> made = programs();
  compositor.contextWasLost();
  EXPECT_FALSE(compositor.hasBufferResources());
  EXPECT_FALSE(made.empty());
  EXPECT_EQ(programs(), made) << "no call went to the context";
}

TEST_F(GlCompositorTest, ALostContextIsFollowedByTheSamePictureInTheNext) {
  const PixelBuffer frame = gradientFrame({640, 480});
  EXPECT_TRUE(isSame(composed(frame, {vertexAt({640, 480}, 9, 9)}),
                     composed(frame, {vertexAt({640, 480}, 9, 9)})));
  compositor.contextWillBeDestroyed();
  EXPECT_FALSE(compositor.hasBufferResources());
  const auto next = HeadlessContext::make();
  ASSERT_NE(next, nullptr);
  EXPECT_TRUE(isSame(composed(frame, {}), frame));
  compositor.contextWillBeDestroyed();
}

}  // namespace
}  // namespace tessary::test
