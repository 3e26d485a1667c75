#include <QtWidgets/QMessageBox>
#include <gtest/gtest.h>

#include "Program.h"

namespace tessary::test {
namespace {

/// Where a hand takes hold of the zoom slider's knob: at so many fourths of the way, less the
/// knob's own half width at both ends.
QPoint knob(const QSlider& slider, int step) {
  return {6 + (slider.width() - 12) * step / 4, slider.height() / 2 - 3};
}

TEST(MainWindow, TheRememberedMicroscopeIsLiveAfterTheLaunch) {
  Program program;
  EXPECT_TRUE(program.waitForPicture());
  EXPECT_EQ(program.container().size(), QSize(640, 480)) << "the window fits the frame";
  EXPECT_TRUE(waitUntil([&] { return program.text("fpsText").startsWith("640x480  fps:"); }));
  EXPECT_EQ(program.text("zoomText"), "") << "blank until the zoom is touched";
}

TEST(MainWindow, ACameraThatSendsUncompressedFramesOnlyIsLive) {
  for (const uint32_t subtype : {kMediaSubTypeYUYV, kMediaSubTypeNV12}) {
    Program program(Start{.subtype = subtype, .offered = {subtype}});
    EXPECT_TRUE(program.waitForPicture());
    EXPECT_TRUE(waitUntil([&] { return program.text("fpsText").startsWith("640x480  fps:"); }));
    // The marks of the scale are as dark as with compressed frames, the specimen as bright.
    const QImage picture = program.screenshot();
    int darkest = 255;
    int brightest = 0;
    for (int x = 0; x < picture.width(); ++x) {
      const int value = qGray(picture.pixel(x, picture.height() / 2));
      darkest = std::min(darkest, value);
      brightest = std::max(brightest, value);
    }
    EXPECT_LT(darkest, 45);
    EXPECT_GT(brightest, 100);
  }
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
    drag(slider, knob(slider, slider.value()), knob(slider, row.step));
    EXPECT_TRUE(waitUntil([&] { return program.text("zoomText") == row.text; }))
        << row.text << ", not " << program.text("zoomText").toStdString();
  }
  EXPECT_EQ(slider.maximum(), 4) << "200 percent is out of reach";
}

TEST(MainWindow, AKnobThatStoodStillSendsItsStepWhenItIsClicked) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  PreviewView& view = gPreviewWindowController->getPreviewView();
  QSlider& slider = program.slider("zoomSlider");
  slider.setValue(4);
  ASSERT_EQ(view.zoom(), 4);
  view.setCalibration(50.0F, 0);
  ASSERT_EQ(view.zoom(), 2);
  ASSERT_EQ(slider.value(), 4) << "the knob stands still";
  click(slider, knob(slider, 4));
  EXPECT_TRUE(waitUntil([&] { return view.zoom() == 4; }));
  EXPECT_EQ(program.text("zoomText"), "150%");
  EXPECT_EQ(program.slider("horizontalSlider").maximum(), 960 - 640) << "all else goes along";

  view.setCalibration(60.0F, 0);
  ASSERT_EQ(view.zoom(), 2);
  slider.setFocus();
  key("Right");
  EXPECT_TRUE(waitUntil([&] { return view.zoom() == 4; })) << "a key that can't move it further";
}

TEST(MainWindow, OpensBelowTheTopOfTheScreen) {
  Program program(Start{.plugged = false});
  const QWidget& window = program.window();
  EXPECT_TRUE(waitUntil([&] { return window.frameGeometry().top() == 25; }))
      << window.frameGeometry().top();
}

TEST(MainWindow, ThePanSlidersStandInTheUpperRightCorner) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(4);
  for (const QSize by : {QSize(0, 0), QSize(-100, -60)}) {
    program.window().resize(program.window().size() + by);
    const int width = 640 + by.width();
    ASSERT_TRUE(waitUntil([&] { return program.container().width() == width; }));
    EXPECT_EQ(program.slider("horizontalSlider").geometry(), QRect(width - 180, 10, 140, 20));
    EXPECT_EQ(program.slider("verticalSlider").geometry(), QRect(width - 30, 30, 20, 140));
    EXPECT_TRUE(program.slider("horizontalSlider").isVisible());
    EXPECT_TRUE(program.slider("verticalSlider").isVisible());
  }
}

TEST(MainWindow, TheFrameRateIsRounded) {
  Program program(Start{.plugged = false});
  QWidget container;
  PreviewControls controls(container, gPreviewWindowController->getPreviewView());
  const struct {
    float rate;
    const char* text;
  } rows[] = {{0.0F, "640x480  fps:0"},
              {0.5F, "640x480  fps:1"},
              {29.4F, "640x480  fps:29"},
              {29.5F, "640x480  fps:30"},
              {29.97F, "640x480  fps:30"}};
  for (const auto& row : rows) {
    controls.showStatus({0, 640, 480}, row.rate);
    EXPECT_EQ(container.findChild<QLabel*>("fpsText")->text(), row.text) << row.rate;
  }
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
  EXPECT_EQ(view.viewLocation(), (ViewPoint{960 - 640, 720 - 480}));
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
  EXPECT_TRUE(waitUntil([&] { return program.slider("horizontalSlider").value() == x + 20; }));
  EXPECT_EQ(program.slider("verticalSlider").value(), y - 30) << "its top is the picture's top";
}

TEST(MainWindow, ToolsPutTheZoomBackToHundredPercent) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(0);
  click(program.button("Line Item Identifier"));
  EXPECT_TRUE(waitUntil([&] { return program.slider("zoomSlider").value() == 2; }));
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
  minimize(program.window());
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
