// Measuring by hand: every tool with a real mouse on the simulated microscope at 640 by 480, where
// a place in the picture area is a place in the picture.

#include <array>
#include <optional>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtGui/QPainter>
#include <gtest/gtest.h>

#include "Program.h"
#include "RecordingRasterizer.h"

namespace tessary::test {
namespace {

/// A tool's button, and what it takes in hand.
struct Tool {
  const char* button;
  int32_t operation;
};
constexpr Tool kLine{"Line Item Identifier", kOprLine};
constexpr Tool kParallel{"Line2 Item Identifier", kOprLine2};
constexpr Tool kCircle{"Circle Item Identifier", kOprCircle};
constexpr Tool kRectangle{"Rectangle Item Identifier", kOprRect};
constexpr Tool kAngle{"Angle Item Identifier", kOprAngle};
constexpr Tool kPencil{"Pencil Item Identifier", kOprPencil};
constexpr Tool kDrag{"Drag Item Identifier", kOprDrag};
constexpr const char* kDeleteLast = "Delete Last Item Identifier";
constexpr const char* kDeleteAll = "Delet All Item Identifier";

/// Away from every shape of these tests.
constexpr QPoint kAside(600, 400);

class Tools : public ::testing::Test {
 protected:
  /// The picture stands still from here on, so that every other pixel is the overlay's doing.
  void SetUp() override {
    ASSERT_TRUE(program.waitForPicture());
    program.microscope->freeze(std::chrono::minutes(5));
    moveTo(program.container(), kAside);
    int turnsAlike = 0;
    ASSERT_TRUE(waitUntil([&] {
      const QImage now = picture();
      turnsAlike = now == std::exchange(bare, now) ? turnsAlike + 1 : 0;
      return turnsAlike > 3 && micrometerIsInPlace(now);
    }));
    ASSERT_EQ(program.container().size(), QSize(640, 480));
  }

  PreviewView& view() { return gPreviewWindowController->getPreviewView(); }
  void push(const char* identifier) {
    QWidget& button = program.button(identifier);
    pointer(button, button.rect().center(), {"mousedown", "1", "mouseup", "1"});
  }
  void take(const Tool& tool) {
    push(tool.button);
    ASSERT_TRUE(waitUntil([&] { return view().getCurrOperation() == tool.operation; }))
        << tool.button;
  }
  void goTo(QPoint place) { pointer(program.container(), place); }
  void pressAt(QPoint place) { pointer(program.container(), place, {"mousedown", "1"}); }
  void clickAt(QPoint place) {
    pointer(program.container(), place, {"mousedown", "1", "mouseup", "1"});
  }
  /// The pointer goes there, and does this there; all in one run of xdotool.
  static void pointer(const QWidget& widget, QPoint place, const QStringList& then = {}) {
    waitForPlace(*widget.window());
    const QPoint there = onDisplay(widget, place);
    xdotool(QStringList{"mousemove", QString::number(there.x()), QString::number(there.y())} +
            then);
  }
  /// The whole of a line, a circle or a rectangle.
  void draw(const Tool& tool, QPoint from, QPoint to) {
    take(tool);
    drag(program.container(), from, to);
  }
  /// Takes hold, moves there in three steps, lets go.
  void carry(QPoint from, QPoint by) {
    pressAt(from);
    for (int i = 1; i <= 3; ++i) goTo(from + by * i / 3);
    release();
  }

