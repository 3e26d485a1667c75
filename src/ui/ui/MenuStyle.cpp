#include "ui/MenuStyle.h"

#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtWidgets/QStyleOption>

namespace tessary {
namespace {

/// The picture for `QIcon::Selected`, whichever is asked for. An icon made of that picture would be
/// another one each time, and fill the toolkit's cache of scaled icons.
class SelectedIconEngine final : public QIconEngine {
 public:
  explicit SelectedIconEngine(const QIcon& icon) : icon_(icon) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State state) override {
    icon_.paint(painter, rect, Qt::AlignCenter, QIcon::Selected, state);
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State state) override {
    return icon_.pixmap(size, 1.0, QIcon::Selected, state);
  }
  QIconEngine* clone() const override { return new SelectedIconEngine(icon_); }

 private:
  QIcon icon_;
};

}  // namespace

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  constexpr State kHighlighted = State_Selected | State_Enabled;
  const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
  if (element != CE_MenuItem || !item || item->icon.isNull() ||
      (item->state & kHighlighted) != kHighlighted) {
    QProxyStyle::drawControl(element, option, painter, widget);
    return;
  }
  QStyleOptionMenuItem row = *item;
  row.icon = QIcon(new SelectedIconEngine(item->icon));
  QProxyStyle::drawControl(element, &row, painter, widget);
}

}  // namespace tessary
