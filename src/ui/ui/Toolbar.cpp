#include "ui/Toolbar.h"

#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtGui/QShortcut>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolBar>

#include "ui/MenuStyle.h"
#include "ui/ThemedIcon.h"
#include "ui/Windows.h"

namespace tessary {
namespace {

constexpr int kAboutIconSize = 64;
const QKeySequence kQuitKey(Qt::CTRL | Qt::Key_Q);

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
    case Command::Line: return QKeySequence(Qt::CTRL | Qt::Key_4);
    case Command::Line2: return QKeySequence(Qt::CTRL | Qt::Key_5);
    case Command::Circle: return QKeySequence(Qt::CTRL | Qt::Key_6);
    case Command::Rectangle: return QKeySequence(Qt::CTRL | Qt::Key_7);
    case Command::Angle: return QKeySequence(Qt::CTRL | Qt::Key_8);
    case Command::Pencil: return QKeySequence(Qt::CTRL | Qt::Key_9);
    case Command::CameraControls: return QKeySequence(Qt::CTRL | Qt::Key_E);
    case Command::Text: return QKeySequence(Qt::CTRL | Qt::Key_T);
    case Command::Drag: return QKeySequence(Qt::Key_Escape);
    case Command::DeleteLast: return QKeySequence(Qt::CTRL | Qt::Key_Z);
    case Command::DeleteAll: return QKeySequence(Qt::CTRL | Qt::Key_D);
    case Command::Copy: return QKeySequence(Qt::CTRL | Qt::Key_C);
  }
  return {};
}

QWidget* makeFlexibleSpace(QWidget* parent) {
  auto* space = new QWidget(parent);
  space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  return space;
}

}  // namespace

Toolbar::Toolbar(QMainWindow& window) : window_(window) {
  for (const CommandInfo& info : allCommands()) {
    auto* action = new QAction(tr(info.menuTitle), this);
    action->setIconText(tr(info.label));
    action->setObjectName(QString::fromLatin1(info.identifier));
    action->setToolTip(tr(info.toolTip));
    action->setIcon(themedIcon(info.imageName));
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
  // With icons of the usual size all twenty buttons fit a window for the smallest frame, 640 pixels
  // wide.
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
  auto* style = new MenuStyle;
  style->setParent(&bar);
  const auto addMenu = [&](const QString& title) {
    QMenu* menu = bar.addMenu(title);
    menu->setStyle(style);
    return menu;
  };
  QMenu* application = addMenu(tr("&Tessary"));
  application->addAction(tr("&About Tessary"), this, &Toolbar::showAbout);
  application->addSeparator();
  application->addAction(&action(Command::Options));
  application->addSeparator();
  // All of them: a help or options window would keep the program running.
  application->addAction(tr("&Quit"), kQuitKey, qApp, &QApplication::closeAllWindows);
  qApp->installEventFilter(this);
  fillMenu(1, *addMenu(tr("&Microscope")));
  fillMenu(2, *addMenu(tr("M&easure")));
  fillViewMenu(*addMenu(tr("&View")));
  addMenu(tr("&Help"))->addAction(&action(Command::Help));
}

void Toolbar::fillViewMenu(QMenu& menu) {
  const auto add = [&](const QString& title, const QList<QKeySequence>& keys,
                       std::function<void()> perform) {
    menu.addAction(title, this, std::move(perform))->setShortcuts(keys);
  };
  // On most keyboards the plus is typed with Shift, above the equals sign.
  add(tr("Zoom &In"), {QKeySequence::ZoomIn, Qt::CTRL | Qt::Key_Equal},
      [this] { emit zoomDidStep(1); });
  add(tr("Zoom &Out"), {QKeySequence::ZoomOut}, [this] { emit zoomDidStep(-1); });
  add(tr("&100 Percent"), {Qt::CTRL | Qt::Key_0}, [this] { emit zoomDidReset(); });
  menu.addSeparator();
  add(tr("&Full Screen"), {Qt::Key_F11},
      [this] { window_.setWindowState(window_.windowState() ^ Qt::WindowFullScreen); });
  auto* openMenu = new QShortcut(Qt::Key_F10, &window_);
  connect(openMenu, &QShortcut::activated, this,
          [&bar = *window_.menuBar()] { bar.setActiveAction(bar.actions().constFirst()); });
}

bool Toolbar::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !watched->isWindowType()) return false;
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (QKeySequence(key.keyCombination()) != kQuitKey) return false;
  QMetaObject::invokeMethod(qApp, &QApplication::closeAllWindows, Qt::QueuedConnection);
  return true;
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
