#include <cstdlib>
#include <optional>
#include <utility>

#include <QtCore/QScopeGuard>
#include <QtGui/QAccessible>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolTip>

#include "DialogRig.h"
#include "overlay/Calibration.h"
#include "ui/CalibrationListWindowController.h"

namespace tessary::test {
namespace {

class CalibrationList : public DialogRig, public CalibrationListDelegate {
 protected:
  CalibrationList() {
    preferences.calibrations[0] = {.name = "lens",
                                   .pixels = 853,
                                   .length = 0.5,
                                   .resolution = 47187200,
                                   .date = 20250115,
                                   .ppu = 1706.0};
    preferences.calibrations[3] = {.name = "4x", .unit = 1, .ppu = 0.4};
    preferences.calibrations[9].name = "last";
  }

  void calibrationListCompleted(int32_t slot, bool calibrateOrApply) override {
    EXPECT_TRUE(dialog->isVisible()) << "told before the sheet ends";
    completed.emplace_back(slot, calibrateOrApply);
  }

  void show(int32_t row) {
    dialog = std::make_unique<CalibrationListWindowController>(&window, preferences,
                                                               [this] { return inForce(); });
    dialog->setDelegate(this);
    dialog->setEditingItem(row);
    open(*dialog);
  }

  QTableView& table() { return find<QTableView>(*dialog, "calibrations"); }
  QPushButton& push(const char* name) { return find<QPushButton>(*dialog, name); }
  QString cell(int row, int column) {
    return table().model()->index(row, column).data().toString();
  }
  QStringList cells(int row) {
    QStringList texts;
    for (int column = 0; column < table().model()->columnCount(); ++column)
      texts << cell(row, column);
    return texts;
  }
  QPoint cellCentre(int row, int column) {
    return table().visualRect(table().model()->index(row, column)).center();
  }
  void clickCell(int row, int column) { click(*table().viewport(), cellCentre(row, column)); }
  QLineEdit* nameField() { return table().viewport()->findChild<QLineEdit*>(); }
  bool waitForNameField() {
    return waitUntil([&] { return nameField() && nameField()->hasFocus(); });
  }
  void startRename(int row) {
    show(row);
    click(push("renameBtn"));
    ASSERT_TRUE(waitForNameField());
  }
  bool ended() {
    return waitUntil([&] { return ends == 1; });
  }
  const std::string& slotName(int row) { return preferences.calibrations[size_t(row)].name; }
  /// Takes the selection away, which a click can't.
  void selectNone() {
    table().clearSelection();
    EXPECT_EQ(dialog->editingItem(), -1);
  }

  std::optional<int32_t> inForce() const {
    return preferences.slotInForce(calibration._pixelsPerUnit, calibration._unit);
  }
  /// The rows that are marked as in force, each with what a screen reader reads out.
  QStringList marked() {
    QStringList rows;
    for (int row = 0; row < table().model()->rowCount(); ++row) {
      const QModelIndex first = table().model()->index(row, 0);
      EXPECT_EQ(first.data(Qt::DecorationRole).isNull(),
                first.data(Qt::AccessibleTextRole).isNull());
      if (!first.data(Qt::DecorationRole).isNull())
        rows << first.data(Qt::AccessibleTextRole).toString();
    }
    return rows;
  }

