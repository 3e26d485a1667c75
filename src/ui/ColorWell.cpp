#include "ui/ColorWell.h"

#include <algorithm>

#include <QtWidgets/QColorDialog>

namespace tessary {
namespace {

QColor displayColor(const Color& color) {
  const auto clamped = [](double value) { return float(std::clamp(value, 0.0, 1.0)); };
  return QColor::fromRgbF(clamped(color.red), clamped(color.green), clamped(color.blue));
}

}  // namespace

ColorWell::ColorWell(QWidget* parent) : QPushButton(parent) {
  connect(this, &QPushButton::clicked, this, &ColorWell::chooseColor);
}

void ColorWell::setColor(const Color& color) {
  color_ = color;
  const QSize size(64, 16);
  QPixmap swatch(size);
  swatch.fill(displayColor(color));
  setIconSize(size);
  setIcon(swatch);
}

void ColorWell::chooseColor() {
  auto* dialog = new QColorDialog(displayColor(color_), this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& chosen) {
    setColor({chosen.redF(), chosen.greenF(), chosen.blueF(), 1.0});
  });
  dialog->open();
}

}  // namespace tessary
