#include <algorithm>

#include <QtCore/QTemporaryDir>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolButton>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Program.h"
#include "base/FourCharCode.h"
#include "ui/ColorWell.h"

namespace tessary::test {
namespace {

constexpr const char* kMicroscope = "Microscope Item Identifier";
constexpr const char* kOptions = "Options Item Identifier";

const char* identifierOf(Command command) {
  return std::ranges::find(allCommands(), command, &CommandInfo::command)->identifier;
}

template <typename T>
T* sheet(Program& program) {
  return program.window().findChild<T*>();
}

bool waitForSheet(Program& program) {
  return waitUntil([&] {
    auto* dialog = sheet<MicroscopeWindowController>(program);
    return dialog && hasKeyboard(*dialog);
  });
}

QComboBox& box(QWidget& dialog, const char* name) {
  return *dialog.findChild<QComboBox*>(QString::fromLatin1(name));
}

QPushButton& button(QWidget& dialog, QDialogButtonBox::StandardButton which) {
  return *dialog.findChild<QDialogButtonBox*>()->button(which);
}

bool waitForOptions() {
  return waitUntil(
      [] { return gOptionsWindowController && hasKeyboard(*gOptionsWindowController); });
}

TEST(MicroscopeSheet, ChoosingAMicroscopeMakesItLiveAndIsRemembered) {
  Program program(Start{.remembered = false});
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  key("Return");
  EXPECT_TRUE(program.waitForPicture());
  EXPECT_EQ(std::get<std::string>(program.store->values.at("uniqueID")), gCurrMicroscope->uniqueID);
  EXPECT_FALSE(sheet<MicroscopeWindowController>(program));
}

TEST(MicroscopeSheet, PreselectsTheDefaultAndNotWhatIsInUse) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  click(program.button(kMicroscope));
  ASSERT_TRUE(waitForSheet(program));
  auto& dialog = *sheet<MicroscopeWindowController>(program);
  EXPECT_EQ(box(dialog, "microscopeFld").currentText(), "Simulated Microscope");
  EXPECT_EQ(box(dialog, "resolutionFld").count(), 3);
  EXPECT_EQ(box(dialog, "resolutionFld").currentText(), "1280x720");
}

TEST(MicroscopeSheet, CancelChangesNothing) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const int stored = program.store->storeCalls;
  click(program.button(kMicroscope));
  ASSERT_TRUE(waitForSheet(program));
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return !sheet<MicroscopeWindowController>(program); }));
  EXPECT_EQ(program.store->storeCalls, stored);
  EXPECT_TRUE(program.waitForPicture());
}

TEST(MicroscopeSheet, OkStartsTheSessionAnewEvenIfNothingChanged) {
  Program program(Start{.width = 1280, .height = 720});
  ASSERT_TRUE(program.waitForPicture());
  click(program.button("Grid Item Identifier"));
  const int stored = program.store->storeCalls;
  click(program.button(kMicroscope));
  ASSERT_TRUE(waitForSheet(program));
  click(button(*sheet<MicroscopeWindowController>(program), QDialogButtonBox::Ok));
  EXPECT_EQ(program.store->storeCalls, stored + 1);
  EXPECT_TRUE(program.waitForPicture());
}

TEST(MicroscopeSheet, AMicroscopeThatComesRebuildsBothLists) {
  Program program(Start{.plugged = false});
  auto other = std::make_shared<MicroscopeInfo>();
  other->name = "Other";
  other->uniqueID = "other";
  for (const int32_t width : {640, 1280, 1920})
    other->resolutions.push_back(std::make_shared<Resolution>(Resolution{1, width, 480}));
  other->defResolution = other->resolutions[1];
  gMicroscopes.push_back(other);
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  auto& dialog = *sheet<MicroscopeWindowController>(program);
  box(dialog, "resolutionFld").setCurrentIndex(2);
  program.microscope->plug();
  EXPECT_TRUE(waitUntil([&] { return box(dialog, "microscopeFld").count() == 2; }));
  EXPECT_EQ(box(dialog, "resolutionFld").currentIndex(), 1) << "back to the default";
}

