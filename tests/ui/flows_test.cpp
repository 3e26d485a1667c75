#include <algorithm>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>
#include <QtGui/QAccessible>
#include <QtGui/QImage>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QTableView>
#include <gtest/gtest.h>

#include "Program.h"
#include "RecordingRasterizer.h"
#include "base/FourCharCode.h"

namespace tessary::test {
namespace {

constexpr const char* kCalibration = "Calibration Item Identifier";
constexpr const char* kShutter = "Shutter Item Identifier";
constexpr const char* kRecord = "Record Item Identifier";
constexpr const char* kText = "Text Item Identifier";
constexpr const char* kLine = "Line Item Identifier";

/// A program whose folder is chosen already.
struct Rig {
  explicit Rig(Start start = {}) : program(withFolder(std::move(start))) {}

  Start withFolder(Start start) {
    start.prepare = [this, before = start.prepare](MemoryKeyValueStore& store) {
      const std::string path = folder.path().toStdString();
      store.values["imagePath"] = KeyValueStore::Bytes(path.begin(), path.end());
      if (before) before(store);
    };
    return start;
  }
  QStringList files() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
  bool waitForFiles(int count) {
    return waitUntil([&] { return files().size() == count; });
  }
  QString path(const QString& name) const { return folder.filePath(name); }
  template <typename T>
  T* dialog() {
    return program.window().findChild<T*>();
  }
  template <typename T>
  bool waitFor() {
    return waitUntil([&] {
      auto* found = dialog<T>();
      return found && found->isVisible() && hasKeyboard(*found);
    });
  }
  template <typename T>
  bool waitForEnd() {
    return waitUntil([&] { return !dialog<T>() || !dialog<T>()->isVisible(); });
  }

  QTemporaryDir folder;
  Program program;
};

QAbstractButton& buttonOf(QWidget& dialog, const char* name) {
  return *dialog.findChild<QAbstractButton*>(QString::fromLatin1(name));
}

/// The types of a movie file's outermost boxes, in their order.
QStringList topLevelBoxes(const QString& path) {
  QStringList types;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return types;
  for (qint64 at = 0; file.seek(at);) {
    const QByteArray head = file.read(16);
    if (head.size() < 8) break;
    types << QString::fromLatin1(head.mid(4, 4));
    quint64 size = qFromBigEndian<quint32>(head.constData());
    if (size == 1 && head.size() == 16) size = qFromBigEndian<quint64>(head.constData() + 8);
    if (size < 8) break;
    at += qint64(size);
  }
  return types;
}

TEST(Stills, SpaceSavesOneAndTheNoticeNamesItForFourSeconds) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  QElapsedTimer timer;
  timer.start();
  key("space");
  ASSERT_TRUE(rig.waitForFiles(1));
  auto* notice = rig.dialog<FileSavedWindowController>();
  ASSERT_TRUE(notice && waitUntil([&] { return notice->isVisible(); }));
  auto* name = notice->findChild<QLabel*>("fileNameFld");
  EXPECT_EQ(name->text(), rig.files()[0]);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(name)->text(QAccessible::Name), rig.files()[0]);
  EXPECT_TRUE(rig.program.window().isActiveWindow()) << "the notice takes no focus";
  EXPECT_TRUE(waitUntil([&] { return !notice->isVisible(); }));
  EXPECT_GE(timer.elapsed(), 3700);
  const QImage still(rig.path(rig.files()[0]));
  EXPECT_EQ(still.size(), QSize(640, 480));
  EXPECT_TRUE(rig.files()[0].endsWith(".jpg"));
}

TEST(Stills, OneAfterAnotherIsSavedWhileTheNoticeShows) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  for (const int count : {1, 2, 3}) {
    key("space");
    ASSERT_TRUE(rig.waitForFiles(count)) << "the keyboard stays with the main window";
    const auto* notice = rig.dialog<FileSavedWindowController>();
    ASSERT_TRUE(notice && waitUntil([&] { return placeOnDisplay(*notice).has_value(); }));
  }
  const QWidget& window = rig.program.window();
  const QRect notice = placeOnDisplay(*rig.dialog<FileSavedWindowController>()).value();
  const QRect main = placeOnDisplay(window).value();
  EXPECT_LE(std::abs(notice.center().x() - main.center().x()), 1);
  const int title = window.geometry().top() - window.frameGeometry().top();
  EXPECT_EQ(notice.top(), main.top() - title + 67);
}

