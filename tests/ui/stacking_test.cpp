// What lies above what: with a window manager, as the display's own stacking says.

#include <functional>

#include <QtCore/QTemporaryDir>
#include <QtGui/QWindow>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>
#include <gtest/gtest.h>

#include "Program.h"

namespace tessary::test {
namespace {

/// Whether the display has `window` on top at all four corners and in the middle.
::testing::AssertionResult isOnTop(const QWidget& window) {
  const auto place = placeOnDisplay(window);
  if (!place) return ::testing::AssertionFailure() << "it does not show";
  const QRect area = place->adjusted(5, 5, -5, -5);
  for (const QPoint point :
       {area.topLeft(), area.topRight(), area.bottomLeft(), area.bottomRight(), area.center()}) {
    const QWidget* top = QApplication::topLevelAt(point);
    if (top == &window) continue;
    return ::testing::AssertionFailure() << (top ? top->metaObject()->className() : "nothing")
                                         << " is at (" << point.x() << ", " << point.y() << ")";
  }
  return ::testing::AssertionSuccess();
}

QWidget* modal() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isModal() && widget->isVisible()) return widget;
  return nullptr;
}

/// Centred over the main window: there every dialog opens.
bool putOver(QWidget& floating, Program& program) {
  const QRect over(program.window().geometry().center() - QPoint(260, 200), QSize(520, 400));
  floating.setGeometry(over);
  return waitUntil([&] { return bool(isOnTop(floating)); });
}

struct Opening {
  const char* what;
  std::function<void(Program&)> open;
};
void about(Program&) {
  ASSERT_TRUE(openMenu("t"));
  key("Return");
}
const Opening kAlways[] = {
    {"about", about},
    {"folder alert", [](Program& program) { click(program.button("Folder Item Identifier")); }},
    {"folder chooser", [](Program&) { key("space"); }},
    {"microscopes", [](Program&) { key("ctrl+m"); }},
};
const Opening kTools[] = {
    {"text", [](Program&) { key("ctrl+t"); }},
    {"calibrations", [](Program&) { key("ctrl+k"); }},
    {"record",
     [](Program&) {
       gPreferences->url = QDir::tempPath().toStdString();
       key("ctrl+r");
     }},
};

/// Back to the main window, by hand: a click beside what floats.
void goBack(Program& program) {
  click(program.container(), {10, program.container().height() - 60});
  ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
}

void expectOnTop(Program& program, QWidget& floating, std::span<const Opening> openings) {
  for (const Opening& opening : openings) {
    SCOPED_TRACE(opening.what);
    ASSERT_NO_FATAL_FAILURE(goBack(program));
    ASSERT_TRUE(waitUntil([&] { return bool(isOnTop(floating)); })) << "it floats";
    ASSERT_NO_FATAL_FAILURE(opening.open(program));
    ASSERT_TRUE(waitUntil([] { return modal() != nullptr; }));
    EXPECT_TRUE(waitUntil([] { return hasKeyboard(*modal()); }, std::chrono::seconds(5)));
    EXPECT_TRUE(waitUntil([] { return bool(isOnTop(*modal())); }, std::chrono::seconds(5)))
        << isOnTop(*modal()).message();
    modal()->close();
    ASSERT_TRUE(waitUntil([] { return modal() == nullptr; }));
  }
}

