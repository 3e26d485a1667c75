#include "ui/PopUpButton.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QWheelEvent>

namespace tessary {

void PopUpButton::wheelEvent(QWheelEvent* event) { event->ignore(); }

void PopUpButton::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Space:
    case Qt::Key_F4: showPopup(); break;
    default: event->ignore();  // Return and Escape are the dialog's
  }
}

}  // namespace tessary
