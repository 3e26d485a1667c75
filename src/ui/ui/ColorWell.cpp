#include "ui/ColorWell.h"

#include <algorithm>

#include <QtGui/QPixmapCache>
#include <QtWidgets/QColorDialog>

#include "dialogs/ColorText.h"

namespace tessary {
namespace {

constexpr QSize kSwatch(64, 16);

QColor displayColor(const Color& color) {
  const auto clamped = [](double value) { return float(std::clamp(value, 0.0, 1.0)); };
  return QColor::fromRgbF(clamped(color.red), clamped(color.green), clamped(color.blue));
}

/// The same picture for the same colour: what the toolkit keeps of an icon it keeps once.
QPixmap swatchOf(const QColor& color) {
  const QString key = QStringLiteral("swatch ") + color.name();
  QPixmap swatch;
  if (QPixmapCache::find(key, &swatch)) return swatch;
  swatch = QPixmap(kSwatch);
  swatch.fill(color);
  QPixmapCache::insert(key, swatch);
  return swatch;
}

}  // namespace

ColorWell::ColorWell(QWidget* parent) : QPushButton(parent) {
  setAutoDefault(false);  // Return is for the dialog that it is in
  connect(this, &QPushButton::clicked, this, &ColorWell::chooseColor);
}

void ColorWell::setColor(const Color& color) {
  color_ = color;
  setIconSize(kSwatch);
  setIcon(swatchOf(displayColor(color)));
  setAccessibleDescription(QString::fromStdString(colorText(color)));
}

void ColorWell::chooseColor() {
  auto* dialog = new QColorDialog(displayColor(color_), this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(accessibleName());
  connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& chosen) {
    setColor({chosen.redF(), chosen.greenF(), chosen.blueF(), 1.0});
  });
  dialog->open();
}

}  // namespace tessary
