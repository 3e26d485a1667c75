// The main window, its menus and what floats above it, by the keyboard alone.

#include <set>

#include <QtGui/QAction>
#include <QtGui/QScreen>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QToolButton>
#include <gtest/gtest.h>

#include "Program.h"
#include "base/Version.h"

namespace tessary::test {
namespace {

PreviewView& view() { return gPreviewWindowController->getPreviewView(); }

bool nothingShows() {
  for (const QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible()) return false;
  return true;
}

TEST(Keyboard, EscapeAndCtrlWCloseTheHelp) {
  Program program(Start{.plugged = false});
  for (const char* name : {"Escape", "ctrl+w"}) {
    QWidget* help = openByKey({"F1"}, "Help");
    ASSERT_TRUE(help);
    key(name);
    EXPECT_TRUE(waitUntil([&] { return !help->isVisible(); })) << name;
    ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
  }
}

TEST(Keyboard, CtrlWCancelsTheOptions) {
  Program program(Start{.plugged = false});
  QWidget* options = openByKey({"ctrl+comma"}, "Options");
  ASSERT_TRUE(options);
  options->findChild<QComboBox*>("textSizeFld")->setCurrentIndex(0);
  key("ctrl+w");
  EXPECT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
  EXPECT_EQ(gPreferences->textSize, 26);
}

TEST(Keyboard, CtrlQQuitsFromEveryWindow) {
  const struct {
    std::vector<const char*> keys;
    const char* title;
  } rows[] = {{{"F1"}, "Help"},
              {{"ctrl+comma"}, "Options"},
              {{"ctrl+comma", "space"}, "Grid colour"},
              {{"ctrl+m"}, "Microscope"},
              {{"ctrl+k"}, "Calibrations"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    Program program;
    ASSERT_TRUE(program.waitForPicture());
    ASSERT_TRUE(openByKey(row.keys, row.title));
    key("ctrl+q");
    EXPECT_TRUE(waitUntil(nothingShows));
  }
}

TEST(Keyboard, F10OpensTheFirstMenu) {
  Program program(Start{.plugged = false});
  key("F10");
  ASSERT_TRUE(waitUntil([] { return QApplication::activePopupWidget() != nullptr; }));
  EXPECT_EQ(QApplication::activePopupWidget(), program.window().menuBar()->actions()[0]->menu());
  key("Escape");
  EXPECT_TRUE(waitUntil([] { return QApplication::activePopupWidget() == nullptr; }));
}

TEST(Keyboard, EveryMenuItemHasALetterOfItsOwn) {
  Program program(Start{.plugged = false});
  const auto letter = [](const QAction& action) {
    const QString text = action.text();
    const qsizetype at = text.indexOf('&');
    return at < 0 || at + 1 == text.size() ? QString() : QString(text[at + 1]).toLower();
  };
  const auto expectLetters = [&](const QList<QAction*>& actions) {
    std::set<QString> letters;
    for (const QAction* action : actions) {
      if (action->isSeparator()) continue;
      EXPECT_NE(letter(*action), "") << action->text().toStdString();
      EXPECT_TRUE(letters.insert(letter(*action)).second) << action->text().toStdString();
    }
  };
  const auto menus = program.window().menuBar()->actions();
  expectLetters(menus);
  for (const QAction* menu : menus) expectLetters(menu->menu()->actions());
  EXPECT_EQ(menus[0]->menu()->actions()[2]->text(), "&Options...");
  EXPECT_EQ(menus[2]->menu()->actions()[7]->text(), "&Parallel Lines");
}

TEST(Keyboard, EveryCommandHasAKeyOfItsOwnThatIsNotThePictures) {
  Program program(Start{.plugged = false});
  std::set<QString> keys{"Space", "Del", "Backspace"};
  for (const QAction* action : program.window().menuBar()->findChildren<QAction*>())
    for (const QKeySequence& sequence : action->shortcuts())
      EXPECT_TRUE(keys.insert(sequence.toString()).second) << sequence.toString().toStdString();
  for (const CommandInfo& command : allCommands()) {
    if (command.command == Command::CameraControls || command.command == Command::Copy) {
      // In the menu alone.
      const int menu = command.command == Command::Copy ? 2 : 1;
      const auto inMenu = program.window().menuBar()->actions()[menu]->menu()->actions();
      const auto found =
          std::ranges::find(inMenu, QLatin1String(command.identifier),
                            [](const QAction* action) { return action->objectName(); });
      ASSERT_NE(found, inMenu.end());
      EXPECT_TRUE(keys.insert((*found)->shortcut().toString()).second);
      continue;
    }
    const auto* button = dynamic_cast<QToolButton*>(&program.button(command.identifier));
    ASSERT_TRUE(button);
    EXPECT_EQ(button->text(), command.label) << "the toolbar keeps its own words";
    EXPECT_TRUE(keys.insert(button->defaultAction()->shortcut().toString()).second)
        << command.label;
  }
}

TEST(Keyboard, TheDigitsPickTheToolsInTheToolbarsOrder) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const struct {
    const char* name;
    int32_t operation;
  } rows[] = {{"ctrl+4", kOprLine}, {"ctrl+5", kOprLine2}, {"ctrl+6", kOprCircle},
              {"ctrl+7", kOprRect}, {"ctrl+8", kOprAngle}, {"ctrl+9", kOprPencil},
              {"Escape", kOprDrag}};
  for (const auto& row : rows) {
    key(row.name);
    EXPECT_TRUE(waitUntil([&] { return view().getCurrOperation() == row.operation; })) << row.name;
  }
}

TEST(Keyboard, KeysAndWheelMoveTheZoomSliderByItsSteps) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  QSlider& slider = program.slider("zoomSlider");
  const auto zoomIs = [&](int step, const char* text) {
    return waitUntil([&] {
      return slider.value() == step && view().zoom() == step && program.text("zoomText") == text;
    });
  };
  key("ctrl+plus");
  EXPECT_TRUE(zoomIs(3, "125%"));
  key("ctrl+equal");
  EXPECT_TRUE(zoomIs(4, "150%"));
  EXPECT_TRUE(program.slider("horizontalSlider").isVisible()) << "all else goes along";
  key("ctrl+minus");
  EXPECT_TRUE(zoomIs(3, "125%"));
  key("ctrl+0");
  EXPECT_TRUE(zoomIs(2, "100%"));
  moveTo(program.container(), {200, 100});
  xdotool({"click", "--repeat", "2", "4"});  // forwards
  EXPECT_TRUE(zoomIs(4, "150%"));
  xdotool({"click", "--repeat", "3", "5"});
  EXPECT_TRUE(zoomIs(1, "75%"));
}

TEST(Keyboard, AZoomThatLeftItsKnobBehindIsTakenThereByTheKeysToo) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  program.slider("zoomSlider").setValue(4);
  view().setCalibration(50.0F, 0);
  ASSERT_EQ(view().zoom(), 2) << "below a knob that stands still";
  key("ctrl+plus");
  EXPECT_TRUE(waitUntil([&] { return view().zoom() == 4; }));
}

