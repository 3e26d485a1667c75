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
  explicit Toolbar(QMainWindow& window);

  /// Puts the toolbar's twenty-four entries into the window.
  void setupToolbar();
  /// Builds the main menu: application, microscope, measuring, view, help. The key that quits then
  /// does so in every window, also in one that keeps the others from their keys.
  void setupMenuItems();
  /// Works out anew which commands are available; `validate` is the one rule of that.
  void validateItems(const std::function<bool(Command)>& validate);
  QAction& action(Command command) { return *actions_.at(command); }

 signals:
  /// The user chose a command, by button, menu or key.
  void commandDidClick(Command command);
  /// The user wants the zoom so many steps larger, or 100 percent.
  void zoomDidStep(int steps);
  void zoomDidReset();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void fillMenu(int menu, QMenu& target);
  void fillViewMenu(QMenu& menu);
  void showAbout();

  QMainWindow& window_;
  std::map<Command, QAction*> actions_;
};

}  // namespace tessary
