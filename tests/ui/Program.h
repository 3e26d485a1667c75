#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QSlider>
#include <QtWidgets/QToolBar>

#include "Desktop.h"
#include "LogCapture.h"
#include "MemoryKeyValueStore.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "base/FourCharCode.h"
#include "simulated/SimulatedCaptureSystem.h"
#include "ui/CalibrationHelpWindowController.h"
#include "ui/OptionsWindowController.h"
#include "ui/PreviewWindowController.h"

namespace tessary::test {

/// Lets events run until `condition` holds. False after `limit`.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

/// Runs xdotool with these arguments, letting events run meanwhile: real events, through the
/// display.
void xdotool(const QStringList& arguments);
/// The same, but nothing is handled meanwhile: all of it finds the windows as they are now.
void xdotoolAtOnce(const QStringList& arguments);

/// Minimises, and waits for the window manager, who would mix it up with a return that follows at
/// once.
void minimize(QWidget& window);

/// The pointer, moved and pressed as a hand would. Positions are the widget's own, in points.
void moveTo(const QWidget& widget, QPoint position);
/// Onto a pixel of the display's, counted from the widget's corner.
void moveToPixel(const QWidget& widget, QPoint pixel);
void press();
void release();
void click(const QWidget& widget, QPoint position);
void click(const QWidget& widget);
/// Press, a few steps, release.
void drag(const QWidget& widget, QPoint from, QPoint to);
/// A key as xdotool names it, e.g. "Return" or "ctrl+m".
void key(const char* name);
/// Opens the menu of that letter, with Alt; null if none opens.
QMenu* openMenu(const char* letter);
/// The window of that title once it has the keyboard, null if it doesn't come.
QWidget* waitForWindow(const char* title);
/// The same after these keys, of which each opens the window that the next one goes to.
QWidget* openByKey(const std::vector<const char*>& names, const char* title);

/// How the program finds the world when it starts.
struct Start {
  bool plugged = true;
  bool remembered = true;  ///< The microscope, at `width` by `height`.
  int32_t width = 640;
  int32_t height = 480;
  uint32_t subtype = kMediaSubTypeMJPEG;  ///< The remembered one.
  std::vector<uint32_t> offered = {kMediaSubTypeMJPEG, kMediaSubTypeYUYV};
  std::function<void(MemoryKeyValueStore&)> prepare = {};
  std::function<void(Platform&)> furnish = {};  ///< Puts other things in the platform's place.
};

/// The whole program on a simulated microscope and a store in memory, as AppDelegate brings it up.
class Program {
 public:
  explicit Program(Start start = {});
  ~Program();
  Program(const Program&) = delete;

  /// Waits for the first tick with a picture that fills the window, and for the tools to be ready.
  bool waitForPicture();
  MainWindow& window() { return gPreviewWindowController->window(); }
  QWidget& container();
  QSlider& slider(const char* name) { return *find<QSlider>(name); }
  QString text(const char* name) { return find<QLabel>(name)->text(); }
  /// The toolbar's button of a command.
  QWidget& button(const char* identifier);
  bool isEnabled(const char* identifier);
  /// How many of the toolbar's twenty commands can be given.
  int enabledCommands();
  /// The picture area as it is on screen.
  QImage screenshot();

  template <typename T>
  T* find(const char* name) {
    return window().findChild<T*>(QString::fromLatin1(name));
  }

  LogCapture log;
  SimulatedCaptureSystem* microscope = nullptr;  // owned by the platform
  MemoryKeyValueStore* store = nullptr;          // likewise
  std::unique_ptr<Platform> platform;
  std::unique_ptr<AppDelegate> delegate;
};

}  // namespace tessary::test
