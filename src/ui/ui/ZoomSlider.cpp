#include "ui/ZoomSlider.h"

#include <cmath>

#include <QtGui/QAccessible>

#include "preview/ViewGeometry.h"

namespace tessary {

ZoomSlider::ZoomSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setRange(0, kLargestZoom);
  setTickInterval(1);
  setPageStep(1);
  setValue(kZoom100);
}

int ZoomSlider::mapZoom100(int32_t zoom) { return int(mapZoom(zoom) * 100); }

QString ZoomSlider::percentText() const { return tr("%1 percent").arg(mapZoom100(value())); }

void ZoomSlider::setPercent(double wanted) {
  int nearest = minimum();
  for (int step = nearest; step <= maximum(); ++step)
    if (std::abs(mapZoom100(step) - wanted) < std::abs(mapZoom100(nearest) - wanted))
      nearest = step;
  setValue(nearest);
}

void ZoomSlider::sliderChange(SliderChange change) {
  QSlider::sliderChange(change);
  if (change != SliderValueChange) return;
  QAccessibleEvent described(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&described);
}

}  // namespace tessary