  Calibration calibration;
  std::unique_ptr<CalibrationListWindowController> dialog;
  std::vector<std::pair<int32_t, bool>> completed;
};

using Completed = std::vector<std::pair<int32_t, bool>>;

TEST_F(CalibrationList, ShowsTenSlots) {
  show(0);
  ASSERT_EQ(table().model()->rowCount(), 10);
  EXPECT_EQ(cells(0), QStringList({"1", "lens", "1706.00", "mm", "01/15/2025", "1280x720"}));
  EXPECT_EQ(cells(1), QStringList({"2", "", "", "", "", ""}));
  EXPECT_EQ(cells(3), QStringList({"4", "4x", "0.40", "μm", "", ""}));
  EXPECT_EQ(cells(9), QStringList({"10", "last", "", "", "", ""}));
  EXPECT_FALSE(table().verticalScrollBar()->isVisible()) << "all ten at once";
}

TEST_F(CalibrationList, TheSlotInForceIsMarkedAndItsTextsStay) {
  preferences.calibration = 3;
  show(0);
  EXPECT_EQ(marked(), QStringList()) << "none is in force";
  dialog->close();
  calibration.setCalibration(0.4F, kUnitMicrometre);
  show(0);
  EXPECT_EQ(marked(), QStringList("4, in force"));
  EXPECT_EQ(cells(3), QStringList({"4", "4x", "0.40", "μm", "", ""}));
  const QModelIndex first = table().model()->index(3, 0);
  EXPECT_EQ(first.data(Qt::ToolTipRole).toString(), "In force");
  EXPECT_FALSE(first.flags() & Qt::ItemIsEditable);
  EXPECT_EQ(table().selectionModel()->selectedRows().front().row(), 0) << "as it was opened";
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&table())->tableInterface()->cellAt(3, 0)->text(
                QAccessible::Name),
            "4, in force");
  // Beside the number there is something to be seen, also where the row is selected.
  const QRect cell = table().visualRect(first);
  const auto isMarked = [&](int row) {
    const QRect place = cell.translated(0, cell.height() * (row - 3)).adjusted(3, 3, 0, -3);
    const QImage image = table().viewport()->grab(place).toImage();
    const int background = qGray(image.pixel(0, 0));
    for (int x = 0; x < image.width() / 2; ++x)
      for (int y = 0; y < image.height(); ++y)
        if (std::abs(qGray(image.pixel(x, y)) - background) > 100) return true;
    return false;
  };
  EXPECT_TRUE(isMarked(3));
  EXPECT_FALSE(isMarked(0));
  EXPECT_FALSE(isMarked(5));
  dialog->setEditingItem(3);
  EXPECT_TRUE(isMarked(3));
}

TEST_F(CalibrationList, ADeletedSlotIsNotInForceAnyMoreAndNoOtherIs) {
  preferences.calibration = 0;
  calibration.setCalibration(1706.0F, kUnitMillimetre);
  show(0);
  EXPECT_EQ(marked(), QStringList("1, in force"));
  click(push("deleteBtn"));
  EXPECT_TRUE(waitUntil([&] { return marked().isEmpty(); }));
}

TEST_F(CalibrationList, WhileANameIsTypedItsDangerousSignsAreToldOf) {
  startRename(1);
  const auto tip = [] { return QToolTip::isVisible() ? QToolTip::text() : QString(); };
  const char* const kWords = "lost at the next launch";
  xdotool({"type", "4x"});
  EXPECT_TRUE(waitUntil([&] { return nameField()->text() == "4x"; }));
  EXPECT_EQ(tip(), "");
  for (const char* sign : {"comma", "semicolon"}) {
    key(sign);
    EXPECT_TRUE(waitUntil([&] { return tip().contains(kWords); })) << sign;
    EXPECT_TRUE(nameField()->accessibleDescription().contains(kWords));
    key("a");
    EXPECT_TRUE(tip().contains(kWords)) << "as long as it is there";
    key("BackSpace");
    key("BackSpace");
    EXPECT_TRUE(waitUntil([&] { return tip().isEmpty(); })) << sign;
  }
  xdotool({"type", ",b"});
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return slotName(1) == "4x,b"; })) << "it is taken as it is told";
}

TEST_F(CalibrationList, OpensOnTheGivenRow) {
  struct Row {
    int32_t given;
    int selected;
  };
  for (const Row& row : {Row{0, 0}, Row{9, 9}, Row{10, -1}, Row{-1, -1}}) {
    CalibrationListWindowController list(&window, preferences, [] { return kUncalibrated; });
    list.setEditingItem(row.given);
    const auto rows = list.findChild<QTableView*>()->selectionModel()->selectedRows();
    EXPECT_EQ(rows.isEmpty() ? -1 : rows.front().row(), row.selected) << row.given;
    EXPECT_EQ(list.editingItem(), row.given);
  }
}

