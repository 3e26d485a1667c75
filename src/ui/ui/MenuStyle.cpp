#include "ui/MenuStyle.h"

#include <QtGui/QPainter>
#include <QtWidgets/QStyleOption>

namespace tessary {

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  constexpr State kHighlighted = State_Selected | State_Enabled;
  const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  if (element != CE_MenuItem || !item || item->icon.isNull() ||
      (item->state & kHighlighted) != kHighlighted) {
    QProxyStyle::drawControl(element, option, painter, widget);
    return;
  }
  const int size = pixelMetric(PM_SmallIconSize, option, widget);
  QStyleOptionMenuItem row = *item;
  row.icon = QIcon(
      item->icon.pixmap(QSize(size, size), painter->device()->devicePixelRatio(), QIcon::Selected));
  QProxyStyle::drawControl(element, &row, painter, widget);
}

}  // namespace tessary
