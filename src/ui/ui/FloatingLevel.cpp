#include "ui/FloatingLevel.h"

#include <algorithm>

#include <QtCore/QEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace tessary {

FloatingLevel::FloatingLevel(QWidget& window) : QObject(&window), window_(window) {
  window_.setWindowFlag(Qt::WindowStaysOnTopHint);
  qApp->installEventFilter(this);
}

bool FloatingLevel::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show || event->type() == QEvent::Hide) {
    const auto* widget = qobject_cast<QWidget*>(watched);
    // Told before the platform shows it, so that what is modal comes to lie on top.
    if (widget && widget->isWindow() && (widget->isModal() || widget == &window_)) update();
  }
  return false;
}

void FloatingLevel::update() {
  const bool modalIsUp = std::ranges::any_of(QApplication::topLevelWidgets(), [](QWidget* widget) {
    return widget->isModal() && widget->isVisible();
  });
  // The platform's window only: the widget would hide to change its level.
  if (QWindow* window = window_.windowHandle())
    window->setFlag(Qt::WindowStaysOnTopHint, !modalIsUp);
}

}  // namespace tessary
