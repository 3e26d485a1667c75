#pragma once

#include "app/Platform.h"
#include "capture/MicroscopeCatalogue.h"
#include "settings/PathGrants.h"
#include "settings/RememberedControls.h"
#include "settings/UserDefaults.h"

namespace tessary {

/// The application's frame: brings the program up in its order, and shows the two auxiliary
/// windows. Nothing is saved at the end of the process, because each setting is saved when it
/// changes.
class AppDelegate {
 public:
  explicit AppDelegate(Platform& platform, Eligible eligible = Eligible::Microscopes);
  /// Lets the windows go, and with them what they use of the platform.
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  void applicationDidFinishLaunching();
  /// The process is about to end, maybe because the display has gone: stops the camera and finishes
  /// a movie that runs.
  void finishWork();
  /// Brings up the options window: a new one, or the one that is open.
  void preferencesClicked();
  /// Brings up the help window, which is made once.
  void howToClicked();

 private:
  Platform& platform_;
  UserDefaults defaults_;
  RememberedControls rememberedControls_{defaults_};
  PathGrants grants_;
  MicroscopeCatalogue catalogue_;
};

}  // namespace tessary
