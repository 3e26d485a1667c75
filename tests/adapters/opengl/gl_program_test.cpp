#include <epoxy/gl.h>

#include "GlFixture.h"
#include "opengl/GlProgram.h"
#include "opengl/GlShaders.h"

namespace tessary::test {
namespace {

constexpr std::string_view kBrokenShader = "this is no shader\n";
constexpr std::string_view kUnlinkable = R"(
in vec3 vertexColor;  // four numbers in the vertex shader
layout(location = 0) out vec4 fragment;
void main() { fragment = vec4(vertexColor, 1.0); }
)";

void make(GlTarget target, std::string_view vertex, std::string_view fragment) {
  const auto context = HeadlessContext::make();
  const GlProgram program(target, vertex, fragment);
}

TEST(GlProgramDeathTest, APipelineThatCantBeMadeEndsTheProgramAndSaysWhich) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the driver has threads
  EXPECT_DEATH(make(GlTarget::kScreen, kPresentVertexShader, kBrokenShader),
               "Failed to create pipeline state to render to screen: .+");
  EXPECT_DEATH(make(GlTarget::kTexture, kBrokenShader, kOverlayFragmentShader),
               "Failed to create pipeline state to render to texture: .+");
  EXPECT_DEATH(make(GlTarget::kTexture, kOverlayVertexShader, kUnlinkable),
               "Failed to create pipeline state to render to texture: .+");
}

class GlProgramMade : public GlTest {};

TEST_F(GlProgramMade, AllShadersCompile) {
  const GlProgram overlay(GlTarget::kTexture, kOverlayVertexShader, kOverlayFragmentShader);
  const GlProgram exact(GlTarget::kScreen, kPresentVertexShader, kPresentExactFragmentShader);
  const GlProgram filtered(GlTarget::kScreen, kPresentVertexShader, kPresentFilteredFragmentShader);
  EXPECT_GE(overlay.uniform("shift"), 0);
  EXPECT_GE(exact.uniform("texelsPerPixel"), 0);
  EXPECT_GE(filtered.uniform("textureSizeInTexels"), 0);
  EXPECT_EQ(exact.uniform("textureSizeInTexels"), -1);
}

}  // namespace
}  // namespace tessary::test
