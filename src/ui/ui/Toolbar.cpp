#include "ui/Toolbar.h"

#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolBar>

#include "ui/Windows.h"

namespace tessary {
namespace {

constexpr int kIconSize = 24;
constexpr int kAboutIconSize = 64;

/// Keys that take nothing from the picture's own (Space, Delete and Backspace).
QKeySequence shortcut(Command command) {
  switch (command) {
    case Command::Help: return QKeySequence(Qt::Key_F1);
    case Command::Options: return QKeySequence(Qt::CTRL | Qt::Key_Comma);
    case Command::Microscope: return QKeySequence(Qt::CTRL | Qt::Key_M);
    case Command::Shutter: return QKeySequence(Qt::CTRL | Qt::Key_S);
    case Command::Record: return QKeySequence(Qt::CTRL | Qt::Key_R);
    case Command::Folder: return QKeySequence(Qt::CTRL | Qt::Key_O);
    case Command::Calibration: return QKeySequence(Qt::CTRL | Qt::Key_K);
    case Command::Crosshair: return QKeySequence(Qt::CTRL | Qt::Key_1);
    case Command::Grid: return QKeySequence(Qt::CTRL | Qt::Key_2);
    case Command::Concentric: return QKeySequence(Qt::CTRL | Qt::Key_3);
    case Command::Text: return QKeySequence(Qt::CTRL | Qt::Key_T);
    case Command::Drag: return QKeySequence(Qt::Key_Escape);
    case Command::DeleteLast: return QKeySequence(Qt::CTRL | Qt::Key_Z);
    default: return {};
  }
}

QWidget* makeFlexibleSpace(QWidget* parent) {
  auto* space = new QWidget(parent);
  space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  return space;
}

}  // namespace

Toolbar::Toolbar(QMainWindow& window) : window_(window) {
  for (const CommandInfo& info : allCommands()) {
    auto* action = new QAction(tr(info.label), this);
    action->setObjectName(QString::fromLatin1(info.identifier));
    action->setToolTip(tr(info.toolTip));
    action->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(info.imageName))));
    action->setShortcut(shortcut(info.command));
    connect(action, &QAction::triggered, this,
            [this, command = info.command] { emit commandDidClick(command); });
    actions_[info.command] = action;
  }
}

void Toolbar::setupToolbar() {
  auto* toolbar = new QToolBar(&window_);
  toolbar->setObjectName(QStringLiteral("TessaryToolbar"));
  toolbar->setWindowTitle(tr("Toolbar"));
  toolbar->setMovable(false);
  toolbar->setFloatable(false);
  toolbar->toggleViewAction()->setVisible(false);
  toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
  toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
  toolbar->setIconSize(QSize(kIconSize, kIconSize));
  // All twenty buttons fit a window for the smallest frame, 640 pixels wide.
  toolbar->setStyleSheet(
      QStringLiteral("QToolBar { spacing: 0px; } QToolButton { padding: 1px; }"));
  for (const ToolbarEntry& entry : toolbarDefaultItems()) {
    if (entry.flexibleSpace)
      toolbar->addWidget(makeFlexibleSpace(toolbar));
    else
      toolbar->addAction(&action(entry.command));
  }
  window_.addToolBar(Qt::TopToolBarArea, toolbar);
  window_.setUnifiedTitleAndToolBarOnMac(false);
}

void Toolbar::setupMenuItems() {
  QMenuBar& bar = *window_.menuBar();
  QMenu* application = bar.addMenu(tr("&Tessary"));
  application->addAction(tr("&About Tessary"), this, &Toolbar::showAbout);
  application->addSeparator();
  application->addAction(&action(Command::Options));
  application->addSeparator();
  // All of them: a help or options window would keep the program running.
  application->addAction(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), qApp,
                         &QApplication::closeAllWindows);
  fillMenu(1, *bar.addMenu(tr("&Microscope")));
  fillMenu(2, *bar.addMenu(tr("M&easure")));
  bar.addMenu(tr("&Help"))->addAction(&action(Command::Help));
}

void Toolbar::showAbout() {
  QMessageBox& about = openAlert(
      window_, QMessageBox::NoIcon,
      tr("<b>Tessary %1</b><p>Shows the live picture of a USB microscope and measures on it.")
          .arg(QApplication::applicationVersion()));
  about.setWindowTitle(tr("About Tessary"));
  about.setIconPixmap(QApplication::windowIcon().pixmap(kAboutIconSize));
}

void Toolbar::fillMenu(int menu, QMenu& target) {
  int position = 0;
  for (const MenuEntry& entry : menuItems()) {
    if (entry.menu != menu) continue;
    for (; position < entry.position; ++position) target.addSeparator();
    target.addAction(&action(entry.command));
    ++position;
  }
}

void Toolbar::validateItems(const std::function<bool(Command)>& validate) {
  for (const auto& [command, action] : actions_) action->setEnabled(validate(command));
}

}  // namespace tessary
