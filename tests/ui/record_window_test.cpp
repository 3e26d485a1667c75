#include <thread>

#include <QtWidgets/QAbstractItemView>

#include "DialogRig.h"
#include "ui/PopUpButton.h"
#include "ui/RecordWindowController.h"

namespace tessary::test {
namespace {

class RecordWindow : public DialogRig, public RecordWindowDelegate {
 protected:
  void startRecord(RecordWindowController& sender) override {
    ++starts;
    status = sender.statusDelegate();
  }

  void recordLimitDidChange() override { limitsTold.push_back(preferences.maxRecord); }

  /// A sheet that is up; `maxRecord` is what is stored as the limit.
  RecordWindowController& show(int32_t maxRecord = 0) {
    preferences.maxRecord = maxRecord;
    dialog = std::make_unique<RecordWindowController>(&window, preferences);
    dialog->setDelegate(this);
    open(*dialog);
    return *dialog;
  }

  /// The recording queue tells of a status.
  void tell(int64_t value) {
    std::thread([&] { status->recordStatusDidChange(value); }).join();
  }

  QPushButton& startBtn() { return find<QPushButton>(*dialog, "startBtn"); }
  QPushButton& closeBtn() { return find<QPushButton>(*dialog, "closeBtn"); }
  QComboBox& limitFld() { return find<QComboBox>(*dialog, "limitFld"); }
  QString time() { return find<QLabel>(*dialog, "secondsFld").text(); }

  std::unique_ptr<RecordWindowController> dialog;
  std::shared_ptr<PreviewViewRecordDelegate> status;
  int starts = 0;
  std::vector<int32_t> limitsTold;
};

TEST_F(RecordWindow, OffersTheSixLimitsAndSelectsTheStoredOne) {
  show(600);
  QStringList titles;
  for (int i = 0; i < limitFld().count(); ++i) titles << limitFld().itemText(i);
  EXPECT_EQ(titles, QStringList({"No Limit", "30 seconds", "60 seconds", "10 minutes", "30 minutes",
                                 "1hour"}));
  EXPECT_EQ(limitFld().currentIndex(), 3);
}

TEST_F(RecordWindow, AStoredLimitThatIsNotOfferedStaysInForce) {
  show(20);
  EXPECT_EQ(limitFld().currentIndex(), 0);
  EXPECT_EQ(preferences.maxRecord, 20);
  EXPECT_EQ(saves(), 0);
  click(startBtn());
  hurry(*dialog);
  tell(5);
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
  EXPECT_EQ(time(), "20.0") << "the tick that passes the limit shows no time";
}

TEST_F(RecordWindow, AChosenLimitIsSavedAtOnceAndTheSameOneNotAgain) {
  show();
  limitFld().setFocus();
  key("Down");
  EXPECT_TRUE(waitUntil([&] { return limitFld().view()->isVisible(); }));
  EXPECT_EQ(preferences.maxRecord, 0);
  key("Down");
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return preferences.maxRecord == 30; }));
  EXPECT_EQ(std::get<int64_t>(store.values.at("maxRecord")), 30);
  EXPECT_EQ(saves(), 1);
  EXPECT_TRUE(waitUntil([&] { return !limitFld().view()->isVisible(); }));
  key("Down");
  EXPECT_TRUE(waitUntil([&] { return limitFld().view()->isVisible(); }));
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return !limitFld().view()->isVisible(); }));
  EXPECT_EQ(limitFld().currentIndex(), 1);
  EXPECT_EQ(saves(), 1);
  EXPECT_EQ(limitsTold, std::vector<int32_t>{30});
  EXPECT_EQ(ends, 0);
}

TEST_F(RecordWindow, TheWheelDoesNotStepThroughTheLimits) {
  show();
  moveTo(limitFld(), limitFld().rect().center());
  for (const char* notch : {"5", "5", "4"}) xdotool({"click", notch});
  EXPECT_EQ(limitFld().currentIndex(), 0);
  EXPECT_EQ(saves(), 0);
}

TEST_F(RecordWindow, CloseBeforeStartEndsWith0) {
  show();
  EXPECT_EQ(closeBtn().text().remove('&'), "Close");
  click(closeBtn());
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 0);
  EXPECT_EQ(starts, 0);
}