TEST_F(CalibrationList, F2RenamesFromEveryCellOfTheRow) {
  for (const int column : {0, 1, 4}) {
    SCOPED_TRACE(column);
    show(0);
    clickCell(3, column);
    ASSERT_TRUE(waitUntil([&] { return table().currentIndex().column() == column; }));
    key("F2");
    ASSERT_TRUE(waitForNameField());
    EXPECT_EQ(nameField()->text(), "4x");
    key("Escape");
    ASSERT_TRUE(waitUntil([&] { return !nameField(); }));
    dialog->close();
  }
}

TEST_F(CalibrationList, ALetterDoesNotChangeWhatReturnApplies) {
  show(3);
  table().setCurrentIndex(table().model()->index(3, 1));
  xdotool({"type", "la"});  // "lens" and "last" begin so
  key("Return");
  EXPECT_TRUE(ended());
  EXPECT_EQ(completed, Completed({{3, false}}));
}

TEST_F(CalibrationList, TheRowInWorkFollowsTheSelection) {
  show(0);
  clickCell(4, 2);
  EXPECT_TRUE(waitUntil([&] { return dialog->editingItem() == 4; }));
  key("Down");
  EXPECT_TRUE(waitUntil([&] { return dialog->editingItem() == 5; }));
}

TEST_F(CalibrationList, RenameAmendsTheNameAndSaves) {
  startRename(0);
  EXPECT_FALSE(nameField()->hasSelectedText());
  xdotool({"type", " 2"});
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return slotName(0) == "lens 2"; }));
  EXPECT_EQ(saves(), 1);
  EXPECT_EQ(cell(0, 1), "lens 2");
  EXPECT_EQ(ends, 0) << "Return belongs to the field";
  EXPECT_TRUE(completed.empty());
}

TEST_F(CalibrationList, ADoubleClickRenamesInTheNameColumnOnly) {
  show(0);
  // A hand is quicker than a busy machine.
  const auto restore = qScopeGuard([interval = QApplication::doubleClickInterval()] {
    QApplication::setDoubleClickInterval(interval);
  });
  QApplication::setDoubleClickInterval(60'000);
  const auto doubleClick = [&](int row, int column) {
    moveTo(*table().viewport(), cellCentre(row, column));
    for (int i = 0; i < 2; ++i) {
      press();
      release();
    }
  };
  for (const int column : {0, 2, 3, 4, 5}) {
    doubleClick(3, column);
    EXPECT_TRUE(waitUntil([&] { return dialog->editingItem() == 3; }));
    EXPECT_FALSE(nameField()) << column;
  }
  doubleClick(5, 1);
  ASSERT_TRUE(waitForNameField());
  xdotool({"type", "new"});
  key("Tab");
  EXPECT_TRUE(waitUntil([&] { return slotName(5) == "new"; }));
}

TEST_F(CalibrationList, ANameIsTakenAsItIsTyped) {
  startRename(1);
  xdotool({"type", "a,b;c"});
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return slotName(1) == "a,b;c"; }));
}

TEST_F(CalibrationList, EscapeInTheFieldKeepsTheNameAndTheSheet) {
  startRename(0);
  xdotool({"type", "x"});
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return !nameField(); }));
  EXPECT_EQ(slotName(0), "lens");
  EXPECT_EQ(saves(), 0);
  EXPECT_EQ(ends, 0);
}

TEST_F(CalibrationList, AClickOnAnotherRowTakesTheNameForItsOwn) {
  startRename(0);
  xdotool({"type", "x"});
  clickCell(6, 1);
  EXPECT_TRUE(waitUntil([&] { return dialog->editingItem() == 6; }));
  EXPECT_EQ(slotName(0), "lensx");
  EXPECT_EQ(slotName(6), "");
}

TEST_F(CalibrationList, ClosingTakesTheNameThatIsBeingTyped) {
  // By its key a button is pressed without taking the focus away from the field.
  for (const char* how : {"alt+c", "alt+a", "alt+b", "alt+F4"}) {
    ends = 0;
    preferences.calibrations[0].name = "";
    startRename(0);
    xdotool({"type", "typed"});
    key(how);
    EXPECT_TRUE(ended()) << how;
    EXPECT_EQ(slotName(0), "typed") << how;
    goBack();
  }
}