  /// The millimetre's first and last line stand upward from the middle of the height, at 120 and
  /// 520. Not there, the window has not come to rest where it is believed to be.
  static bool micrometerIsInPlace(const QImage& image) {
    const auto isInk = [&](int x, int y) { return image.pixelColor(x, y).value() < 60; };
    return isInk(120, 220) && !isInk(117, 220) && isInk(520, 220) && !isInk(523, 220) &&
           isInk(320, 240) && !isInk(320, 244);
  }
  /// As it is on screen, down to where the texts and sliders of the status lie, and without the
  /// line at the top that says, rightly, that no pictures come.
  QImage picture() {
    QImage image = program.screenshot().copy(0, 0, 640, 440);
    QPainter(&image).fillRect(0, 0, 640, 60, Qt::black);
    return image;
  }
  static bool isLineColour(const QImage& image, QPoint place) {
    return image.pixelColor(place) == QColor(0, 230, 230);
  }
  /// Waits until all of `lit` have the colour of lines, and `dark` have not; tells which have not
  /// come to that. Leaves a screenshot called `step` beside the test program.
  ::testing::AssertionResult shows(const std::string& step, const std::vector<QPoint>& lit,
                                   const std::vector<QPoint>& dark = {}) {
    QImage image;
    const bool shown = waitUntil(
        [&] {
          image = picture();
          for (const QPoint place : lit)
            if (!isLineColour(image, place)) return false;
          for (const QPoint place : dark)
            if (isLineColour(image, place)) return false;
          return true;
        },
        std::chrono::seconds(5));
    keep(image, step);
    if (shown) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << step << ":";
    for (const QPoint place : lit)
      if (!isLineColour(image, place))
        failure << " no line at (" << place.x() << ", " << place.y() << ")";
    for (const QPoint place : dark)
      if (isLineColour(image, place))
        failure << " a line at (" << place.x() << ", " << place.y() << ")";
    return failure;
  }
  ::testing::AssertionResult showsNothing(const std::string& step) {
    QImage image;
    const bool shown = waitUntil(
        [&] {
          image = picture();
          return image == bare;
        },
        std::chrono::seconds(5));
    keep(image, step);
    if (shown) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << step << ": something lies over the picture";
  }
  void keep(const QImage& image, const std::string& step) const {
    const QDir folder(QCoreApplication::applicationDirPath() + "/screenshots");
    folder.mkpath(".");
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    constexpr int kQuick = 90;  // hardly compressed: that would take longer than all the rest
    image.save(
        folder.filePath(QString::fromStdString(std::string(test->name()) + "-" + step + ".png")),
        "PNG", kQuick);
  }

