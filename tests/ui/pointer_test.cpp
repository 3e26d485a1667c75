// What the pointer is at, to the pixel of the display, at every scale factor that these run with.

#include <cmath>

#include <gtest/gtest.h>

#include "Program.h"
#include "RecordingRasterizer.h"

namespace tessary::test {
namespace {

TEST(Pointer, ADragFromPixelToPixelReadsTheirDistance) {
  std::string label;
  Program program(Start{.furnish = [&](Platform& platform) {
    platform.textRasterizer =
        std::make_unique<RecordingRasterizer>(std::move(platform.textRasterizer), label);
  }});
  ASSERT_TRUE(program.waitForPicture());
  PreviewView& view = gPreviewWindowController->getPreviewView();
  view.setCalibration(1.0F, kUnitMillimetre);  // a millimetre is a pixel of the picture
  const QWidget& picture = program.container();
  const double ratio = picture.devicePixelRatio();
  const auto pixel = [&](int x, int y, QPoint beside) {
    return QPoint(int(x * ratio), int(y * ratio)) + beside;
  };
  const struct {
    QPoint from, to;
  } rows[] = {{pixel(150, 150, {1, 0}), pixel(350, 150, {})},
              {pixel(150, 150, {2, 0}), pixel(350, 150, {1, 0})},
              {pixel(150, 120, {0, 1}), pixel(150, 320, {})},
              {pixel(150, 120, {0, 2}), pixel(150, 320, {0, 1})}};
  for (const auto& row : rows) {
    click(program.button("Line Item Identifier"));
    ASSERT_TRUE(waitUntil([&] { return view.getCurrOperation() == kOprLine; }));
    moveToPixel(picture, row.from);
    press();
    moveToPixel(picture, row.to);
    release();
    EXPECT_TRUE(waitUntil([&] { return view.getCurrOperation() == kOprDrag; }));
    const QPoint way = row.to - row.from;
    const double truth = std::hypot(way.x(), way.y()) / ratio;
    EXPECT_NEAR(valueOf(label), truth, truth / 1000) << label << " at " << ratio;
    view.removeAllShapes();
  }
}

}  // namespace
}  // namespace tessary::test
