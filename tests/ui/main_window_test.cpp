#include <QtWidgets/QMessageBox>
#include <gtest/gtest.h>

#include "Program.h"

namespace tessary::test {
namespace {

TEST(MainWindow, TheRememberedMicroscopeIsLiveAfterTheLaunch) {
  Program program;
  EXPECT_TRUE(program.waitForPicture());
  EXPECT_EQ(program.container().size(), QSize(640, 480)) << "the window fits the frame";
  EXPECT_TRUE(waitUntil([&] { return program.text("fpsText").startsWith("640x480  fps:"); }));
  EXPECT_EQ(program.text("zoomText"), "") << "blank until the zoom is touched";
}

TEST(MainWindow, AFirstLaunchOpensNothing) {
  Program program(Start{.remembered = false});
  EXPECT_FALSE(gCurrMicroscope);
  EXPECT_EQ(gMicroscopes.size(), 1U);
  EXPECT_EQ(program.text("fpsText"), "");
  EXPECT_EQ(program.store->storeCalls, 0) << "a first launch writes nothing";
}

TEST(MainWindow, WithoutAMicroscopeTheLaunchCompletesWithBlankTexts) {
  Program program(Start{.plugged = false});
  EXPECT_TRUE(gMicroscopes.empty());
  program.window().resize(700, 560);
  EXPECT_TRUE(waitUntil([&] { return program.slider("zoomSlider").width() == 100; }));
  program.slider("zoomSlider").setValue(4);
  EXPECT_EQ(program.text("zoomText"), "150%");
  // The status timer blanks it again.
  EXPECT_TRUE(waitUntil([&] { return program.text("zoomText").isEmpty(); }));
  EXPECT_EQ(program.text("fpsText"), "");
}

TEST(MainWindow, TheZoomSliderShowsItsStepInPercent) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const struct {
    int step;
    const char* text;
  } rows[] = {{0, "50%"}, {1, "75%"}, {3, "125%"}, {4, "150%"}, {2, "100%"}};
  QSlider& slider = program.slider("zoomSlider");
  for (const auto& row : rows) {
    // The handle stands at a fifth of the way, less its own half width at both ends.
    const int x = 6 + (slider.width() - 12) * slider.value() / 4;
    const int target = 6 + (slider.width() - 12) * row.step / 4;
    drag(slider, {x, slider.height() / 2 - 3}, {target, slider.height() / 2 - 3});
    EXPECT_EQ(program.text("zoomText").toStdString(), row.text);
  }
  EXPECT_EQ(slider.maximum(), 4) << "200 percent is out of reach";
}

TEST(MainWindow, AWindowLargerThanThePictureHidesThePanSlidersAndCentresIt) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.window().resize(program.window().size() + QSize(160, 120));
  ASSERT_TRUE(waitUntil([&] { return program.container().size() == QSize(800, 600); }));
  for (const char* name : {"horizontalSlider", "verticalSlider"}) {
    EXPECT_FALSE(program.slider(name).isVisible()) << name;
    EXPECT_EQ(program.slider(name).minimum(), 0) << name;
    EXPECT_EQ(program.slider(name).maximum(), 0) << name;
  }
  ASSERT_TRUE(waitUntil([&] {
    const QImage image = program.screenshot();
    return image.pixelColor(90, 300).value() > 60 && image.pixelColor(70, 300).value() < 40;
  }));
  const QImage image = program.screenshot();
  EXPECT_LT(image.pixelColor(79, 200).value(), 40);
  EXPECT_GT(image.pixelColor(80, 200).value(), 60);
  EXPECT_LT(image.pixelColor(300, 59).value(), 40);
  EXPECT_GT(image.pixelColor(300, 60).value(), 60);
}

TEST(MainWindow, AWindowOnePixelNarrowerThanThePictureScrollsByOne) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.window().resize(program.window().size() - QSize(1, 0));
  QSlider& slider = program.slider("horizontalSlider");
  EXPECT_TRUE(waitUntil([&] { return slider.isVisible() && slider.maximum() == 1; }));
  EXPECT_EQ(slider.minimum(), 0);
  EXPECT_FALSE(program.slider("verticalSlider").isVisible());
}