TEST(Stills, TheMicroscopesOwnButtonSavesOneWhereverTheKeyboardIs) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  key("XF86WebCam");
  ASSERT_TRUE(rig.waitForFiles(1));
  key("ctrl+comma");
  ASSERT_TRUE(
      waitUntil([] { return gOptionsWindowController && hasKeyboard(*gOptionsWindowController); }));
  key("XF86WebCam");
  EXPECT_TRUE(rig.waitForFiles(2));
}

TEST(Stills, OneIsTheSameAtEveryZoomAndPan) {
  Rig rig(Start{.prepare = [](MemoryKeyValueStore& s) { s.values["imagePNG"] = int64_t(1); }});
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button("Crosshair Item Identifier"));
  rig.program.microscope->freeze(std::chrono::seconds(60));
  // A frame may still be on its way: then what was saved first and last differs, and all is done
  // again, with nothing on its way any more.
  int count = 0;
  const auto save = [&] {
    const QStringList before = rig.files();
    key("space");
    EXPECT_TRUE(rig.waitForFiles(++count));
    QStringList added = rig.files();
    for (const QString& name : before) added.removeOne(name);
    return QImage(rig.path(added.value(0)));
  };
  QSlider& zoom = rig.program.slider("zoomSlider");
  QImage first, panned, small, last;
  ASSERT_TRUE(waitUntil([&] {
    zoom.setValue(2);
    first = save();
    zoom.setValue(4);
    drag(rig.program.container(), {300, 300}, {250, 260});
    panned = save();
    zoom.setValue(0);
    small = save();
    zoom.setValue(2);
    last = save();
    return first == last || HasFailure();
  }));
  EXPECT_EQ(first.size(), QSize(640, 480));
  EXPECT_EQ(first.pixelColor(320, 5).green(), 230) << "the reticle is in it";
  EXPECT_EQ(panned, first);
  EXPECT_EQ(small, first);
}

TEST(Stills, TheNoticeComesWhereTheWindowIsNow) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  QWidget& window = rig.program.window();
  const auto isInPlace = [&] {
    auto* notice = rig.dialog<FileSavedWindowController>();
    if (!notice || !notice->isVisible()) return false;
    const QRect frame = window.frameGeometry();
    return notice->pos() ==
           QPoint(int(frame.x() + (frame.width() - notice->width()) / 2.0), frame.y() + 67);
  };
  key("space");
  EXPECT_TRUE(waitUntil(isInPlace));
  rig.dialog<FileSavedWindowController>()->close();
  const QPoint place = window.pos() + QPoint(70, 90);
  window.move(place);
  ASSERT_TRUE(waitUntil([&] { return window.pos() == place; }));
  waitForPlace(window);
  key("space");
  EXPECT_TRUE(waitUntil(isInPlace));
}

TEST(Stills, WhereNoFileCanBeMadeNoNoticeComes) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  gPreferences->url = rig.path("gone").toStdString();
  key("space");
  ASSERT_TRUE(waitUntil([&] {
    return std::ranges::any_of(rig.program.log.lines(), [](const std::string& line) {
      return line.starts_with("Can NOT save file: ");
    });
  }));
  const auto shows = [&] {
    const auto* notice = rig.dialog<FileSavedWindowController>();
    return notice && notice->isVisible();
  };
  EXPECT_FALSE(shows());
  gPreferences->url = rig.folder.path().toStdString();
  key("space");
  ASSERT_TRUE(rig.waitForFiles(1));
  EXPECT_TRUE(waitUntil(shows)) << "the next one's";
}

TEST(Stills, WithoutAPictureNothingIsWrittenAndTheNoticeShowsAllTheSame) {
  Rig rig(Start{.plugged = false});
  key("space");
  ASSERT_TRUE(waitUntil([&] { return rig.dialog<FileSavedWindowController>() != nullptr; }));
  EXPECT_TRUE(waitUntil([&] { return rig.dialog<FileSavedWindowController>()->isVisible(); }));
  EXPECT_TRUE(rig.files().isEmpty());
}