  std::string lastLabel;
  Program program{Start{.furnish = [this](Platform& platform) {
    platform.textRasterizer =
        std::make_unique<RecordingRasterizer>(std::move(platform.textRasterizer), lastLabel);
  }}};
  QImage bare;
};

/// How a shape is drawn, and what is to be seen of it.
struct Drawing {
  Tool tool;
  const char* name;
  std::vector<QPoint> stroke;    // press, drags, release at the last
  std::optional<QPoint> third;   // of the two that have one
  QPoint handle;                 // its corner up right is free of other lines
  std::vector<QPoint> drawn;     // when it is finished
  std::vector<QPoint> underway;  // during the stroke only
  std::vector<QPoint> notYet;    // not during the stroke
};

std::vector<QPoint> moved(std::vector<QPoint> places, QPoint by) {
  for (QPoint& place : places) place += by;
  return places;
}

const Drawing kDrawings[] = {
    {kLine,
     "line",
     {{150, 150}, {260, 190}, {350, 150}},
     {},
     {350, 150},
     {{250, 150}, {150, 132}, {150, 168}, {350, 132}, {350, 168}},
     {{150, 112}, {150, 188}, {350, 112}, {350, 188}},
     {}},
    {kParallel,
     "parallel",
     {{150, 150}, {260, 190}, {350, 150}},
     QPoint{250, 210},
     {250, 210},
     {{200, 150}, {151, 210}, {349, 210}, {250, 180}},
     {},
     {{200, 210}, {250, 180}}},
    {kCircle,
     "circle",
     {{250, 250}, {280, 280}, {330, 250}},
     {},
     {330, 250},
     {{290, 250}, {171, 250}, {250, 171}, {250, 329}, {245, 245}},
     {},
     {}},
    {kRectangle,
     "rectangle",
     {{150, 150}, {200, 200}, {350, 300}},
     {},
     {350, 300},
     {{250, 150}, {350, 225}, {250, 300}, {150, 225}},
     {},
     {}},
    {kAngle,
     "angle",
     {{200, 300}, {300, 320}, {350, 300}},
     QPoint{200, 150},
     {200, 150},
     {{275, 300}, {200, 225}},
     {},
     {{200, 225}}},
    {kPencil,
     "pencil",
     {{150, 300}, {200, 250}, {250, 300}, {300, 250}, {350, 300}},
     {},
     {350, 300},
     {{151, 299}, {200, 250}, {250, 300}, {300, 250}, {325, 275}},
     {},
     {}},
};

/// A handle's frame: the corner up right of its outline, and of the two inner ones.
std::vector<QPoint> outline(QPoint handle) { return {handle + QPoint(5, -5)}; }
std::vector<QPoint> inside(QPoint handle) {
  return {handle + QPoint(4, -4), handle + QPoint(3, -3)};
}
std::vector<QPoint> operator+(std::vector<QPoint> a, const std::vector<QPoint>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(Tools, EachDrawsHoversSelectsMovesAndDeletes) {
  for (const Drawing& d : kDrawings) {
    SCOPED_TRACE(d.name);
    const std::string name = std::string(d.name) + "-";
    take(d.tool);
    pressAt(d.stroke.front());
    for (const QPoint place : d.stroke) goTo(place);
    EXPECT_TRUE(shows(name + "1-stroke", std::vector{d.stroke.front()} + d.underway, d.notYet));
    release();
    if (d.third) {
      goTo(*d.third + QPoint(0, 40));
      EXPECT_TRUE(shows(name + "2-third-point", {*d.third + QPoint(0, 40)}, outline(*d.third)));
      goTo(*d.third);
      EXPECT_TRUE(shows(name + "3-third-point", d.drawn));
      press();
      release();
    }
    goTo(kAside);
    EXPECT_TRUE(shows(name + "4-idle", d.drawn, d.underway + outline(d.handle)));

    goTo(d.handle + QPoint(6, -6));  // still on it: the hold is a pixel wider than the frame
    EXPECT_TRUE(shows(name + "5-hovered", outline(d.handle), inside(d.handle)));
    goTo(d.handle + QPoint(7, -6));
    EXPECT_TRUE(shows(name + "6-beside", d.drawn, outline(d.handle)));

    const QPoint by(45, 30);
    carry(d.handle, by);
    const QPoint handle = d.handle + by;
    EXPECT_TRUE(shows(name + "7-moved", outline(handle) + inside(handle), outline(d.handle)));
    clickAt(kAside);
    EXPECT_TRUE(shows(name + "8-let-go", moved(d.drawn, by), outline(handle)));

    clickAt(handle);
    EXPECT_TRUE(shows(name + "9-selected", outline(handle) + inside(handle)));
    key(d.tool.operation == kOprLine ? "BackSpace" : "Delete");
    EXPECT_TRUE(showsNothing(name + "10-deleted"));
    EXPECT_EQ(std::exchange(lastLabel, ""), d.tool.operation == kOprAngle ? "90.000\u00B0" : "")
        << "without a calibration";
  }
}

TEST_F(Tools, AThirdPointStaysWhereItsPressPutIt) {
  take(kParallel);
  drag(program.container(), {150, 150}, {350, 150});
  goTo({250, 260});
  press();
  goTo({250, 300});  // a drag of that press is none of the shape's any more
  release();
  goTo({250, 330});
  goTo(kAside);
  EXPECT_TRUE(shows("finished", {{200, 260}, {250, 200}}, {{200, 300}, {200, 330}, {250, 280}}));
}

TEST_F(Tools, QuickPressesInOnePlaceCountOneByOne) {
  take(kAngle);
  pointer(program.container(), {300, 200},
          {"mousedown", "1", "mouseup", "1", "mousedown", "1", "mouseup", "1"});
  EXPECT_TRUE(waitUntil([&] { return view().getCurrOperation() == kOprDrag; }))
      << "the second press is the third point";
  EXPECT_TRUE(showsNothing("nothing"));
}

TEST_F(Tools, ToolsAreForOneShape) {
  draw(kLine, {150, 150}, {350, 150});
  drag(program.container(), {150, 300}, {350, 300});
  goTo(kAside);
  EXPECT_TRUE(shows("one", {{250, 150}}, {{250, 300}}));
}

TEST_F(Tools, DeleteLastAndDeleteAllTakeShapesWithoutASelection) {
  for (const int y : {100, 200, 300}) draw(kLine, {150, y}, {350, y});
  goTo(kAside);
  EXPECT_TRUE(shows("three", {{250, 100}, {250, 200}, {250, 300}}));
  const auto pushAndLeave = [&](const char* button) {
    push(button);
    goTo(kAside);  // or the button's tool tip comes to lie over the picture
  };
  pushAndLeave(kDeleteLast);
  EXPECT_TRUE(shows("two", {{250, 100}, {250, 200}}, {{250, 300}}));
  pushAndLeave(kDeleteAll);
  EXPECT_TRUE(showsNothing("none"));
  pushAndLeave(kDeleteLast);
  EXPECT_TRUE(showsNothing("still-none"));
}

TEST_F(Tools, DeletingTheSelectedShapeLeavesItsNeighbours) {
  for (const int y : {100, 200, 300}) draw(kLine, {150, y}, {350, y});
  clickAt({150, 200});
  key("Delete");
  goTo(kAside);
  EXPECT_TRUE(shows("two", {{250, 100}, {250, 300}}, {{250, 200}}));
  carry({350, 300}, {0, 60});
  clickAt(kAside);
  EXPECT_TRUE(shows("moved", {{250, 100}, {250, 360}}, {{250, 300}}));
}

TEST_F(Tools, AwayFromHundredPercentTheMouseOnlyPans) {
  draw(kLine, {250, 200}, {350, 200});
  goTo(kAside);
  ASSERT_TRUE(shows("before", {{300, 200}, {250, 182}}));
  const QImage before = picture();
  QSlider& zoom = program.slider("zoomSlider");
  take(kLine);
  zoom.setValue(4);  // 150 per cent, with the tool in hand
  drag(program.container(), {300, 300}, {400, 350});
  zoom.setValue(2);
  EXPECT_TRUE(waitUntil([&] { return picture() == before; })) << "nothing was drawn";
  take(kDrag);

  zoom.setValue(4);
  const int x = program.slider("horizontalSlider").value();
  // The line's right end: (350, 200) lies at (365, 180) in the enlarged picture's middle.
  drag(program.container(), {365, 180}, {345, 180});
  EXPECT_EQ(program.slider("horizontalSlider").value(), x + 20) << "the picture went along";
  keep(program.screenshot(), "panned");
  zoom.setValue(2);
  goTo(kAside);
  EXPECT_TRUE(shows("after", {{300, 200}, {250, 182}}, outline({350, 200})))
      << "neither selected nor moved";
}

TEST_F(Tools, TheRightButtonDoesNothing) {
  draw(kLine, {150, 150}, {350, 150});
  goTo(kAside);
  ASSERT_TRUE(shows("before", {{250, 150}, {150, 132}}));
  goTo({350, 150});
  ASSERT_TRUE(shows("hovered", outline({350, 150}), inside({350, 150})));
  const QImage hovered = picture();
  const auto rightDrag = [&](QPoint from, QPoint to) {
    goTo(from);
    xdotool({"mousedown", "3"});
    goTo((from + to) / 2);
    goTo(to);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "no menu";
    xdotool({"mouseup", "3"});
  };
  rightDrag({350, 150}, {400, 250});
  goTo({350, 150});
  EXPECT_EQ(picture(), hovered) << "neither selected nor moved";
  take(kRectangle);
  rightDrag({200, 250}, {300, 350});
  draw(kRectangle, {420, 250}, {520, 350});
  goTo(kAside);
  EXPECT_TRUE(shows("drawn", {{250, 150}, {470, 250}}, {{250, 250}, {250, 350}}));
}

TEST_F(Tools, HandlesLightUpWhileAnotherWindowIsActive) {
  draw(kLine, {150, 150}, {350, 150});
  goTo(kAside);
  QWidget other;
  other.setGeometry(1100, 880, 120, 80);
  other.show();
  other.activateWindow();
  ASSERT_TRUE(waitUntil([&] { return hasKeyboard(other) && !program.window().isActiveWindow(); }));
  goTo({150, 150});
  EXPECT_TRUE(shows("hovered", outline({150, 150}), inside({150, 150})));
  EXPECT_TRUE(other.isActiveWindow());
  carry({150, 150}, {0, 60});
  EXPECT_TRUE(shows("moved", inside({150, 210}))) << "the press that activates counts";
  EXPECT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
}

TEST_F(Tools, AfterACalibrationOnTheStageMicrometerHalfAMillimetreReadsSo) {
  view().startCalibration();
  EXPECT_TRUE(shows("opened", {{107, 240}, {533, 241}, {107, 180}, {533, 300}}));
  goTo({533, 240});
  EXPECT_TRUE(shows("hovered", {{533 + 9, 210 - 6}}, {{107 + 9, 210 - 6}}));
  carry({107, 200}, {13, 0});
  carry({533, 280}, {-13, 0});
  goTo(kAside);
  EXPECT_TRUE(shows("laid", {{120, 180}, {120, 300}, {520, 180}, {520, 300}, {320, 241}},
                    {{107, 200}, {533, 200}}));
  ASSERT_EQ(view().calibrationLineLen(), 400);

  const auto pixelsPerUnit = static_cast<float>(view().calibrationLineLen() / 1.0);
  view().stopCalibration();
  view().setCalibration(pixelsPerUnit, kUnitMillimetre);
  draw(kLine, {120, 240}, {320, 240});
  goTo(kAside);
  EXPECT_TRUE(shows("measured", {{120, 222}, {320, 222}, {220, 240}}));
  EXPECT_NEAR(valueOf(lastLabel), 0.5, 0.005) << lastLabel;
  EXPECT_TRUE(lastLabel.ends_with("mm")) << lastLabel;

  draw(kLine, {120, 240}, {520, 240});
  EXPECT_NEAR(valueOf(lastLabel), 1.0, 0.005) << lastLabel;
  draw(kRectangle, {120, 280}, {320, 380});
  EXPECT_EQ(lastLabel, "S:0.125mm^2");
  draw(kCircle, {400, 340}, {440, 340});
  EXPECT_EQ(lastLabel, "S:12.566mm^2") << "divided once, as circles are";
  goTo(kAside);
  keep(program.screenshot(), "all");
}

}  // namespace
}  // namespace tessary::test
