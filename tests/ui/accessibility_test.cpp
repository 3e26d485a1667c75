#include <QtCore/QTemporaryDir>
#include <QtGui/QAccessible>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Program.h"
#include "settings/Preferences.h"

namespace tessary::test {
namespace {

/// What a screen reader could say nothing about: controls that the Tab key reaches, without a name.
std::vector<std::string> namelessControls(QWidget& window) {
  std::vector<std::string> nameless;
  for (QWidget* control : window.findChildren<QWidget*>()) {
    if (!(control->focusPolicy() & Qt::TabFocus) || !control->isVisible()) continue;
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(control);
    if (!interface || interface->text(QAccessible::Name).isEmpty())
      nameless.push_back(control->metaObject()->className() +
                         control->objectName().prepend(' ').toStdString());
  }
  return nameless;
}

TEST(Accessibility, EveryControlHasAName) {
  QTemporaryDir folder;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  gPreferences->url = folder.path().toStdString();
  EXPECT_THAT(namelessControls(program.window()), ::testing::IsEmpty());
  for (QAction* action : program.find<QToolBar>("TessaryToolbar")->actions()) {
    if (action->objectName().isEmpty()) continue;
    QWidget& button = program.button(action->objectName().toLatin1());
    EXPECT_NE(QAccessible::queryAccessibleInterface(&button)->text(QAccessible::Name), "");
  }
  // Ctrl+K and then Alt+B: the calibration window by way of its list.
  const struct {
    std::vector<const char*> keys;
    const char* title;
  } windows[] = {{{"ctrl+m"}, "Microscope"},
                 {{"ctrl+comma"}, "Options"},
                 {{"ctrl+t"}, "Text"},
                 {{"ctrl+r"}, "Record"},
                 {{"ctrl+k"}, "Calibrations"},
                 {{"ctrl+k", "alt+b"}, "Calibrate"},
                 {{"F1"}, "Help"}};
  for (const auto& [keys, title] : windows) {
    SCOPED_TRACE(title);
    QWidget* window = openByKey(keys, title);
    ASSERT_TRUE(window);
    EXPECT_THAT(namelessControls(*window), ::testing::IsEmpty());
    window->close();
    ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
  }
}

}  // namespace
}  // namespace tessary::test