TEST_F(RecordWindow, ReturnStartsOnce) {
  show();
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return starts == 1; }));
  EXPECT_FALSE(startBtn().isEnabled());
  EXPECT_EQ(closeBtn().text(), "Stop");
  click(startBtn());
  EXPECT_EQ(starts, 1);
  EXPECT_TRUE(limitFld().isEnabled());
  EXPECT_EQ(ends, 0);
}

TEST_F(RecordWindow, TheTimeMovesFromTheFirstFrameOn) {
  show();
  EXPECT_EQ(time(), "0.0");
  click(startBtn());
  hurry(*dialog);
  for (const int64_t value : {4, 1, 2, 3}) tell(value);
  int ticks = 0;
  QObject::connect(dialog->findChild<QTimer*>(), &QTimer::timeout, dialog.get(), [&] { ++ticks; });
  EXPECT_TRUE(waitUntil([&] { return ticks > 20; }));
  EXPECT_EQ(time(), "0.0");
  tell(5);
  EXPECT_TRUE(waitUntil([&] { return time() != "0.0"; }));
}

TEST_F(RecordWindow, StopEndsWith1) {
  show();
  click(startBtn());
  tell(5);
  EXPECT_TRUE(waitUntil([&] { return time().toDouble() >= 0.2; }))
      << "at the pace that a user sees";
  click(closeBtn());
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
}

TEST_F(RecordWindow, StopIsTheWayOutWhenTheStartFailed) {
  show(30);
  click(startBtn());
  tell(1);
  click(closeBtn());
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
}

TEST_F(RecordWindow, EscapeAndTheTitleBarAreTheButton) {
  struct Row {
    const char* key;
    bool started;
  };
  constexpr Row kRows[] = {
      {"Escape", false}, {"Escape", true}, {"alt+F4", false}, {"alt+F4", true}};
  for (const Row& row : kRows) {
    ends = 0;
    show();
    if (row.started) click(startBtn());
    key(row.key);
    EXPECT_TRUE(waitUntil([&] { return ends == 1; })) << row.key;
    EXPECT_EQ(returnCode, row.started ? 1 : 0) << row.key;
    goBack();
  }
}

TEST_F(RecordWindow, TheLimitEndsItOnceWith1AndLaterTicksAreWithoutEffect) {
  show(30);
  click(startBtn());
  hurry(*dialog);
  tell(5);
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(returnCode, 1);
  EXPECT_EQ(time(), "30.0");
  auto* timer = dialog->findChild<QTimer*>();
  timer->start(0);
  int ticks = 0;
  QObject::connect(timer, &QTimer::timeout, dialog.get(), [&] { ++ticks; });
  EXPECT_TRUE(waitUntil([&] { return ticks > 3; }));
  dialog->reject();
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(time(), "30.0");
}

TEST_F(RecordWindow, ALimitShortenedDuringTheRecordingEndsIt) {
  show(3600);
  click(startBtn());
  hurry(*dialog);
  tell(5);
  auto* timer = dialog->findChild<QTimer*>();
  int ticks = 0;
  QObject::connect(timer, &QTimer::timeout, dialog.get(), [&] {
    if (++ticks == 350) timer->setInterval(100);
  });
  ASSERT_TRUE(waitUntil([&] { return ticks >= 350; }));
  limitFld().setFocus();
  key("Down");
  EXPECT_TRUE(waitUntil([&] { return limitFld().view()->isVisible(); }));
  key("Home");
  key("Down");
  EXPECT_EQ(ends, 0) << "nothing counts before it is chosen";
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
  EXPECT_EQ(preferences.maxRecord, 30);
  EXPECT_EQ(returnCode, 1);
}

TEST_F(RecordWindow, TheRecordingMayTellItsStatusAfterTheSheetIsGone) {
  show();
  click(startBtn());
  dialog.reset();
  tell(5);
  tell(3);
  EXPECT_EQ(status.use_count(), 1) << "nobody else holds on to it";
}

}  // namespace
}  // namespace tessary::test
