// The Tab key's way through each dialog, from the control that has the keyboard first.

#include <QtWidgets/QAbstractButton>
#include <gtest/gtest.h>

#include "Program.h"

namespace tessary::test {
namespace {

/// A control by its name, or by its text where it has none: a button of a button box.
std::string nameOf(const QWidget* control) {
  if (!control) return "none";
  if (!control->objectName().isEmpty()) return control->objectName().toStdString();
  const auto* button = qobject_cast<const QAbstractButton*>(control);
  return button ? button->text().remove('&').toStdString() : control->metaObject()->className();
}

TEST(TabOrder, FollowsTheEye) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  gPreferences->url = "/tmp";
  const struct {
    std::vector<const char*> keys;
    const char* title;
    std::vector<std::string> order;
  } rows[] = {
      {{"ctrl+m"}, "Microscope", {"microscopeFld", "resolutionFld", "OK", "Cancel"}},
      {{"ctrl+comma"},
       "Options",
       {"gridColorFld", "lineColorFld", "textColorFld", "textSizeFld", "folderFld",
        "photoFormatFld", "OK", "Cancel"}},
      {{"ctrl+t"}, "Text", {"textFld", "OK", "Cancel"}},
      {{"ctrl+r"}, "Record", {"limitFld", "startBtn", "closeBtn"}},
      {{"ctrl+k"},
       "Calibrations",
       {"calibrations", "renameBtn", "deleteBtn", "calibrateBtn", "applyBtn", "closeBtn"}},
      {{"ctrl+k", "alt+b"}, "Calibrate", {"lengthFld", "unitFld", "OK", "Cancel", "Help"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    QWidget* window = openByKey(row.keys, row.title);
    ASSERT_TRUE(window && waitUntil([] { return QApplication::focusWidget() != nullptr; }));
    std::vector<std::string> order{nameOf(QApplication::focusWidget())};
    for (size_t i = 0; i < row.order.size(); ++i) {
      const QWidget* before = QApplication::focusWidget();
      key("Tab");
      ASSERT_TRUE(waitUntil([&] { return QApplication::focusWidget() != before; }));
      order.push_back(nameOf(QApplication::focusWidget()));
    }
    std::vector<std::string> around = row.order;
    around.push_back(row.order.front());
    EXPECT_EQ(order, around);
    window->close();
    ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
  }
}

}  // namespace
}  // namespace tessary::test