TEST(Stills, WithoutAFolderOneIsAskedForOnceAndKept) {
  QTemporaryDir folder;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  click(program.button(kShutter));
  const auto chooser = [&] { return program.window().findChild<QFileDialog*>(); };
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  key("Escape");
  ASSERT_TRUE(waitUntil([&] { return !chooser(); }));
  EXPECT_FALSE(gPreferences->url);
  click(program.button(kShutter));
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  xdotool({"type", folder.path()});
  key("Return");
  ASSERT_TRUE(waitUntil([&] { return QDir(folder.path()).count() > 2; }));
  EXPECT_EQ(gPreferences->url, folder.path().toStdString());
  EXPECT_TRUE(program.store->values.contains("imagePath"));
}

TEST(Movies, WithoutAFolderOneIsAskedForFirst) {
  QTemporaryDir folder;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const auto chooser = [&] { return program.window().findChild<QFileDialog*>(); };
  const auto sheet = [&] { return program.window().findChild<RecordWindowController*>(); };
  key("ctrl+r");
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  EXPECT_FALSE(sheet());
  key("Escape");
  ASSERT_TRUE(waitUntil([&] { return !chooser() && hasKeyboard(program.window()); }));
  EXPECT_FALSE(sheet());
  key("ctrl+r");
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  xdotool({"type", folder.path()});
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return sheet() && hasKeyboard(*sheet()); }));
  EXPECT_EQ(gPreferences->url, folder.path().toStdString());
}

TEST(Stills, AFolderChosenTwiceIsChosenOnce) {
  QTemporaryDir folder;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  key("space");
  const auto chooser = [&] { return program.window().findChild<QFileDialog*>(); };
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  const int stored = program.store->storeCalls;
  xdotool({"type", folder.path()});
  xdotoolAtOnce({"key", "Return", "Return"});
  ASSERT_TRUE(waitUntil([&] {
    const auto* notice = program.window().findChild<FileSavedWindowController*>();
    return notice && notice->isVisible();
  }));
  EXPECT_EQ(program.store->storeCalls, stored + 1);
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
}

/// Starts a movie in the record sheet, and waits until the sheet shows so many seconds.
void record(Rig& rig, double seconds) {
  click(rig.program.button(kRecord));
  ASSERT_TRUE(rig.waitFor<RecordWindowController>());
  auto& sheet = *rig.dialog<RecordWindowController>();
  click(buttonOf(sheet, "startBtn"));
  const auto* shown = sheet.findChild<QLabel*>("secondsFld");
  ASSERT_TRUE(waitUntil([&] { return shown->text().toDouble() >= seconds; }));
}

TEST(Movies, TheRecordSheetStartsAndStopsOne) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  ASSERT_NO_FATAL_FAILURE(record(rig, 1.5));
  auto& sheet = *rig.dialog<RecordWindowController>();
  EXPECT_EQ(buttonOf(sheet, "closeBtn").text(), "Stop");
  click(buttonOf(sheet, "closeBtn"));
  EXPECT_TRUE(rig.waitForEnd<RecordWindowController>());
  ASSERT_TRUE(rig.waitForFiles(1));
  EXPECT_TRUE(rig.files()[0].endsWith(".mp4"));
  // Finished is what is an ordinary movie.
  EXPECT_TRUE(waitUntil([&] {
    const QStringList boxes = topLevelBoxes(rig.path(rig.files()[0]));
    return boxes.value(0) == "ftyp" && boxes.contains("mdat") && boxes.contains("moov") &&
           !boxes.contains("moof");
  })) << topLevelBoxes(rig.path(rig.files()[0])).join(' ').toStdString();
}

TEST(Movies, OneMadeAtAnotherZoomHasTheFramesSize) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  rig.program.slider("zoomSlider").setValue(4);
  ASSERT_NO_FATAL_FAILURE(record(rig, 0.5));
  auto& sheet = *rig.dialog<RecordWindowController>();
  click(buttonOf(sheet, "closeBtn"));
  ASSERT_TRUE(rig.waitForEnd<RecordWindowController>());
  ASSERT_TRUE(waitUntil([&] {
    return rig.files().size() == 1 && topLevelBoxes(rig.path(rig.files()[0])).contains("mdat");
  }));
  QProcess probe;
  probe.start("ffprobe", {"-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0",
                          rig.path(rig.files()[0])});
  ASSERT_TRUE(probe.waitForFinished());
  EXPECT_EQ(probe.readAllStandardOutput().trimmed(), "640,480");
}

