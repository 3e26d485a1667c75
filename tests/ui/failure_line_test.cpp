#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include "Program.h"
#include "ui/FailureLine.h"
#include "ui/RecordWindowController.h"

namespace tessary::test {
namespace {

constexpr const char* kLongText =
    "Another program is using the camera. Close that program, then choose the camera again.";

/// A live picture, and a folder for movies.
struct FailureLineTest : ::testing::Test {
  FailureLineTest()
      : program(Start{.prepare = [this](MemoryKeyValueStore& store) {
          const std::string path = folder.path().toStdString();
          store.values["imagePath"] = KeyValueStore::Bytes(path.begin(), path.end());
        }}) {}

  FailureListener& failures() { return gPreviewWindowController->failures(); }
  QLabel& line() { return *program.find<QLabel>("failureText"); }
  RecordWindowController& openRecordSheet() {
    click(program.button("Record Item Identifier"));
    EXPECT_TRUE(waitUntil([this] {
      auto* sheet = program.window().findChild<RecordWindowController*>();
      return sheet && hasKeyboard(*sheet);
    }));
    return *program.window().findChild<RecordWindowController*>();
  }

  QTemporaryDir folder;
  Program program;
};

TEST_F(FailureLineTest, SaysWhatIsWrongOverTheTopOfThePictureUntilItIsPutRight) {
  ASSERT_TRUE(program.waitForPicture());
  EXPECT_FALSE(line().isVisible());
  failures().failed(Failure::Camera, "The camera sends no picture.");
  EXPECT_TRUE(line().isVisible());
  EXPECT_EQ(line().text(), "The camera sends no picture.");
  EXPECT_EQ(line().geometry().topLeft(), QPoint(15, 10));
  EXPECT_EQ(line().styleSheet(), program.find<QLabel>("fpsText")->styleSheet());
  // White letters, seen on the screen.
  EXPECT_TRUE(waitUntil([this] {
    const QImage image = program.screenshot();
    int white = 0;
    for (int x = 15; x < 15 + line().width(); ++x)
      for (int y = 10; y < 10 + line().height(); ++y)
        white += image.pixelColor(x, y).lightness() > 240;
    return white > 50;
  }));
  failures().recovered(Failure::Camera);
  EXPECT_FALSE(line().isVisible());
}

TEST_F(FailureLineTest, ALongTextIsBrokenAndKeepsClearOfThePanSliders) {
  ASSERT_TRUE(program.waitForPicture());
  failures().failed(Failure::Camera, kLongText);
  EXPECT_LE(line().geometry().right(), program.container().width() - 180);
  EXPECT_GE(line().height(), 2 * line().fontMetrics().height());
  EXPECT_GE(line().height(), line().heightForWidth(line().width())) << "all of it can be read";
  program.window().resize(1100, 700);
  EXPECT_TRUE(waitUntil([this] { return line().height() < 2 * line().fontMetrics().height(); }));
}

TEST_F(FailureLineTest, TheMouseGoesThroughIt) {
  ASSERT_TRUE(program.waitForPicture());
  failures().failed(Failure::Camera, kLongText);
  click(program.button("Line Item Identifier"));
  const QPoint inside = line().geometry().center();
  drag(program.container(), inside, inside + QPoint(0, 200));
  EXPECT_TRUE(waitUntil([] {
    return gPreviewWindowController->getPreviewView().getCurrOperation() == 0;
  })) << "the line was made";
}

TEST_F(FailureLineTest, ASheetDoesNotCoverIt) {
  ASSERT_TRUE(program.waitForPicture());
  RecordWindowController& sheet = openRecordSheet();
  failures().failed(Failure::MovieNotSaved, kLongText);
  const QRect frame = sheet.frameGeometry();
  const QRect covered(program.container().mapFromGlobal(frame.topLeft()), frame.size());
  EXPECT_FALSE(line().geometry().intersects(covered));
  EXPECT_TRUE(program.container().rect().contains(line().geometry()));
  sheet.reject();
  EXPECT_TRUE(waitUntil([this] { return line().y() == 10; })) << "and goes back after it";
}

TEST_F(FailureLineTest, AMessageGoesByItself) {
  auto& timer = *line().findChild<QTimer*>();
  failures().failed(Failure::StillNotSaved, "The disk is full.");
  EXPECT_EQ(timer.interval(), 1000);
  timer.setInterval(0);
  EXPECT_TRUE(waitUntil([this] { return !line().isVisible(); }));
  EXPECT_FALSE(timer.isActive());
}

TEST_F(FailureLineTest, AHiddenWindowThatRecordedNothingSaysSoWhenItIsBack) {
  ASSERT_TRUE(program.waitForPicture());
  minimize(program.window());
  ASSERT_TRUE(waitUntil([] { return !gPreviewWindowController->wndExposed(); }));
  program.window().showNormal();
  ASSERT_TRUE(waitUntil([] { return gPreviewWindowController->wndExposed(); }));
  EXPECT_FALSE(line().isVisible()) << "nothing was being recorded";

  openRecordSheet();
  key("Return");  // Start
  auto& view = gPreviewWindowController->getPreviewView();
  ASSERT_TRUE(waitUntil([&] { return view.recordingStatus() == kRecordingRunning; }));
  minimize(program.window());
  ASSERT_TRUE(waitUntil([] { return !gPreviewWindowController->wndExposed(); }));
  program.window().showNormal();
  ASSERT_TRUE(waitUntil([] { return gPreviewWindowController->wndExposed(); }));
  EXPECT_TRUE(waitUntil([this] { return line().isVisible(); }));
  EXPECT_TRUE(line().text().startsWith("Nothing was recorded for "));
}

TEST_F(FailureLineTest, SettingsThatCantBeKeptAreToldUntilTheyAre) {
  program.store->tellProblem("The settings can't be kept: the disk is full.");
  EXPECT_TRUE(line().isVisible());
  EXPECT_EQ(line().text(), "The settings can't be kept: the disk is full.");
  program.store->tellProblem("");
  EXPECT_FALSE(line().isVisible());
}

TEST_F(FailureLineTest, AMicroscopeThatFallsSilentIsToldUntilItSendsAgain) {
  ASSERT_TRUE(program.waitForPicture());
  program.microscope->freeze(std::chrono::hours(1));
  EXPECT_TRUE(waitUntil([this] { return line().isVisible(); }));
  EXPECT_EQ(line().text(),
            "Simulated Microscope sends no pictures. Unplug it and plug it in again.");
  program.microscope->freeze(std::chrono::milliseconds(0));
  EXPECT_TRUE(waitUntil([this] { return !line().isVisible(); }));
}

}  // namespace
}  // namespace tessary::test