TEST(MicroscopeSheet, SelectsTheMicroscopeInUseAndTheMiddleWhereNoneIsTheDefault) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  auto other = std::make_shared<MicroscopeInfo>();
  other->name = "Other";
  other->uniqueID = "other";
  for (const int32_t width : {640, 800, 1280, 1920})
    other->resolutions.push_back(std::make_shared<Resolution>(Resolution{1, width, 480}));
  other->defResolution = std::make_shared<Resolution>(Resolution{1, 1024, 480});
  gMicroscopes.insert(gMicroscopes.begin(), other);
  click(program.button(kMicroscope));
  ASSERT_TRUE(waitForSheet(program));
  auto& dialog = *sheet<MicroscopeWindowController>(program);
  EXPECT_EQ(box(dialog, "microscopeFld").currentIndex(), 1);
  box(dialog, "microscopeFld").setFocus();
  key("Up");
  EXPECT_TRUE(waitUntil([&] { return box(dialog, "resolutionFld").count() == 4; }));
  EXPECT_EQ(box(dialog, "resolutionFld").currentIndex(), 2);
  EXPECT_THAT(program.log.lines(), ::testing::Contains("onSelMicroscope: 4 -1"));
  // The last of four as the default.
  other->defResolution = other->resolutions[3];
  key("Down");
  key("Up");
  EXPECT_TRUE(waitUntil([&] { return box(dialog, "resolutionFld").currentIndex() == 3; }));
}

TEST(MicroscopeSheet, EndsWhenTheLastMicroscopeGoes) {
  Program program(Start{.remembered = false});
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  program.microscope->unplug();
  EXPECT_TRUE(waitUntil([&] { return !sheet<MicroscopeWindowController>(program); }));
  EXPECT_FALSE(gCurrMicroscope);
}

TEST(MicroscopeSheet, AMicroscopeWithoutResolutionsCanNotBeOpened) {
  Program program(Start{.remembered = false});
  gMicroscopes.front()->resolutions.clear();
  gMicroscopes.front()->defResolution.reset();
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  auto& dialog = *sheet<MicroscopeWindowController>(program);
  EXPECT_EQ(box(dialog, "resolutionFld").count(), 0);
  EXPECT_FALSE(button(dialog, QDialogButtonBox::Ok).isEnabled());
}

TEST(Sheets, EndOnceHoweverOftenTheirKeyComes) {
  QTemporaryDir folder;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  gPreferences->url = folder.path().toStdString();
  const struct {
    const char* command;
    const char* title;
    const char* key;
    int saves;
  } rows[] = {
      {"ctrl+m", "Microscope", "Escape", 0},   {"ctrl+m", "Microscope", "Return", 1},
      {"ctrl+comma", "Options", "Escape", 0},  {"ctrl+comma", "Options", "Return", 1},
      {"ctrl+k", "Calibrations", "Escape", 0}, {"ctrl+k", "Calibrations", "Return", 1},
      {"ctrl+t", "Text", "Escape", 0},         {"ctrl+t", "Text", "Return", 0},
      {"ctrl+r", "Record", "Escape", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.title << ", " << row.key);
    const int stored = program.store->storeCalls;
    key(row.command);
    ASSERT_TRUE(waitUntil([&] {
      const QWidget* active = QApplication::activeWindow();
      return active && active->windowTitle() == row.title;
    }));
    xdotoolAtOnce({"key", row.key, row.key, row.key});
    ASSERT_TRUE(waitUntil([&] { return hasKeyboard(program.window()); }));
    EXPECT_EQ(program.store->storeCalls - stored, row.saves);
    ASSERT_TRUE(waitUntil([&] { return program.enabledCommands() == 20; }));
  }
}

