#pragma once

#include <functional>
#include <map>

#include <QtCore/QObject>

#include "ui/Commands.h"

class QAction;
class QMainWindow;
class QMenu;

namespace tessary {

/// The commands as the user meets them: one action each, shown by the toolbar and by the main menu,
/// so that both always agree on whether it is available.
class Toolbar final : public QObject {
  Q_OBJECT
 public:
  /// `perform` runs a command; `validate` is the one rule of availability.
  Toolbar(QMainWindow& window, const std::function<void(Command)>& perform,
          std::function<bool(Command)> validate);

  /// Puts the toolbar's twenty-four entries into the window.
  void setupToolbar();
  /// Builds the main menu: application, microscope, measuring, help.
  void setupMenuItems();
  /// Works out anew which commands are available.
  void validateItems();

  QAction& action(Command command) { return *actions_.at(command); }

 private:
  void fillMenu(int menu, QMenu& target);
  void showAbout();

  QMainWindow& window_;
  std::function<bool(Command)> validate_;
  std::map<Command, QAction*> actions_;
};

}  // namespace tessary
