#include <algorithm>

#include <QtCore/QElapsedTimer>
#include <QtGui/QClipboard>
#include <QtWidgets/QLineEdit>

#include "DialogRig.h"
#include "ui/FileSavedWindowController.h"
#include "ui/InputTextWindowController.h"

namespace tessary::test {
namespace {

class InputTextWindow : public DialogRig {
 protected:
  InputTextWindow() { open(dialog); }
  InputTextWindowController dialog{&window};
};

TEST_F(InputTextWindow, StartsEmptyWithTheCaretInTheField) {
  EXPECT_EQ(dialog.getInputText(), "");
  EXPECT_TRUE(find<QLineEdit>(dialog, "textFld").hasFocus());
}

TEST_F(InputTextWindow, ReturnIsOkAndABlankIsText) {
  xdotool({"type", "a b"});
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
  EXPECT_EQ(dialog.getInputText(), "a b");
}

TEST_F(InputTextWindow, OkTakesAnEmptyTextToo) {
  click(button(dialog, QDialogButtonBox::Ok));
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
  EXPECT_EQ(dialog.getInputText(), "");
}

TEST_F(InputTextWindow, CancelEndsWith0) {
  xdotool({"type", "x"});
  click(button(dialog, QDialogButtonBox::Cancel));
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 0);
}

TEST_F(InputTextWindow, EscapeIsCancel) {
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 0);
}

TEST_F(InputTextWindow, TheTitleBarIsCancel) {
  key("alt+F4");
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 0);
}

TEST_F(InputTextWindow, APastedTextIsOneLine) {
  QGuiApplication::clipboard()->setText(QStringLiteral("über\nunter 5 μm"));
  key("ctrl+v");
  EXPECT_TRUE(waitUntil([&] { return dialog.getInputText() == "über unter 5 μm"; }));
}

class FileSavedWindow : public DialogRig {
 protected:
  /// What the main window does after each still.
  void showFileSavedWindow(const char* name) {
    notice.setParentWindow(window);
    notice.setFileName(QString::fromLatin1(name));
    notice.showWindow();
  }
  QString name() { return find<QLabel>(notice, "fileNameFld").text(); }
  int below() { return notice.frameGeometry().top() - window.frameGeometry().top(); }

  FileSavedWindowController notice{&window};
};

TEST_F(FileSavedWindow, NamesTheFileAndLeavesTheFocusWhereItIs) {
  showFileSavedWindow("2025-01-15.jpg");
  EXPECT_TRUE(waitUntil([&] { return notice.isVisible(); }));
  EXPECT_EQ(name(), "2025-01-15.jpg");
  hurry(notice);
  EXPECT_TRUE(waitUntil([&] { return !notice.isVisible() || notice.isActiveWindow(); }));
  EXPECT_FALSE(notice.isActiveWindow());
  EXPECT_TRUE(window.isActiveWindow());
}

TEST_F(FileSavedWindow, IsCentred67BelowTheTopOfTheWindowAsItIsNow) {
  showFileSavedWindow("a.jpg");
  const auto left = [&] {
    return window.frameGeometry().x() + (window.frameGeometry().width() - notice.width()) / 2.0;
  };
  EXPECT_TRUE(waitUntil([&] { return below() == 67; }));
  EXPECT_EQ(notice.x(), int(left()));
  const QPoint before = window.pos();
  window.move(before + QPoint(61, 40));
  EXPECT_TRUE(waitUntil([&] { return window.pos() == before + QPoint(61, 40); }));
  showFileSavedWindow("a name that is a good deal longer than any that a clock could give.jpg");
  EXPECT_TRUE(waitUntil([&] { return below() == 67; }));
  EXPECT_EQ(notice.x(), int(left()));
}

TEST_F(FileSavedWindow, StaysFor38TenthsOfASecond) {
  QElapsedTimer shown;
  shown.start();
  showFileSavedWindow("a.jpg");
  EXPECT_TRUE(waitUntil([&] { return !notice.isVisible(); }));
  // A late tick and the next, on time, may both count what was missed: less than one too many.
  EXPECT_GE(shown.elapsed(), 3700);
  EXPECT_FALSE(notice.findChild<QTimer*>()->isActive());
}

TEST_F(FileSavedWindow, ASecondNameHasItsFullTime) {
  showFileSavedWindow("first.jpg");
  auto* timer = notice.findChild<QTimer*>();
  int ticks = 0;
  QObject::connect(timer, &QTimer::timeout, &notice, [&] {
    if (++ticks == 37) timer->stop();  // while the test looks
  });
  hurry(notice);
  ASSERT_TRUE(waitUntil([&] { return !timer->isActive(); }));
  ASSERT_TRUE(notice.isVisible()) << "one tick before its end";
  timer->start(0);
  showFileSavedWindow("second.jpg");
  EXPECT_EQ(timer->interval(), 0) << "the timer that runs is kept";
  EXPECT_EQ(name(), "second.jpg");
  EXPECT_TRUE(waitUntil([&] { return !notice.isVisible(); }));
  EXPECT_EQ(ticks, 37 + 38);
}

TEST_F(FileSavedWindow, AClickClosesItAndTheNextSaveBringsItBackForItsFullTime) {
  showFileSavedWindow("first.jpg");
  click(notice);
  EXPECT_TRUE(waitUntil([&] { return !notice.isVisible(); }));
  auto* timer = notice.findChild<QTimer*>();
  EXPECT_FALSE(timer->isActive());
  QElapsedTimer shown;
  shown.start();
  int ticks = 0;
  int missed = 0;  // while the machine was busy: counted with the next one
  QObject::connect(timer, &QTimer::timeout, &notice, [&] {
    ++ticks;
    missed = std::max(missed, int(shown.elapsed() / 100) - ticks);
  });
  showFileSavedWindow("second.jpg");
  hurry(notice);
  EXPECT_TRUE(notice.isVisible());
  EXPECT_TRUE(waitUntil([&] { return !notice.isVisible(); }));
  EXPECT_LE(ticks, 38);
  EXPECT_GE(ticks + missed, 38);
}

}  // namespace
}  // namespace tessary::test