TEST(MainWindow, AShrunkenWindowNeverShowsASliderBeyondItsRange) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(4);
  program.slider("horizontalSlider").setValue(program.slider("horizontalSlider").maximum());
  program.window().resize(program.window().size() - QSize(100, 60));
  ASSERT_TRUE(waitUntil([&] { return program.container().width() == 540; }));
  EXPECT_EQ(program.slider("horizontalSlider").maximum(), 960 - 540);
  EXPECT_EQ(program.slider("horizontalSlider").value(), 960 - 640) << "the pan stays";
  // To the ends of both ranges, which are shorter in a larger window.
  program.slider("horizontalSlider").setValue(960 - 540);
  program.slider("verticalSlider").setValue(0);
  program.window().resize(program.window().size() + QSize(100, 60));
  ASSERT_TRUE(waitUntil([&] { return program.container().width() == 640; }));
  const PreviewView& view = gPreviewWindowController->getPreviewView();
  EXPECT_EQ(view.viewLocation(), (Point{960 - 640, 720 - 480}));
  EXPECT_EQ(program.slider("horizontalSlider").value(), 960 - 640);
  EXPECT_EQ(program.slider("verticalSlider").value(), 0);
}

TEST(MainWindow, DraggingThePictureMovesTheSlidersWithIt) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(4);
  const int x = program.slider("horizontalSlider").value();
  const int y = program.slider("verticalSlider").value();
  drag(program.container(), {300, 300}, {280, 270});
  EXPECT_EQ(program.slider("horizontalSlider").value(), x + 20);
  EXPECT_EQ(program.slider("verticalSlider").value(), y - 30) << "its top is the picture's top";
}

TEST(MainWindow, ToolsPutTheZoomBackToHundredPercent) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(0);
  click(program.button("Line Item Identifier"));
  EXPECT_EQ(program.slider("zoomSlider").value(), 2);
  EXPECT_EQ(program.text("zoomText"), "100%");
}

TEST(MainWindow, DeleteWithoutASelectionChangesNothing) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  click(program.button("Line Item Identifier"));
  drag(program.container(), {200, 100}, {300, 100});
  const auto lineShows = [&] {
    const QColor color = program.screenshot().pixelColor(250, 100);
    return color.red() < 20 && color.green() > 200;
  };
  ASSERT_TRUE(waitUntil(lineShows));
  click(program.container(), {320, 300});
  key("Delete");
  EXPECT_TRUE(lineShows());
  click(program.container(), {200, 100});
  key("Delete");
  EXPECT_TRUE(waitUntil([&] { return !lineShows(); })) << "with one it goes";
}

TEST(MainWindow, AMinimisedWindowPassesNoFramesOn) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  ASSERT_TRUE(waitUntil([&] { return gPreviewWindowController->wndExposed(); }));
  program.window().showMinimized();
  EXPECT_TRUE(waitUntil([&] { return !gPreviewWindowController->wndExposed(); }));
  program.window().showNormal();
  EXPECT_TRUE(waitUntil([&] { return gPreviewWindowController->wndExposed(); }));
  EXPECT_TRUE(program.waitForPicture());
}

TEST(MainWindow, AnUnpluggedMicroscopeLeavesAndComesBackByItself) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.microscope->unplug();
  EXPECT_TRUE(waitUntil([&] { return !gCurrMicroscope; }));
  EXPECT_TRUE(waitUntil([&] { return program.text("fpsText").isEmpty(); }));
  EXPECT_TRUE(waitUntil([&] { return program.screenshot().pixelColor(320, 120).value() < 40; }));
  EXPECT_TRUE(waitUntil([&] { return !program.isEnabled("Line Item Identifier"); }));
  EXPECT_EQ(program.container().size(), QSize(640, 480)) << "the window keeps its size";
  program.microscope->plug();
  EXPECT_TRUE(program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return program.isEnabled("Line Item Identifier"); }));
}

TEST(MainWindow, ClosingItEndsTheSessionAndSavesNothing) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const int stored = program.store->storeCalls;
  key("ctrl+q");
  EXPECT_TRUE(waitUntil([&] { return !program.window().isVisible(); }));
  EXPECT_EQ(program.store->storeCalls, stored);
  EXPECT_TRUE(gCurrMicroscope) << "it is left set";
}

}  // namespace
}  // namespace tessary::test