TEST(Commands, AfterAFailedStartTheToolsGoByWhetherTheDeviceIsThere) {
  Program program(Start{.remembered = false});
  program.microscope->failNextOpen("It is used by another program.");
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  key("Return");
  ASSERT_TRUE(waitUntil([&] { return !sheet<MicroscopeWindowController>(program); }));
  ASSERT_TRUE(gCurrMicroscope);
  EXPECT_TRUE(waitUntil([&] { return program.enabledCommands() == 20; }))
      << "the device is there, though no picture comes";

  const auto gone = std::make_shared<MicroscopeInfo>();
  gone->name = "Gone";
  gone->uniqueID = "gone";
  gone->resolutions.push_back(std::make_shared<Resolution>(Resolution{1, 640, 480}));
  gone->defResolution = gone->resolutions.front();
  gMicroscopes.push_back(gone);
  key("ctrl+m");
  ASSERT_TRUE(waitForSheet(program));
  auto& dialog = *sheet<MicroscopeWindowController>(program);
  box(dialog, "microscopeFld").setFocus();
  key("Down");
  ASSERT_TRUE(waitUntil([&] { return box(dialog, "microscopeFld").currentIndex() == 1; }));
  key("Return");
  ASSERT_TRUE(waitUntil([&] { return gCurrMicroscope == gone; }));
  EXPECT_TRUE(waitUntil([&] { return program.enabledCommands() == 4; })) << "there is no device";
}

TEST(Alerts, WithoutAMicroscopeItsItemSaysSo) {
  Program program(Start{.plugged = false});
  click(program.button(kMicroscope));
  ASSERT_TRUE(waitUntil([&] { return sheet<QMessageBox>(program); }));
  EXPECT_EQ(sheet<QMessageBox>(program)->text(), "No microscope found");
  EXPECT_EQ(sheet<QMessageBox>(program)->informativeText(), "Please connect your microscope.");
  key("Return");
  EXPECT_TRUE(waitUntil([&] { return !sheet<QMessageBox>(program); }));
}

TEST(Alerts, WithoutAFolderItsItemSaysSo) {
  Program program(Start{.plugged = false});
  click(program.button("Folder Item Identifier"));
  ASSERT_TRUE(waitUntil([&] { return sheet<QMessageBox>(program); }));
  EXPECT_EQ(sheet<QMessageBox>(program)->text(), "Folder not initialized");
  EXPECT_EQ(sheet<QMessageBox>(program)->informativeText(),
            "Please try to capture/save a photo and setup the folder.");
}

TEST(Commands, WithoutASessionFourAreAvailableOnTheToolbarAndInTheMenuAlike) {
  Program program(Start{.remembered = false});
  ASSERT_TRUE(waitUntil([&] { return !program.isEnabled("Line Item Identifier"); }));
  EXPECT_EQ(program.enabledCommands(), 4);
  for (const char* identifier :
       {"Help Item Identifier", kOptions, kMicroscope, "Folder Item Identifier"})
    EXPECT_TRUE(program.isEnabled(identifier)) << identifier;
  const auto menus = program.window().menuBar()->actions();
  ASSERT_EQ(menus.size(), 5);
  for (const MenuEntry& entry : menuItems()) {
    const QAction* action = menus[entry.menu]->menu()->actions()[entry.position];
    EXPECT_EQ(action->objectName(), identifierOf(entry.command));
    if (entry.command == Command::CameraControls || entry.command == Command::Copy)
      EXPECT_FALSE(action->isEnabled());
    else
      EXPECT_EQ(action->isEnabled(), program.isEnabled(identifierOf(entry.command)));
  }
}

