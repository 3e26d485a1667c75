#include <tuple>

#include <QtGui/QScreen>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <gmock/gmock.h>

#include "DialogRig.h"
#include "ui/CalibrationWindowController.h"

namespace tessary::test {
namespace {

class CalibrationWindow : public DialogRig, public CalibrationDelegate {
 protected:
  void calibrationCompleted(int32_t slot, double length, int32_t unit) override {
    EXPECT_TRUE(dialog->isVisible()) << "told before the window closes";
    completed.emplace_back(slot, length, unit);
  }

  void show(int32_t slot = 2) {
    dialog = std::make_unique<CalibrationWindowController>(&window, preferences);
    dialog->setDelegate(this);
    dialog->setEditingItem(slot);
    dialog->setParentWindow(window);
    dialog->showWindow();
    waitForKeys(*dialog);
  }
  bool closed() {
    return waitUntil([&] { return !dialog->isVisible(); });
  }
  QLineEdit& lengthFld() { return find<QLineEdit>(*dialog, "lengthFld"); }
  QComboBox& unitFld() { return find<QComboBox>(*dialog, "unitFld"); }
  static QFrame* popover() { return qobject_cast<QFrame*>(QApplication::activePopupWidget()); }

  std::unique_ptr<CalibrationWindowController> dialog;
  std::vector<std::tuple<int32_t, double, int32_t>> completed;
};

using Completed = std::vector<std::tuple<int32_t, double, int32_t>>;

TEST_F(CalibrationWindow, TheTitleNamesTheSlotIfItHasAName) {
  preferences.calibrations[4].name = "4x & air";
  preferences.calibrations[4].unit = 1;
  show(4);
  EXPECT_EQ(dialog->windowTitle(), "Calibrate - 4x & air");
  EXPECT_EQ(unitFld().currentIndex(), 0) << "the slot's former unit does not come back";
  dialog->setEditingItem(5);
  EXPECT_EQ(dialog->windowTitle(), "Calibrate");
}

TEST_F(CalibrationWindow, OffersTwoUnitsAndAnEmptyLength) {
  show();
  ASSERT_EQ(unitFld().count(), 2);
  EXPECT_EQ(unitFld().itemText(0), "mm");
  EXPECT_EQ(unitFld().itemText(1), "μm");
  EXPECT_EQ(lengthFld().text(), "");
  EXPECT_TRUE(lengthFld().hasFocus());
}

TEST_F(CalibrationWindow, StandsBelowTheTitleOfTheWindow) {
  window.resize(801, 600);
  EXPECT_TRUE(waitUntil([&] { return window.frameGeometry().width() >= 801; }));
  const QRect frame = window.frameGeometry();
  dialog = std::make_unique<CalibrationWindowController>(&window, preferences);
  dialog->setParentWindow(window);
  EXPECT_EQ(dialog->y(), frame.y() + 77);
  EXPECT_EQ(dialog->x(), int(frame.x() + (frame.width() - dialog->width()) / 2.0));
}

TEST_F(CalibrationWindow, LogsTheResolutionOfTheScreen) {
  show();
  const QScreen* screen = dialog->screen();
  const int ppi = int(std::max(screen->physicalDotsPerInchX(), screen->physicalDotsPerInchY()));
  EXPECT_THAT(log.lines(), ::testing::Contains("Screen ppi is: " + std::to_string(ppi)));
}

TEST_F(CalibrationWindow, StaysAboveTheWindowThatCanBeUsedMeanwhile) {
  show();
  click(window, {20, 500});
  EXPECT_TRUE(waitUntil([&] { return hasKeyboard(window); }));
  EXPECT_EQ(QApplication::topLevelAt(dialog->geometry().center()), dialog.get());
}

TEST_F(CalibrationWindow, ReturnIsOk) {
  show(7);
  xdotool({"type", "0.25"});
  key("Return");
  EXPECT_TRUE(closed());
  EXPECT_EQ(completed, (Completed{{7, 0.25, 0}}));
  EXPECT_EQ(dialog->length(), 0.25);
  EXPECT_EQ(dialog->unit(), 0);
}

TEST_F(CalibrationWindow, TellsOnceHoweverOftenItsKeyComes) {
  for (const char* name : {"Return", "Escape"}) {
    completed.clear();
    show();
    xdotoolAtOnce({"key", name, name});
    EXPECT_TRUE(closed()) << name;
    goBack();
    EXPECT_EQ(completed, (Completed{{2, 0.0, 0}})) << name;
  }
}

TEST_F(CalibrationWindow, TheChosenUnitGoesAlong) {
  show();
  xdotool({"type", "500"});
  key("Tab");
  key("Down");
  EXPECT_TRUE(waitUntil([&] { return unitFld().view()->isVisible(); }));
  key("Down");
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return unitFld().currentIndex() == 1; }));
  click(button(*dialog, QDialogButtonBox::Ok));
  EXPECT_TRUE(closed());
  EXPECT_EQ(completed, (Completed{{2, 500.0, 1}}));
  EXPECT_EQ(dialog->unit(), 1);
}

