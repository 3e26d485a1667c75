#include "ui/OverPicture.h"

#include <QtWidgets/QLabel>

namespace tessary {

void styleOverPicture(QLabel& text) {
  text.setStyleSheet(QStringLiteral("color: white; background: rgba(0, 0, 0, 90);"));
  text.setAttribute(Qt::WA_TransparentForMouseEvents);
}

}  // namespace tessary