TEST(Commands, OneFromTheMenuAndFromTheToolbarIsTheSame) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const auto grid = [&](bool shown) {
    const QColor color = program.screenshot().pixelColor(420, 60);
    return (color.red() < 20 && color.green() > 200) == shown;
  };
  for (const bool menuFirst : {true, false}) {
    const auto fromMenu = [] {
      ASSERT_TRUE(openMenu("e"));
      for (const char* name : {"Down", "Down", "Return"}) key(name);
      ASSERT_TRUE(waitUntil([] { return QApplication::activePopupWidget() == nullptr; }));
    };
    const auto fromToolbar = [&] { click(program.button("Grid Item Identifier")); };
    menuFirst ? fromMenu() : fromToolbar();
    EXPECT_TRUE(waitUntil([&] { return grid(true); }));
    menuFirst ? fromToolbar() : fromMenu();
    EXPECT_TRUE(waitUntil([&] { return grid(false); }));
  }
}

struct Shown {
  const char* identifier;
  const char* label;
  const char* toolTip;
  const char* image;
};
constexpr Shown kSpace{nullptr, nullptr, nullptr, nullptr};
constexpr Shown kToolbar[] = {
    {"Help Item Identifier", "Help", "How to measure with microscope...", "Help"},
    {"Options Item Identifier", "Options", "Preferences...", "Cog"},
    {"Microscope Item Identifier", "Microscope", "Open microscope, change resolution",
     "Microscope"},
    kSpace,
    {"Shutter Item Identifier", "Shutter", "Snap image", "Shutter"},
    {"Record Item Identifier", "Record", "Record video", "Record"},
    {"Folder Item Identifier", "Folder", "Open folder of saved image and video files", "Folder"},
    kSpace,
    {"Calibration Item Identifier", "Calibration", "Manage calibration data", "Calibration"},
    {"Crosshair Item Identifier", "Crosshair", "Show/hide crosshair", "Crosshair"},
    {"Grid Item Identifier", "Grid", "Show/hide grid", "Grid"},
    {"Concentric Item Identifier", "Concentric", "Show/hide concentric", "Concentric"},
    kSpace,
    {"Line Item Identifier", "Line", "Measure a line", "Line"},
    {"Line2 Item Identifier", "Line2", "Measure parallel lines", "Line2"},
    {"Circle Item Identifier", "Circle", "Measure a circle", "Circle"},
    {"Rectangle Item Identifier", "Rectangle", "Measure a rectangle", "Rectangle"},
    {"Angle Item Identifier", "Angle", "Measure an angle", "Angle"},
    {"Pencil Item Identifier", "Pencil", "Draw with a pencil", "Pencil"},
    {"Text Item Identifier", "Text", "Draw some text", "Text"},
    {"Drag Item Identifier", "Stop measure", "Stop measure", "None"},
    kSpace,
    {"Delete Last Item Identifier", "Delete Last", "Delete last measure shape", "DelLast"},
    {"Delet All Item Identifier", "Delete All", "Delete all measure shapes", "DelAll"},
};