TEST(Movies, CloseBeforeTheStartTouchesNothing) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button(kRecord));
  ASSERT_TRUE(rig.waitFor<RecordWindowController>());
  click(buttonOf(*rig.dialog<RecordWindowController>(), "closeBtn"));
  EXPECT_TRUE(rig.waitForEnd<RecordWindowController>());
  EXPECT_TRUE(rig.files().isEmpty());
}

TEST(Movies, AMicroscopeThatGoesAndComesBackGoesOnInTheSameOne) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  ASSERT_NO_FATAL_FAILURE(record(rig, 0.5));
  auto& sheet = *rig.dialog<RecordWindowController>();
  const auto* seconds = sheet.findChild<QLabel*>("secondsFld");
  rig.program.microscope->unplug();
  ASSERT_TRUE(waitUntil([&] { return !gCurrMicroscope; }));
  EXPECT_TRUE(sheet.isVisible());
  rig.program.microscope->plug();
  ASSERT_TRUE(rig.program.waitForPicture());
  const double before = seconds->text().toDouble();
  ASSERT_TRUE(waitUntil([&] { return seconds->text().toDouble() >= before + 0.5; }));
  click(buttonOf(sheet, "closeBtn"));
  EXPECT_TRUE(rig.waitForEnd<RecordWindowController>());
  EXPECT_EQ(rig.files().size(), 1);
}

TEST(Texts, OneIsPlacedNearTheMiddleAndItsSpacesGoToTheSheet) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button(kText));
  ASSERT_TRUE(rig.waitFor<InputTextWindowController>());
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 4; }))
      << "while the sheet is up";
  xdotool({"type", "two words"});
  key("Return");
  ASSERT_TRUE(rig.waitForEnd<InputTextWindowController>());
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 20; }));
  EXPECT_TRUE(rig.files().isEmpty()) << "no still was saved by the space";
  EXPECT_TRUE(waitUntil([&] {
    const QImage image = rig.program.screenshot();
    int lit = 0;
    for (int y = 200; y < 260; ++y)
      for (int x = 330; x < 480; ++x) lit += image.pixelColor(x, y).red() == 0;
    return lit > 200;
  }));
}

TEST(Texts, AnUnpluggedMicroscopeTakesTheSheetAway) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button(kText));
  ASSERT_TRUE(rig.waitFor<InputTextWindowController>());
  rig.program.microscope->unplug();
  EXPECT_TRUE(rig.waitForEnd<InputTextWindowController>());
}

/// Opens the list and begins to calibrate one of its slots.
void beginCalibration(Rig& rig, int32_t slot = 0) {
  click(rig.program.button(kCalibration));
  ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
  rig.dialog<CalibrationListWindowController>()->setEditingItem(slot);
  click(buttonOf(*rig.dialog<CalibrationListWindowController>(), "calibrateBtn"));
  ASSERT_TRUE(rig.waitForEnd<CalibrationListWindowController>());
  ASSERT_TRUE(waitUntil([&] {
    auto* window = rig.dialog<CalibrationWindowController>();
    return window && hasKeyboard(*window);
  }));
}

TEST(Calibrations, ALengthFillsTheSlotAndBringsTheCrosshair) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  gPreferences->calibrations[0].name = "Objective 4x";
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig));
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 4; })) << "while it is open";
  xdotool({"type", "0.5"});
  key("Return");
  ASSERT_TRUE(rig.waitForEnd<CalibrationWindowController>());
  const CalibrationRecord& slot = gPreferences->calibrations[0];
  EXPECT_EQ(slot.pixels, 2 * 640 / 3);
  EXPECT_EQ(slot.length, 0.5);
  EXPECT_EQ(slot.ppu, slot.pixels / 0.5);
  EXPECT_EQ(slot.unit, 0);
  EXPECT_EQ(slot.resolution, 640 + 480 * 65536);
  EXPECT_EQ(slot.date, QDate::currentDate().toString("yyyyMMdd").toInt());
  EXPECT_EQ(slot.name, "Objective 4x");
  EXPECT_EQ(gPreferences->calibration, 0);
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 20; }));
  EXPECT_TRUE(waitUntil([&] {
    return rig.program.screenshot().pixelColor(320, 60).red() == 0;  // the crosshair's axis
  }));
}

