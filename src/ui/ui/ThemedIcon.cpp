#include "ui/ThemedIcon.h"

#include <algorithm>

#include <QtCore/QString>
#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtGui/QPixmap>
#include <QtWidgets/QApplication>

#include "ui/Contrast.h"

namespace tessary {
namespace {

/// What resources/icons is drawn in.
constexpr QColor kInks[] = {QColor(0x2f, 0x7e, 0xa8), QColor(0xd2, 0x55, 0x3f)};
/// A little more than pictures need: a toolbar's ground is not quite the window's colour.
constexpr double kEnough = 3.3;
/// Below the pointer a button's ground comes nearer to the inks in a dark theme.
constexpr double kEnoughBelowPointer = 4.5;
constexpr int kSteps = 8;

QColor mixed(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](double from, double to) { return float(from + (to - from) * share); };
  return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()),
                          mix(a.blueF(), b.blueF()));
}

/// How much of the theme's text colour the inks need, from 0 to 1, to stand out from its windows by
/// `enough`.
double shareOfText(const QPalette& theme, double enough) {
  for (int step = 0; step < kSteps; ++step) {
    const double share = double(step) / kSteps;
    if (std::ranges::all_of(kInks, [&](const QColor& ink) {
          return contrastRatio(mixed(ink, theme.windowText().color(), share),
                               theme.window().color()) >= enough;
        }))
      return share;
  }
  return 1;
}

class ThemedIconEngine final : public QIconEngine {
 public:
  explicit ThemedIconEngine(const QIcon& drawn) : drawn_(drawn) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const double ratio = painter->device()->devicePixelRatio();
    QPixmap picture = pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state);
    painter->drawPixmap(rect, picture);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    if (mode == QIcon::Disabled) return drawn_.pixmap(size, 1.0, mode, state);
    QPixmap picture = drawn_.pixmap(size, 1.0, QIcon::Normal, state);
    if (mode == QIcon::Selected) {
      tint(picture, QApplication::palette("QMenu").highlightedText().color(), 1);
    } else {
      const QPalette theme = QApplication::palette();
      const double enough = mode == QIcon::Active ? kEnoughBelowPointer : kEnough;
      tint(picture, theme.windowText().color(), shareOfText(theme, enough));
    }
    return picture;
  }

  QIconEngine* clone() const override { return new ThemedIconEngine(drawn_); }

 private:
  static void tint(QPixmap& picture, QColor color, double share) {
    if (share == 0) return;
    color.setAlphaF(float(share));
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    painter.fillRect(picture.rect(), color);
  }

  QIcon drawn_;
};

}  // namespace

QIcon themedIcon(const char* name) {
  return QIcon(
      new ThemedIconEngine(QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name)))));
}

}  // namespace tessary