TEST(Commands, TheToolbarHasItsTwentyFourEntriesInTheirOrder) {
  Program program(Start{.plugged = false});
  const auto actions = program.find<QToolBar>("TessaryToolbar")->actions();
  ASSERT_EQ(actions.size(), qsizetype(std::size(kToolbar)));
  for (int i = 0; i < actions.size(); ++i) {
    const Shown& shown = kToolbar[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(actions[i]->objectName(), shown.identifier);
    EXPECT_EQ(actions[i]->icon().isNull(), shown.identifier == nullptr);
    if (!shown.identifier) continue;
    auto& button = dynamic_cast<QToolButton&>(program.button(shown.identifier));
    EXPECT_EQ(button.toolTip(), shown.toolTip);
    EXPECT_EQ(button.toolButtonStyle(), Qt::ToolButtonIconOnly);
    const auto infos = allCommands();
    const auto info = std::ranges::find_if(infos, [&](const CommandInfo& candidate) {
      return std::string_view(candidate.identifier) == shown.identifier;
    });
    ASSERT_NE(info, infos.end());
    EXPECT_STREQ(info->label, shown.label);
    EXPECT_STREQ(info->imageName, shown.image);
  }
}

TEST(Commands, TheMenuHasTwentyOfThemAtTheirPlaces) {
  Program program(Start{.plugged = false});
  const auto menus = program.window().menuBar()->actions();
  ASSERT_EQ(menus.size(), 5);
  const char* const microscope[] = {"Microscope Item Identifier", "Folder Item Identifier", nullptr,
                                    "Shutter Item Identifier", "Record Item Identifier",
                                    // Those that were there first keep their places.
                                    nullptr, "Camera Controls Item Identifier"};
  const char* const measure[] = {"Calibration Item Identifier",
                                 nullptr,
                                 "Crosshair Item Identifier",
                                 "Grid Item Identifier",
                                 "Concentric Item Identifier",
                                 nullptr,
                                 "Line Item Identifier",
                                 "Line2 Item Identifier",
                                 "Circle Item Identifier",
                                 "Rectangle Item Identifier",
                                 "Angle Item Identifier",
                                 "Pencil Item Identifier",
                                 "Drag Item Identifier",
                                 "Text Item Identifier",
                                 nullptr,
                                 "Delete Last Item Identifier",
                                 "Delet All Item Identifier",
                                 nullptr,
                                 "Copy Item Identifier"};
  const auto expectMenu = [&](int menu, std::span<const char* const> identifiers) {
    const auto actions = menus[menu]->menu()->actions();
    ASSERT_EQ(actions.size(), qsizetype(identifiers.size()));
    for (int i = 0; i < actions.size(); ++i) {
      EXPECT_EQ(actions[i]->isSeparator(), identifiers[size_t(i)] == nullptr) << menu << " " << i;
      EXPECT_EQ(actions[i]->objectName(), identifiers[size_t(i)]) << menu << " " << i;
    }
  };
  expectMenu(1, microscope);
  expectMenu(2, measure);
}

TEST(Commands, AllTwentyButtonsFitTheSmallestWindow) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  ASSERT_EQ(program.window().width(), 640);
  for (const ToolbarEntry& entry : toolbarDefaultItems()) {
    if (entry.flexibleSpace) continue;
    EXPECT_TRUE(program.button(identifierOf(entry.command)).isVisible());
  }
}

TEST(Commands, AReticleReplacesAnotherAndASecondClickPutsItAway) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  const auto centre = [&] { return program.screenshot().pixelColor(320, 60); };
  const auto isReticle = [](const QColor& c) { return c.red() < 20 && c.green() > 200; };
  click(program.button("Crosshair Item Identifier"));
  EXPECT_TRUE(waitUntil([&] { return isReticle(centre()); }));
  click(program.button("Grid Item Identifier"));
  EXPECT_TRUE(waitUntil([&] { return isReticle(program.screenshot().pixelColor(420, 60)); }))
      << "the grid's line, 100 from the centre";
  click(program.button("Grid Item Identifier"));
  EXPECT_TRUE(waitUntil([&] { return !isReticle(centre()); }));
}

TEST(OptionsWindow, AskedForTwiceItComesForwardAsItIs) {
  Program program(Start{.plugged = false});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  const auto* first = gOptionsWindowController.get();
  box(*gOptionsWindowController, "textSizeFld").setCurrentIndex(0);
  gOptionsWindowController->move(10, 400);
  click(program.button(kOptions));
  EXPECT_EQ(gOptionsWindowController.get(), first);
  EXPECT_EQ(box(*gOptionsWindowController, "textSizeFld").currentIndex(), 0);
}

TEST(OptionsWindow, AfterOkOrCancelTheNextVisitBuildsAFreshOne) {
  Program program(Start{.plugged = false});
  for (const auto which : {QDialogButtonBox::Ok, QDialogButtonBox::Cancel}) {
    click(program.button(kOptions));
    ASSERT_TRUE(waitForOptions());
    waitForPlace(*gOptionsWindowController);
    const QPoint place = gOptionsWindowController->pos();
    gOptionsWindowController->move(10, 400);
    click(button(*gOptionsWindowController, which));
    EXPECT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
    click(program.button(kOptions));
    ASSERT_TRUE(waitForOptions());
    EXPECT_TRUE(waitUntil([&] { return gOptionsWindowController->pos() == place; }))
        << "placed by the main window again";
    click(button(*gOptionsWindowController, QDialogButtonBox::Cancel));
    EXPECT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
  }
}

