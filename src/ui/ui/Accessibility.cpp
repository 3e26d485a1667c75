#include "ui/Accessibility.h"

#include <QtGui/QAccessible>
#include <QtWidgets/QAccessibleWidget>

#include "ui/Announcer.h"
#include "ui/PreviewWidget.h"
#include "ui/ZoomSlider.h"

namespace tessary {
namespace {

/// A graphic; what lies over it is put into words whenever somebody asks.
class AccessiblePicture final : public QAccessibleWidget {
 public:
  explicit AccessiblePicture(PreviewWidget& picture)
      : QAccessibleWidget(&picture, QAccessible::Graphic), picture_(picture) {}

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Description ? picture_.overlayText()
                                            : QAccessibleWidget::text(kind);
  }

 private:
  const PreviewWidget& picture_;
};

/// A slider whose value is in percent. The unit can only be said in words: the description, since
/// screen readers are not handed a value's text.
class AccessibleZoom final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleZoom(ZoomSlider& slider)
      : QAccessibleWidget(&slider, QAccessible::Slider), slider_(slider) {}

  QString text(QAccessible::Text kind) const override {
    const bool isValue = kind == QAccessible::Value || kind == QAccessible::Description;
    return isValue ? slider_.percentText() : QAccessibleWidget::text(kind);
  }
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QVariant currentValue() const override { return ZoomSlider::mapZoom100(slider_.value()); }
  void setCurrentValue(const QVariant& value) override { slider_.setPercent(value.toDouble()); }
  QVariant maximumValue() const override { return ZoomSlider::mapZoom100(slider_.maximum()); }
  QVariant minimumValue() const override { return ZoomSlider::mapZoom100(slider_.minimum()); }
  QVariant minimumStepSize() const override {
    return ZoomSlider::mapZoom100(slider_.minimum() + 1) -
           ZoomSlider::mapZoom100(slider_.minimum());
  }

 private:
  ZoomSlider& slider_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  if (auto* picture = qobject_cast<PreviewWidget*>(object)) return new AccessiblePicture(*picture);
  if (auto* slider = qobject_cast<ZoomSlider*>(object)) return new AccessibleZoom(*slider);
  if (auto* announcement = qobject_cast<Announcement*>(object))
    return new QAccessibleWidget(announcement, QAccessible::Notification);
  return nullptr;
}

}  // namespace

void installAccessibleInterfaces() { QAccessible::installFactory(makeInterface); }

}  // namespace tessary
