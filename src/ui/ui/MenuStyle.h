#pragma once

#include <QtWidgets/QProxyStyle>

namespace tessary {

/// The desktop's style for menus, with the picture for `QIcon::Selected` in the highlighted row.
/// Some styles ask there for the one of a button below the pointer.
class MenuStyle final : public QProxyStyle {
  Q_OBJECT
 public:
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
};

}  // namespace tessary
