#include "ui/SharedIconsStyle.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleOption>

namespace tessary {
namespace {

/// As styles look for it.
Qt::LayoutDirection direction(const QStyleOption* option, const QWidget* widget) {
  if (option) return option->direction;
  return widget ? widget->layoutDirection() : QApplication::layoutDirection();
}

}  // namespace

QIcon SharedIconsStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                                     const QWidget* widget) const {
  const auto [icon, isNew] = icons_.try_emplace({which, direction(option, widget)});
  if (isNew) icon->second = QProxyStyle::standardIcon(which, option, widget);
  return icon->second;
}

}  // namespace tessary
