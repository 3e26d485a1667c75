#include "ui/OverPicture.h"

#include <QtGui/QPalette>
#include <QtWidgets/QLabel>
#include <QtWidgets/QSlider>

namespace tessary {
namespace {

// Over white the plate leaves a grey that white letters stand out from at 10 to 1.
constexpr QColor kPlate(0, 0, 0, 190);
constexpr QColor kTicks(255, 255, 255);
constexpr QColor kTicksWithFocus(145, 212, 255);

}  // namespace

void styleOverPicture(QLabel& text) {
  text.setStyleSheet(
      QStringLiteral("color: white; background: rgba(0, 0, 0, %1);").arg(kPlate.alpha()));
  text.setAttribute(Qt::WA_TransparentForMouseEvents);
}

void styleOverPicture(QSlider& slider) {
  QPalette palette;
  // Styles make ticks of a darker shade of the window's colour, which is dark here already, of that
  // of texts, or, with the keyboard's focus, of what is highlighted.
  palette.setColor(QPalette::Window, kTicks);
  palette.setColor(QPalette::WindowText, kTicks);
  palette.setColor(QPalette::Highlight, kTicksWithFocus);
  palette.setColor(QPalette::ToolTipBase, kPlate);  // of no use to a slider otherwise
  slider.setPalette(palette);
  slider.setBackgroundRole(QPalette::ToolTipBase);
  slider.setAutoFillBackground(true);
}

}  // namespace tessary
