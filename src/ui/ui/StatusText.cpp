#include "ui/StatusText.h"

#include <QtCore/QEvent>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetrics>
#include <QtWidgets/QApplication>

#include "ui/OverPicture.h"

namespace tessary {

StatusText::StatusText(QWidget* container) : QLabel(container) { styleOverPicture(*this); }

void StatusText::showText(const QString& text) {
  setText(text);
  fitFont();
  show();
}

bool StatusText::event(QEvent* event) {
  const bool handled = QLabel::event(event);
  if (event->type() == QEvent::ApplicationFontChange) fitFont();
  return handled;
}

void StatusText::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  fitFont();
}

void StatusText::fitFont() {
  QFont font = QApplication::font(this);
  const auto fits = [&] {
    const QFontMetrics metrics(font, this);
    return metrics.horizontalAdvance(text()) <= width() && metrics.height() <= height();
  };
  for (int size = QFontInfo(font).pixelSize(); size > 1 && !fits();) font.setPixelSize(--size);
  setFont(font);
}

}  // namespace tessary
