#include "ui/PreviewContainerView.h"

#include <QtGui/QWheelEvent>

#include "platform/Surface.h"

namespace tessary {

PreviewContainerView::PreviewContainerView() {
  // What shows until the picture covers it.
  QPalette dark = palette();
  dark.setColor(QPalette::Window,
                QColor::fromRgbF(kSurroundingGrey, kSurroundingGrey, kSurroundingGrey));
  setPalette(dark);
  setAutoFillBackground(true);
}

void PreviewContainerView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  emit frameDidChange();
}

void PreviewContainerView::wheelEvent(QWheelEvent* event) {
  wheelAngle_ += event->angleDelta().y();
  const int steps = wheelAngle_ / QWheelEvent::DefaultDeltasPerStep;
  wheelAngle_ %= QWheelEvent::DefaultDeltasPerStep;
  if (steps != 0) emit wheelDidTurn(steps);
}

}  // namespace tessary