TEST_F(CalibrationWindow, ADecimalCommaIsAPoint) {
  show();
  xdotool({"type", "0,5"});
  EXPECT_TRUE(waitUntil([&] { return lengthFld().text() == "0.5"; }));
  xdotool({"type", ",7"});
  EXPECT_TRUE(waitUntil([&] { return lengthFld().text() == "0.57"; })) << "a second one is refused";
  key("Return");
  EXPECT_TRUE(closed());
  EXPECT_EQ(completed, (Completed{{2, 0.57, 0}}));
}

TEST_F(CalibrationWindow, WhatIsNoLengthIsHandedOverAsNone) {
  struct Row {
    const char* typed;
    double length;
  };
  for (const Row& row : {Row{"abc", 0.0}, Row{"0", 0.0}, Row{"-2", -2.0}, Row{"", 0.0}}) {
    completed.clear();
    show();
    if (*row.typed) xdotool({"type", "--", row.typed});
    key("Return");
    EXPECT_TRUE(closed()) << row.typed;
    EXPECT_EQ(completed, (Completed{{2, row.length, 0}})) << row.typed;
    goBack();
  }
}

TEST_F(CalibrationWindow, CancelEscapeAndTheTitleBarCancel) {
  for (const char* how : {"click", "Escape", "alt+F4"}) {
    completed.clear();
    show();
    xdotool({"type", "0.25"});
    if (how == std::string("click"))
      click(button(*dialog, QDialogButtonBox::Cancel));
    else
      key(how);
    EXPECT_TRUE(closed()) << how;
    EXPECT_EQ(completed, (Completed{{2, 0.0, 0}})) << how;
    goBack();
  }
}

TEST_F(CalibrationWindow, ItsOwnerClosesItWithoutBeingTold) {
  show();
  dialog->done(0);
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_TRUE(completed.empty());
}

TEST_F(CalibrationWindow, HelpStandsBesideItsButtonUntilTheNextClick) {
  show();
  QPushButton& help = button(*dialog, QDialogButtonBox::Help);
  click(help);
  ASSERT_TRUE(waitUntil([&] { return popover() != nullptr; }));
  const QPoint corner = help.mapToGlobal(QPoint(0, 0));
  EXPECT_EQ(popover()->geometry().top(), corner.y() + help.height());
  EXPECT_FALSE(popover()->findChild<QLabel*>()->text().isEmpty());
  click(help);
  EXPECT_TRUE(waitUntil([&] { return popover() == nullptr; }));
  EXPECT_TRUE(dialog->isVisible());
  click(help);
  EXPECT_TRUE(waitUntil([&] { return popover() != nullptr; }));
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return popover() == nullptr; }));
  EXPECT_TRUE(dialog->isVisible()) << "Escape was for the help";
  EXPECT_TRUE(completed.empty());
}

TEST_F(CalibrationWindow, TheHelpKeyShowsItsHelp) {
  show();
  key("F1");
  EXPECT_TRUE(waitUntil([&] { return popover() != nullptr; }));
  EXPECT_TRUE(completed.empty());
}

TEST_F(CalibrationWindow, HelpStandsAboveItsButtonAtTheLowerEdgeOfTheScreen) {
  show();
  const QRect screen = dialog->screen()->availableGeometry();
  ASSERT_TRUE(waitUntil([&] { return dialog->frameGeometry().height() > dialog->height(); }));
  dialog->move(0, screen.bottom() - dialog->frameGeometry().height());
  EXPECT_TRUE(waitUntil([&] { return dialog->frameGeometry().bottom() > screen.bottom() - 10; }));
  QPushButton& help = button(*dialog, QDialogButtonBox::Help);
  click(help);
  ASSERT_TRUE(waitUntil([&] { return popover() != nullptr; }));
  EXPECT_EQ(popover()->geometry().bottom() + 1, help.mapToGlobal(QPoint(0, 0)).y());
  EXPECT_GE(popover()->geometry().left(), 0);
  key("Escape");
}

TEST_F(CalibrationWindow, TakesItsHelpAlong) {
  show();
  click(button(*dialog, QDialogButtonBox::Help));
  ASSERT_TRUE(waitUntil([&] { return popover() != nullptr; }));
  dialog.reset();
  EXPECT_EQ(popover(), nullptr);
}

}  // namespace
}  // namespace tessary::test