TEST(OptionsWindow, TheTextSizeIsSavedWithOkAndShowsAtItsIndex) {
  Program program(Start{.plugged = false, .prepare = [](MemoryKeyValueStore& store) {
                          store.values["textSize"] = int64_t(30);
                        }});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  EXPECT_EQ(box(*gOptionsWindowController, "textSizeFld").count(), 37);
  EXPECT_EQ(box(*gOptionsWindowController, "textSizeFld").currentIndex(), 18);
  box(*gOptionsWindowController, "textSizeFld").setCurrentIndex(0);
  box(*gOptionsWindowController, "photoFormatFld").setCurrentIndex(1);
  click(button(*gOptionsWindowController, QDialogButtonBox::Ok));
  EXPECT_EQ(gPreferences->textSize, 12);
  EXPECT_EQ(gPreferences->font.pixelSize, 12);
  EXPECT_EQ(std::get<int64_t>(program.store->values.at("imagePNG")), 1);
}

TEST(OptionsWindow, CancelChangesNothing) {
  Program program(Start{.plugged = false});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  box(*gOptionsWindowController, "textSizeFld").setCurrentIndex(0);
  click(button(*gOptionsWindowController, QDialogButtonBox::Cancel));
  EXPECT_EQ(gPreferences->textSize, 26);
  EXPECT_EQ(program.store->storeCalls, 0);
}

TEST(OptionsWindow, AChosenColourIsTakenWithOkAndForgottenWithCancel) {
  Program program(Start{.plugged = false});
  const Color before = gPreferences->lineColor;
  for (const auto which : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok}) {
    click(program.button(kOptions));
    ASSERT_TRUE(waitForOptions());
    const auto chooser = [] { return gOptionsWindowController->findChild<QColorDialog*>(); };
    click(*gOptionsWindowController->findChild<QWidget*>("lineColorFld"));
    ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
    chooser()->setCurrentColor(QColor(255, 0, 51));
    key("Return");
    ASSERT_TRUE(waitUntil([&] { return !chooser(); }));
    EXPECT_EQ(gPreferences->lineColor, before) << "not before OK";
    click(button(*gOptionsWindowController, which));
    ASSERT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
    EXPECT_EQ(gPreferences->lineColor == before, which == QDialogButtonBox::Cancel);
  }
  EXPECT_FLOAT_EQ(float(gPreferences->lineColor.red), 1.0F);
  EXPECT_NEAR(gPreferences->lineColor.blue, 0.2, 1e-4);
}

TEST(OptionsWindow, WhatWasChosenShowsInThePictureAtOnce) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  click(program.button("Line Item Identifier"));
  drag(program.container(), {200, 40}, {400, 40});
  const auto lineIs = [&](const QColor& color) {
    return program.screenshot().pixelColor(300, 40) == color;
  };
  ASSERT_TRUE(waitUntil([&] { return lineIs(QColor(0, 230, 230)); }));
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  gOptionsWindowController->findChild<ColorWell*>("lineColorFld")->setColor({1.0, 0.0, 0.0, 1.0});
  click(button(*gOptionsWindowController, QDialogButtonBox::Ok));
  EXPECT_TRUE(waitUntil([&] { return lineIs(QColor(255, 0, 0)); }));
}