TEST_F(CalibrationList, RenameWithoutASelectionDoesNothing) {
  show(0);
  selectNone();
  click(push("renameBtn"));
  EXPECT_FALSE(nameField());
  EXPECT_EQ(ends, 0);
}

TEST_F(CalibrationList, DeleteEmptiesTheSlotAndLeavesTheSheetOpen) {
  preferences.calibration = 0;
  show(0);
  click(push("deleteBtn"));
  EXPECT_TRUE(waitUntil([&] { return saves() == 1; }));
  EXPECT_EQ(preferences.calibrations[0], CalibrationRecord());
  EXPECT_EQ(cells(0), QStringList({"1", "", "", "", "", ""}));
  EXPECT_EQ(preferences.calibration, 0);
  EXPECT_EQ(dialog->editingItem(), 0);
  EXPECT_EQ(ends, 0);
  EXPECT_TRUE(completed.empty());
}

TEST_F(CalibrationList, DeletingTheSlotThatIsBeingRenamedEmptiesIt) {
  startRename(0);
  xdotool({"type", "x"});
  key("alt+d");
  EXPECT_TRUE(waitUntil([&] { return preferences.calibrations[0] == CalibrationRecord(); }));
  EXPECT_TRUE(waitUntil([&] { return !nameField(); }));
  EXPECT_EQ(slotName(0), "") << "the name did not come back with the end of its field";
}

TEST_F(CalibrationList, DeleteWithoutASelectionDoesNothing) {
  show(0);
  selectNone();
  click(push("deleteBtn"));
  EXPECT_EQ(saves(), 0);
  EXPECT_EQ(slotName(0), "lens");
  EXPECT_EQ(ends, 0);
}

TEST_F(CalibrationList, CalibrateHandsOverTheSelectedRow) {
  show(0);
  clickCell(3, 0);
  click(push("calibrateBtn"));
  EXPECT_TRUE(ended());
  EXPECT_EQ(returnCode, 0);
  EXPECT_EQ(completed, (Completed{{3, true}}));
  EXPECT_EQ(dialog->editingItem(), 3);
}

TEST_F(CalibrationList, ApplyHandsOverTheSelectedRow) {
  show(9);
  click(push("applyBtn"));
  EXPECT_TRUE(ended());
  EXPECT_EQ(returnCode, 0);
  EXPECT_EQ(completed, (Completed{{9, false}}));
}

TEST_F(CalibrationList, ReturnIsApply) {
  show(3);
  key("Return");
  EXPECT_TRUE(ended());
  EXPECT_EQ(completed, (Completed{{3, false}}));
}

TEST_F(CalibrationList, WhatComesAfterItsEndDoesNothing) {
  show(0);
  xdotoolAtOnce({"key", "alt+c", "alt+d", "alt+a"});
  EXPECT_TRUE(ended());
  goBack();
  EXPECT_EQ(slotName(0), "lens");
  EXPECT_EQ(saves(), 0);
  EXPECT_TRUE(completed.empty());
  EXPECT_EQ(ends, 1);
}

TEST_F(CalibrationList, WithoutASelectionNoSlotIsHandedOverAndTheSheetEnds) {
  for (const char* name : {"calibrateBtn", "applyBtn"}) {
    ends = 0;
    completed.clear();
    show(0);
    selectNone();
    click(push(name));
    EXPECT_TRUE(ended()) << name;
    EXPECT_EQ(returnCode, 0);
    ASSERT_EQ(completed.size(), 1U);
    EXPECT_EQ(completed[0].first, -1) << name;
    goBack();
  }
}

TEST_F(CalibrationList, CloseEscapeAndTheTitleBarTellNobody) {
  for (const char* how : {"alt+c", "Escape", "alt+F4"}) {
    ends = 0;
    show(3);
    key(how);
    EXPECT_TRUE(ended()) << how;
    EXPECT_EQ(returnCode, 0) << how;
    EXPECT_EQ(dialog->editingItem(), -1) << how;
    EXPECT_TRUE(completed.empty()) << how;
    EXPECT_EQ(saves(), 0) << how;
    goBack();
  }
}

}  // namespace
}  // namespace tessary::test
