#pragma once

#include <functional>
#include <memory>

#include "settings/Preferences.h"
#include "ui/Dialog.h"

namespace Ui {
class OptionsWindowController;
}

namespace tessary {

/// The floating window for colours, text size, folder and photo format. The folder is saved when it
/// is chosen; all else with OK.
class OptionsWindowController final : public Dialog {
  Q_OBJECT
 public:
  /// Fills its fields from `preferences`, which must outlive it.
  explicit OptionsWindowController(Preferences& preferences);
  ~OptionsWindowController() override;

  /// Places the window relative to the main window.
  void setParentWindow(const QWidget& parent);

 signals:
  /// OK was pressed and the settings are saved: "PreferencesDidChange".
  void preferencesDidChange();

 private:
  void windowDidLoad();
  void okClicked();
  void cancelClicked();
  void folderClicked();
  void showFolder();

  std::unique_ptr<Ui::OptionsWindowController> ui_;
  Preferences& preferences_;
};

/// The options window while it exists.
extern std::unique_ptr<OptionsWindowController> gOptionsWindowController;

}  // namespace tessary
