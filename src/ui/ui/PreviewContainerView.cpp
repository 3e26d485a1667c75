#include "ui/PreviewContainerView.h"

namespace tessary {

PreviewContainerView::PreviewContainerView() {
  // What shows until the picture covers it.
  QPalette dark = palette();
  dark.setColor(QPalette::Window, QColor::fromRgbF(0.1F, 0.1F, 0.1F));
  setPalette(dark);
  setAutoFillBackground(true);
}

void PreviewContainerView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  emit frameDidChange();
}

}  // namespace tessary