TEST(Stacking, HelpAndOptionsStayAboveTheMainWindowInUse) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.window().showMaximized();
  ASSERT_TRUE(waitUntil([&] { return program.container().height() > 700; }));
  const struct {
    const char* key;
    std::function<QWidget*()> window;
  } floating[] = {{"F1", [] { return gCalibrationHelpWindowController.get(); }},
                  {"ctrl+comma", [] { return gOptionsWindowController.get(); }}};
  for (const auto& each : floating) {
    SCOPED_TRACE(each.key);
    key(each.key);
    ASSERT_TRUE(waitUntil([&] { return each.window() && hasKeyboard(*each.window()); }));
    QWidget& window = *each.window();
    if (isWayland()) {
      EXPECT_EQ(window.windowHandle()->transientParent(), program.window().windowHandle());
    }
    waitForPlace(window);
    // Beside what floats, wherever that was put.
    const QRect over = placeOnDisplay(window).value().adjusted(-60, -60, 60, 60);
    const QWidget& picture = program.container();
    for (const QPoint place :
         {QPoint(60, 60), QPoint(picture.width() - 60, 60), QPoint(60, picture.height() - 60)}) {
      if (over.contains(onDisplay(picture, place))) continue;
      click(picture, place);
      break;
    }
    if (isWayland()) {
      // The test's compositor leaves the keyboard with the window on top.
      EXPECT_TRUE(waitUntil([&] { return placeOnDisplay(window).has_value(); }));
    } else {
      ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
      EXPECT_TRUE(isOnTop(window));
    }
    window.close();
    ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
  }
}

TEST(Stacking, NothingModalOpensBelowTheHelp) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  key("F1");
  ASSERT_TRUE(waitUntil([] {
    return gCalibrationHelpWindowController && hasKeyboard(*gCalibrationHelpWindowController);
  }));
  ASSERT_TRUE(putOver(*gCalibrationHelpWindowController, program));
  expectOnTop(program, *gCalibrationHelpWindowController, kAlways);
  expectOnTop(program, *gCalibrationHelpWindowController, kTools);
}

TEST(Stacking, NothingModalOpensBelowTheOptions) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  key("ctrl+comma");
  ASSERT_TRUE(
      waitUntil([] { return gOptionsWindowController && hasKeyboard(*gOptionsWindowController); }));
  ASSERT_TRUE(putOver(*gOptionsWindowController, program));
  expectOnTop(program, *gOptionsWindowController, kAlways);
  expectOnTop(program, *gOptionsWindowController, kTools);
}

TEST(Stacking, NothingModalOpensBelowTheCalibrationWindow) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  key("ctrl+k");
  ASSERT_TRUE(waitUntil([] { return modal() && hasKeyboard(*modal()); }));
  key("alt+b");
  const auto window = [&] { return program.window().findChild<CalibrationWindowController*>(); };
  ASSERT_TRUE(waitUntil([&] { return window() && hasKeyboard(*window()); }));
  ASSERT_TRUE(putOver(*window(), program));
  expectOnTop(program, *window(), kAlways);
}

TEST(Stacking, TheOptionsOwnFolderChooserOpensAboveThemAndTheHelp) {
  Program program(Start{.plugged = false});
  key("F1");
  ASSERT_TRUE(waitUntil([] {
    return gCalibrationHelpWindowController && hasKeyboard(*gCalibrationHelpWindowController);
  }));
  ASSERT_NO_FATAL_FAILURE(goBack(program));
  key("ctrl+comma");
  ASSERT_TRUE(
      waitUntil([] { return gOptionsWindowController && hasKeyboard(*gOptionsWindowController); }));
  click(*gOptionsWindowController->findChild<QWidget*>("folderFld"));
  ASSERT_TRUE(waitUntil([] { return modal() && hasKeyboard(*modal()); }));
  EXPECT_TRUE(waitUntil([] { return bool(isOnTop(*modal())); }));
  key("Escape");
  ASSERT_TRUE(waitUntil([] { return modal() == nullptr; }));
  click(program.container(), {10, program.container().height() - 60});
  for (QWidget* floating : std::initializer_list<QWidget*>{gOptionsWindowController.get(),
                                                           gCalibrationHelpWindowController.get()})
    EXPECT_TRUE(waitUntil([&] {
      return QApplication::topLevelAt(floating->frameGeometry().bottomLeft() + QPoint(20, -20)) !=
             &program.window();
    })) << "both float again";
}

}  // namespace
}  // namespace tessary::test
