#include <algorithm>

#include <gtest/gtest.h>

#include "Program.h"
#include "ui/OpenGlSurface.h"
#include "ui/RasterSurface.h"

namespace tessary::test {
namespace {

bool showsASpecimen(Program& program) {
  const QImage image = program.screenshot();
  return !image.isNull() && image.pixelColor(320, 120).value() > 60;
}

TEST(Renderer, ALostGraphicsContextIsFollowedByTheSamePictureDrawnWithoutIt) {
  if (qgetenv("TESSARY_TEST_RENDERER") != "opengl") GTEST_SKIP() << "OpenGL can't be had here";
  Program program({.furnish = [](Platform& platform) { platform.renderer = Renderer::kOpenGl; }});
  const auto surface = [&] { return program.window().findChild<OpenGlSurface*>(); };
  ASSERT_TRUE(program.waitForPicture());
  ASSERT_TRUE(surface() && surface()->isValid());
  emit surface()->contextWasLost();
  EXPECT_TRUE(waitUntil([&] { return !surface(); }));
  EXPECT_TRUE(program.window().findChild<RasterSurface*>());
  ASSERT_TRUE(program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return showsASpecimen(program); }));
  const std::vector<std::string> lines = program.log.lines();
  EXPECT_EQ(
      std::count_if(lines.begin(), lines.end(),
                    [](const std::string& line) { return line.starts_with("OpenGL is lost"); }),
      1);

  click(program.button("Line Item Identifier"));
  PreviewView& view = gPreviewWindowController->getPreviewView();
  ASSERT_TRUE(waitUntil([&] { return view.getCurrOperation() == kOprLine; }));
  drag(program.container(), {100, 100}, {300, 100});
  EXPECT_TRUE(waitUntil([&] {
    const QColor color = program.screenshot().pixelColor(200, 100);
    return color.green() > 200 && color.red() < 60;
  })) << "what is measured lies over it";
}

}  // namespace
}  // namespace tessary::test