TEST(OptionsWindow, AChosenFolderStaysAlthoughTheWindowIsCancelled) {
  QTemporaryDir folder;
  Program program(Start{.plugged = false});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  const auto chooser = [] { return gOptionsWindowController->findChild<QFileDialog*>(); };
  auto* folderFld = gOptionsWindowController->findChild<QPushButton*>("folderFld");
  click(*folderFld);
  ASSERT_TRUE(waitUntil([&] { return chooser() && hasKeyboard(*chooser()); }));
  EXPECT_EQ(chooser()->windowTitle(), "Choose path to save image and video files");
  xdotool({"type", folder.path()});
  key("Return");
  ASSERT_TRUE(waitUntil([&] { return !chooser(); }));
  EXPECT_EQ(folderFld->text(), "file://" + folder.path());
  click(button(*gOptionsWindowController, QDialogButtonBox::Cancel));
  ASSERT_TRUE(waitUntil([] { return !gOptionsWindowController; }));
  EXPECT_EQ(gPreferences->url, folder.path().toStdString());
  EXPECT_TRUE(program.store->values.contains("imagePath"));
}

TEST(OptionsWindow, WithoutAFolderItsButtonStaysEmpty) {
  Program program(Start{.plugged = false});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  EXPECT_EQ(gOptionsWindowController->findChild<QPushButton*>("folderFld")->text(), "");
}

TEST(OptionsWindow, AFolderIsShownAsAnAddressWithoutUnderliningAnything) {
  Program program(Start{.plugged = false});
  gPreferences->url = "/tmp/a&b c";
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  EXPECT_EQ(gOptionsWindowController->findChild<QPushButton*>("folderFld")->text(),
            "file:///tmp/a&&b%20c");
}

TEST(OptionsWindow, MinimisedItComesBackWhenItIsAskedForAgain) {
  Program program(Start{.plugged = false});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  minimize(*gOptionsWindowController);
  ASSERT_TRUE(waitUntil([] { return gOptionsWindowController->isMinimized(); }));
  click(program.button(kOptions));
  EXPECT_TRUE(waitUntil([] {
    return !gOptionsWindowController->isMinimized() && hasKeyboard(*gOptionsWindowController);
  }));
}

TEST(OptionsWindow, AnUnknownPhotoFormatSelectsNothing) {
  Program program(Start{.plugged = false, .prepare = [](MemoryKeyValueStore& store) {
                          store.values["imagePNG"] = int64_t(7);
                        }});
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  EXPECT_EQ(box(*gOptionsWindowController, "photoFormatFld").currentIndex(), -1);
  EXPECT_EQ(gPreferences->imagePNG, 7) << "not repaired";
}

TEST(OptionsWindow, ATextSizeOutOfRangeIsRepairedToTwentyFourInTheLiveSettings) {
  Program program(Start{.plugged = false});
  gPreferences->textSize = 50;
  click(program.button(kOptions));
  ASSERT_TRUE(waitForOptions());
  EXPECT_EQ(gPreferences->textSize, 24);
  EXPECT_EQ(program.store->storeCalls, 0);
}

TEST(HelpWindow, KeepsItsPlaceWhenItIsShownAgain) {
  Program program(Start{.plugged = false});
  key("F1");
  ASSERT_TRUE(waitUntil([] {
    return gCalibrationHelpWindowController && hasKeyboard(*gCalibrationHelpWindowController);
  }));
  waitForPlace(*gCalibrationHelpWindowController);
  const auto* first = gCalibrationHelpWindowController.get();
  gCalibrationHelpWindowController->move(30, 500);
  QPoint place;
  EXPECT_TRUE(waitUntil([&] {
    place = gCalibrationHelpWindowController->pos();
    return place.y() > 400 && isInItsPlace(*gCalibrationHelpWindowController);
  }));
  gCalibrationHelpWindowController->close();
  program.window().move(200, 80);
  click(program.button("Help Item Identifier"));
  ASSERT_TRUE(waitUntil([] { return hasKeyboard(*gCalibrationHelpWindowController); }));
  EXPECT_EQ(gCalibrationHelpWindowController.get(), first);
  waitForPlace(*gCalibrationHelpWindowController);
  EXPECT_EQ(gCalibrationHelpWindowController->pos(), place);
}

}  // namespace
}  // namespace tessary::test