TEST(Keyboard, F11FillsTheScreenAndGoesBack) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const QSize before = program.container().size();
  key("F11");
  EXPECT_TRUE(
      waitUntil([&] { return program.window().size() == program.window().screen()->size(); }));
  key("F11");
  EXPECT_TRUE(waitUntil([&] { return program.container().size() == before; }));
}

TEST(Keyboard, TheColourDialogSaysWhichColour) {
  Program program(Start{.plugged = false});
  ASSERT_TRUE(openByKey({"ctrl+comma"}, "Options"));
  for (const char* title : {"Grid colour", "Line colour", "Text colour"}) {
    EXPECT_TRUE(openByKey({"space"}, title));
    key("Escape");
    ASSERT_TRUE(
        waitUntil([] { return QApplication::activeWindow() == gOptionsWindowController.get(); }));
    key("Tab");
  }
}

TEST(Keyboard, ReturnOnAColourIsStillOk) {
  Program program(Start{.plugged = false});
  ASSERT_TRUE(openByKey({"ctrl+comma"}, "Options"));
  key("Return");
  EXPECT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
}

TEST(Keyboard, AboutTellsTheVersionAndCtrlQQuitsFromItToo) {
  Program program(Start{.plugged = false});
  ASSERT_TRUE(openMenu("t"));
  key("a");
  const auto* about = dynamic_cast<QMessageBox*>(waitForWindow("About Tessary"));
  ASSERT_TRUE(about);
  EXPECT_TRUE(about->text().contains(QString::fromStdString(std::string(version()))));
  key("ctrl+q");
  EXPECT_TRUE(waitUntil(nothingShows));
}

}  // namespace
}  // namespace tessary::test