TEST(Calibrations, OneInMicrometresFillsTheChosenSlotAndIsKept) {
  std::string lastLabel;
  Rig rig(Start{.furnish = [&](Platform& platform) {
    platform.textRasterizer =
        std::make_unique<RecordingRasterizer>(std::move(platform.textRasterizer), lastLabel);
  }});
  ASSERT_TRUE(rig.program.waitForPicture());
  const int stored = rig.program.store->storeCalls;
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig, 3));
  auto& window = *rig.dialog<CalibrationWindowController>();
  EXPECT_EQ(window.editingItem(), 3);
  window.findChild<QComboBox*>("unitFld")->setCurrentIndex(1);
  xdotool({"type", "500"});
  key("Return");
  ASSERT_TRUE(rig.waitForEnd<CalibrationWindowController>());
  const CalibrationRecord& slot = gPreferences->calibrations[3];
  EXPECT_EQ(slot.length, 500.0);
  EXPECT_EQ(slot.unit, 1);
  for (size_t i = 0; i < gPreferences->calibrations.size(); ++i)
    EXPECT_EQ(gPreferences->calibrations[i] == CalibrationRecord{}, i != 3) << i;
  EXPECT_EQ(gPreferences->calibration, 3);
  EXPECT_EQ(rig.program.store->storeCalls, stored + 1);
  EXPECT_EQ(std::get<int64_t>(rig.program.store->values.at("calibration")), 3);
  EXPECT_NE(std::get<std::string>(rig.program.store->values.at("calibrations"))
                .find(",1,426,500.000000,"),
            std::string::npos);
  EXPECT_TRUE(lastLabel.ends_with("μm")) << lastLabel << ": what the picture says";
}

TEST(Calibrations, ANegativeLengthIsNone) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  const int stored = rig.program.store->storeCalls;
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig));
  xdotool({"type", "--", "-2"});
  key("Return");
  ASSERT_TRUE(rig.waitForEnd<CalibrationWindowController>());
  const PreviewView& view = gPreviewWindowController->getPreviewView();
  EXPECT_EQ(gPreferences->calibrations[0], CalibrationRecord{});
  EXPECT_LT(view.pixelsPerUnit(), 0.0F);
  EXPECT_EQ(view.getCurrScale(), kScaleNone);
  EXPECT_EQ(rig.program.store->storeCalls, stored);
}

TEST(Calibrations, TheWindowGoesWithTheMainWindow) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig));
  rig.program.window().close();
  EXPECT_TRUE(waitUntil([&] { return !rig.dialog<CalibrationWindowController>(); }));
}

TEST(Calibrations, ASessionStartEndsOneThatBeganWithoutAMicroscope) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button(kCalibration));
  ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
  rig.program.microscope->unplug();
  ASSERT_TRUE(waitUntil([&] { return !gCurrMicroscope; }));
  click(buttonOf(*rig.dialog<CalibrationListWindowController>(), "calibrateBtn"));
  ASSERT_TRUE(rig.waitFor<CalibrationWindowController>());
  rig.program.microscope->plug();
  EXPECT_TRUE(waitUntil([&] { return !rig.dialog<CalibrationWindowController>(); }));
  ASSERT_TRUE(rig.program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 20; }));
  EXPECT_EQ(gPreferences->calibrations[0], CalibrationRecord{});
}

TEST(Calibrations, CancelChangesNeitherSlotNorCalibrationAndBringsTheReticleBack) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  PreviewView& view = gPreviewWindowController->getPreviewView();
  view.setCalibration(50.0F, 1);
  view.changeScale(2);
  const auto gridShows = [&] { return rig.program.screenshot().pixelColor(320, 60).red() == 0; };
  ASSERT_TRUE(waitUntil(gridShows));
  const int stored = rig.program.store->storeCalls;
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig));
  EXPECT_TRUE(waitUntil([&] { return !gridShows(); }));
  key("Escape");
  ASSERT_TRUE(rig.waitForEnd<CalibrationWindowController>());
  EXPECT_TRUE(waitUntil(gridShows));
  EXPECT_EQ(view.pixelsPerUnit(), 50.0F);
  EXPECT_EQ(gPreferences->calibrations[0], CalibrationRecord{});
  EXPECT_EQ(rig.program.store->storeCalls, stored);
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 20; }));
}

