#pragma once

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QPushButton>
#include <gtest/gtest.h>

#include "Program.h"
#include "settings/PathGrants.h"
#include "settings/Preferences.h"
#include "settings/UserDefaults.h"

namespace tessary::test {

/// What a dialog needs around it: a window to stand on, and settings in memory.
class DialogRig : public ::testing::Test {
 protected:
  DialogRig() {
    window.setGeometry(200, 150, 800, 600);
    window.show();
    EXPECT_TRUE(waitUntil([this] { return hasKeyboard(window); }));
  }

  /// Opens a sheet as its owner would, and waits until it takes keys. `finished` counts its ends.
  void open(QDialog& dialog) {
    QObject::connect(&dialog, &QDialog::finished, &dialog, [this](int code) {
      ++ends;
      returnCode = code;
    });
    dialog.open();
    waitForKeys(dialog);
  }

  void waitForKeys(QWidget& dialog) {
    EXPECT_TRUE(waitUntil([&] { return hasKeyboard(dialog); }));
  }

  /// To the window below, for the next dialog. The window manager, busy with its own key, does not
  /// always pass the keys on by itself when it closes a dialog.
  void goBack() {
    EXPECT_TRUE(waitUntil([this] {
      if (!window.isActiveWindow()) window.activateWindow();
      return window.isActiveWindow();
    }));
  }

  template <typename T>
  static T& find(QWidget& dialog, const char* name) {
    return *dialog.findChild<T*>(QString::fromLatin1(name));
  }

  static QPushButton& button(QWidget& dialog, QDialogButtonBox::StandardButton which) {
    return *dialog.findChild<QDialogButtonBox*>()->button(which);
  }

  /// Each tick of the dialog's timer comes at once instead of after a tenth of a second.
  static void hurry(QWidget& dialog) {
    auto* timer = dialog.findChild<QTimer*>();
    EXPECT_EQ(timer->interval(), 100);
    timer->setInterval(0);
  }

  /// Saves so far; one save stores all settings in one go.
  int saves() const { return store.storeCalls; }

  LogCapture log;
  MemoryKeyValueStore store;
  UserDefaults defaults{store};
  PathGrants grants;
  Preferences preferences{registered(), grants};
  QMainWindow window;
  int ends = 0;
  int returnCode = -1;

 private:
  UserDefaults& registered() {
    Preferences::registerDefaults(defaults);
    return defaults;
  }
};

}  // namespace tessary::test