TEST(Calibrations, WithoutASelectedSlotNothingIsCalibratedOrApplied) {
  for (const char* name : {"calibrateBtn", "applyBtn"}) {
    SCOPED_TRACE(name);
    Rig rig;
    ASSERT_TRUE(rig.program.waitForPicture());
    PreviewView& view = gPreviewWindowController->getPreviewView();
    view.setCalibration(50.0F, 1);
    const int stored = rig.program.store->storeCalls;
    click(rig.program.button(kCalibration));
    ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
    auto& list = *rig.dialog<CalibrationListWindowController>();
    list.findChild<QTableView*>()->setCurrentIndex({});
    click(buttonOf(list, name));
    ASSERT_TRUE(rig.waitForEnd<CalibrationListWindowController>());
    EXPECT_FALSE(rig.dialog<CalibrationWindowController>());
    EXPECT_EQ(view.pixelsPerUnit(), 50.0F);
    EXPECT_EQ(rig.program.store->storeCalls, stored);
  }
}

TEST(Calibrations, ASessionThatStartsEndsOneWithItsLine) {
  Rig rig;
  ASSERT_TRUE(rig.program.waitForPicture());
  ASSERT_NO_FATAL_FAILURE(beginCalibration(rig));
  const auto lineShows = [&] {
    const QColor color = rig.program.screenshot().pixelColor(320, 240);
    return color.red() < 20 && color.green() > 200;
  };
  EXPECT_TRUE(waitUntil(lineShows));
  rig.program.microscope->unplug();
  rig.program.microscope->plug();
  EXPECT_TRUE(rig.waitForEnd<CalibrationWindowController>());
  ASSERT_TRUE(rig.program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return !lineShows(); }));
  EXPECT_TRUE(waitUntil([&] { return rig.program.enabledCommands() == 20; }));
}

TEST(Calibrations, AStoredSlotThatIsNoneOpensTheListAtItsFirst) {
  Rig rig(Start{.prepare = [](MemoryKeyValueStore& s) { s.values["calibration"] = int64_t(12); }});
  ASSERT_TRUE(rig.program.waitForPicture());
  click(rig.program.button(kCalibration));
  ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
  EXPECT_EQ(rig.dialog<CalibrationListWindowController>()->editingItem(), 0);
}

TEST(Calibrations, ApplyingAnEmptySlotGoesBackToNone) {
  Rig rig(Start{.prepare = [](MemoryKeyValueStore& s) {
    s.values["calibrations"] = std::string("lens,0,400,1.000000,31457920,20250115;");
    s.values["calibration"] = int64_t(0);
  }});
  ASSERT_TRUE(rig.program.waitForPicture());
  const PreviewView& view = gPreviewWindowController->getPreviewView();
  for (const int row : {0, 4}) {
    const int stored = rig.program.store->storeCalls;
    click(rig.program.button(kCalibration));
    ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
    rig.dialog<CalibrationListWindowController>()->setEditingItem(row);
    click(buttonOf(*rig.dialog<CalibrationListWindowController>(), "applyBtn"));
    ASSERT_TRUE(rig.waitForEnd<CalibrationListWindowController>());
    EXPECT_EQ(gPreferences->calibration, row);
    EXPECT_EQ(view.pixelsPerUnit(), row == 0 ? 400.0F : -1.0F);
    EXPECT_EQ(view.getCurrScale(), kScaleNone) << "the reticle stays as it is";
    EXPECT_EQ(rig.program.store->storeCalls, stored + 1);
    EXPECT_EQ(std::get<int64_t>(rig.program.store->values.at("calibration")), row);
  }
}

TEST(Calibrations, ADeletedOneStaysInForce) {
  Rig rig(Start{.prepare = [](MemoryKeyValueStore& s) {
    s.values["calibrations"] = std::string("lens,0,400,1.000000,31457920,20250115;");
  }});
  ASSERT_TRUE(rig.program.waitForPicture());
  for (const char* name : {"applyBtn", "deleteBtn"}) {
    click(rig.program.button(kCalibration));
    ASSERT_TRUE(rig.waitFor<CalibrationListWindowController>());
    click(buttonOf(*rig.dialog<CalibrationListWindowController>(), name));
    if (name == std::string("deleteBtn")) key("Escape");
    ASSERT_TRUE(rig.waitForEnd<CalibrationListWindowController>());
  }
  EXPECT_EQ(gPreferences->calibrations[0], CalibrationRecord{});
  EXPECT_EQ(gPreferences->calibration, 0);
  EXPECT_EQ(gPreviewWindowController->getPreviewView().pixelsPerUnit(), 400.0F);
}

}  // namespace
}  // namespace tessary::test
