// What can be told from what it lies on, under light and dark themes and those of high contrast.

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include <QtGui/QPainter>
#include <QtGui/QPixmapCache>
#include <QtGui/QScreen>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleOption>
#include <QtWidgets/QToolButton>
#include <gtest/gtest.h>

#include "Program.h"
#include "ui/Contrast.h"
#include "ui/MenuStyle.h"
#include "ui/OverPicture.h"
#include "ui/StatusText.h"
#include "ui/ThemedIcon.h"

namespace tessary::test {
namespace {

constexpr double kForTexts = 4.5;
constexpr double kForPictures = 3;

struct Theme {
  const char* name;
  QColor window, base, text, highlight, highlightedText;
};

const Theme kThemes[] = {
    {"light", {0xef, 0xef, 0xef}, Qt::white, Qt::black, {0x30, 0x8c, 0xc6}, Qt::white},
    {"dark", {0x32, 0x32, 0x32}, {0x24, 0x24, 0x24}, Qt::white, {0x2a, 0x82, 0xda}, Qt::white},
    {"high contrast, light", Qt::white, Qt::white, Qt::black, Qt::black, Qt::white},
    {"high contrast, dark", Qt::black, Qt::black, Qt::white, Qt::yellow, Qt::black},
};

/// The desktop has another theme for as long as this lives.
class Themed {
 public:
  explicit Themed(const Theme& theme) {
    QPalette palette(theme.window, theme.window);
    palette.setColor(QPalette::Base, theme.base);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
      palette.setColor(role, theme.text);
    palette.setColor(QPalette::Highlight, theme.highlight);
    palette.setColor(QPalette::HighlightedText, theme.highlightedText);
    QApplication::setPalette(palette);
  }
  ~Themed() { QApplication::setPalette(usual_); }
  Themed(const Themed&) = delete;

 private:
  const QPalette usual_ = QApplication::palette();
};

/// The least that a wholly covered part of the icon stands out from `ground`.
double leastContrast(const QIcon& icon, QIcon::Mode mode, const QColor& ground) {
  // So large that strokes have an inside.
  const QImage picture = icon.pixmap(QSize(96, 96), 1.0, mode).toImage();
  double least = 21;
  int covered = 0;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x) {
      const QColor color = picture.pixelColor(x, y);
      if (color.alpha() != 255) continue;
      least = std::min(least, contrastRatio(color, ground));
      ++covered;
    }
  return covered > 100 ? least : 1;  // nothing is seen of an empty one
}

/// The share of an area of the screen that stands out from its own ground, the colour of its upper
/// left corner.
double shareSeen(const QImage& area) {
  const QColor ground = area.pixelColor(0, 0);
  int seen = 0;
  for (int y = 0; y < area.height(); ++y)
    for (int x = 0; x < area.width(); ++x)
      seen += contrastRatio(area.pixelColor(x, y), ground) >= kForPictures;
  return double(seen) / (area.width() * area.height());
}

QImage onScreen(const QWidget& widget, const QRect& part) {
  const QPoint corner = widget.mapToGlobal(part.topLeft());
  return widget.screen()
      ->grabWindow(0, corner.x(), corner.y(), part.width(), part.height())
      .toImage();
}

TEST(Themes, ContrastIsThatOfTheGuidelines) {
  EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 0.001);
  EXPECT_NEAR(contrastRatio(Qt::white, QColor(0x76, 0x76, 0x76)), 4.54, 0.005);
  EXPECT_NEAR(contrastRatio(QColor(0xff, 0, 0), Qt::white), 4.0, 0.005);
  EXPECT_EQ(contrastRatio(Qt::red, Qt::red), 1);
}

TEST(Themes, IconsStandOutFromToolbarAndHighlightedRow) {
  for (const Theme& theme : kThemes) {
    SCOPED_TRACE(theme.name);
    const Themed themed(theme);
    for (const CommandInfo& info : allCommands()) {
      const QIcon icon = themedIcon(info.imageName);
      EXPECT_GE(leastContrast(icon, QIcon::Normal, theme.window), kForPictures) << info.imageName;
      EXPECT_GE(leastContrast(icon, QIcon::Active, theme.window), kForPictures) << info.imageName;
      EXPECT_GE(leastContrast(icon, QIcon::Selected, theme.highlight), kForPictures)
          << info.imageName;
    }
  }
}

TEST(Themes, IconsAreSeenInTheToolbarBelowThePointerAndInAMenusHighlightedRow) {
  for (const Theme& theme : kThemes) {
    SCOPED_TRACE(theme.name);
    const Themed themed(theme);
    Program program;
    ASSERT_TRUE(program.waitForPicture());
    moveTo(program.container(), program.container().rect().center());  // not over a button
    const auto& button = dynamic_cast<QToolButton&>(program.button("Grid Item Identifier"));
    // A quarter of its way is the icon's own margin.
    const int inset = (button.width() - button.iconSize().width()) / 2 + 1;
    const QRect inButton = button.rect().adjusted(inset, inset, -inset, -inset);
    EXPECT_TRUE(waitUntil([&] { return shareSeen(onScreen(button, inButton)) > 0.2; }));
    const QImage before = onScreen(button, button.rect());
    moveTo(button, button.rect().center());
    EXPECT_TRUE(waitUntil([&] { return onScreen(button, button.rect()) != before; }));
    EXPECT_TRUE(waitUntil([&] { return shareSeen(onScreen(button, inButton)) > 0.2; }))
        << "below the pointer " << shareSeen(onScreen(button, inButton));

    QMenu* opened = openMenu("e");
    ASSERT_TRUE(opened);
    QMenu& menu = *opened;
    QAction& grid = *button.defaultAction();
    const QRect row = menu.actionGeometry(&grid);
    key("Down");  // past calibration and crosshair
    key("Down");
    ASSERT_TRUE(waitUntil([&] { return menu.activeAction() == &grid; }));
    const int size = menu.style()->pixelMetric(QStyle::PM_SmallIconSize);
    QRect icon(0, 0, size, size);
    icon.moveCenter({row.left() + row.height() / 2 + 2, row.center().y()});
    QImage shown;
    EXPECT_TRUE(waitUntil([&] {
      shown = onScreen(menu, icon);
      return shareSeen(shown) > 0.2;
    })) << shareSeen(shown);
    key("Escape");
    key("Escape");
  }
}

/// A picture without an equal, as a coarse specimen would be.
QImage noise(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  std::minstd_rand random(1);
  for (int y = 0; y < size.height(); ++y)
    for (int x = 0; x < size.width(); ++x)
      image.setPixelColor(x, y,
                          QColor(int(random() % 256), int(random() % 256), int(random() % 256)));
  return image;
}

/// Pictures that are as hard to write on as can be.
std::vector<QImage> pictures(QSize size) {
  QImage white(size, QImage::Format_RGB32);
  QImage black(size, QImage::Format_RGB32);
  white.fill(Qt::white);
  black.fill(Qt::black);
  return {white, black, noise(size)};
}

TEST(Themes, AHighlightedRowKeepsNothingInTheToolkitsCacheEachTimeItIsPainted) {
  const int limit = QPixmapCache::cacheLimit();
  QPixmapCache::clear();
  QPixmapCache::setCacheLimit(100);  // kilobytes
  QPixmap first(16, 16);
  first.fill(Qt::red);
  QPixmapCache::insert("first", first);
  QMenu menu;
  MenuStyle style;
  QStyleOptionMenuItem row;
  row.initFrom(&menu);
  row.rect = QRect(0, 0, 200, 24);
  row.icon = themedIcon("Grid");
  row.text = "Grid";
  row.state = QStyle::State_Selected | QStyle::State_Enabled;
  QImage image(row.rect.size(), QImage::Format_RGB32);
  QPainter painter(&image);
  for (int i = 0; i < 1000; ++i) style.drawControl(QStyle::CE_MenuItem, &row, &painter, &menu);
  EXPECT_TRUE(QPixmapCache::find("first", &first)) << "others have pushed it out";
  QPixmapCache::setCacheLimit(limit);
}

TEST(Themes, TheButtonsOfDialogsHaveTheSameIconsEachTimeOneOpens) {
  const auto icons = [] {
    QDialogButtonBox box(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help |
                         QDialogButtonBox::Close);
    std::vector<qint64> keys;
    for (const QAbstractButton* button : box.buttons()) keys.push_back(button->icon().cacheKey());
    return keys;
  };
  const std::vector<qint64> first = icons();
  EXPECT_EQ(first.size(), 4);
  EXPECT_EQ(icons(), first);
}

TEST(Themes, StatusTextsCanBeReadOverAnyPicture) {
  const QRect box(15, 10, 150, 19);
  for (const Theme& theme : kThemes) {
    const Themed themed(theme);
    for (const QImage& picture : pictures({180, 40})) {
      QLabel container;
      container.setPixmap(QPixmap::fromImage(picture));
      container.resize(picture.size());
      StatusText text(&container);
      text.setGeometry(box);
      const auto grabbed = [&](const char* words) {
        text.showText(QString::fromLatin1(words));
        return container.grab(box).toImage();
      };
      const QImage plate = grabbed("");
      const QImage written = grabbed("1280x720  fps:30");
      QColor letters = Qt::black;
      double least = 21;
      for (int y = 0; y < plate.height(); ++y)
        for (int x = 0; x < plate.width(); ++x)
          if (const QColor color = written.pixelColor(x, y);
              color != plate.pixelColor(x, y) && color.lightness() > letters.lightness())
            letters = color;
      for (int y = 0; y < plate.height(); ++y)
        for (int x = 0; x < plate.width(); ++x)
          least = std::min(least, contrastRatio(letters, plate.pixelColor(x, y)));
      EXPECT_GE(least, kForTexts) << theme.name;
    }
  }
}

/// How many ticks of a slider are seen below its knob, where nothing else is.
int ticksSeen(const QImage& below, const QColor& ground) {
  int ticks = 0;
  bool before = false;
  for (int x = 0; x < below.width(); ++x) {
    bool seen = false;
    for (int y = 0; y < below.height(); ++y)
      seen |= contrastRatio(below.pixelColor(x, y), ground) >= kForPictures;
    ticks += seen && !std::exchange(before, seen);
    before = seen;
  }
  return ticks;
}

TEST(Themes, ASlidersTicksAreSeenOverLightAndDark) {
  for (const Theme& theme : kThemes) {
    const Themed themed(theme);
    for (const QColor& ground : {QColor(Qt::white), QColor(Qt::black)}) {
      QWidget container;
      container.setPalette(QPalette(ground, ground));
      container.resize(120, 40);
      QSlider slider(Qt::Horizontal, &container);
      slider.setRange(0, 4);
      slider.setTickPosition(QSlider::TicksBelow);
      slider.setTickInterval(1);
      slider.setGeometry(10, 10, 100, 20);
      styleOverPicture(slider);
      const QImage below = container.grab({10, 27, 100, 3}).toImage();
      EXPECT_EQ(ticksSeen(below, below.pixelColor(0, 0)), 5) << theme.name;
    }
  }
}

TEST(Themes, TheZoomSlidersTicksAreSeenOnTheMargin) {
  for (const Theme& theme : kThemes) {
    SCOPED_TRACE(theme.name);
    const Themed themed(theme);
    Program program(Start{.plugged = false});
    program.window().resize(700, 560);
    QSlider& slider = program.slider("zoomSlider");
    ASSERT_TRUE(waitUntil([&] { return slider.width() == 100; }));
    // Below the knob, where nothing but ticks is.
    const QRect below(0, slider.height() - 3, slider.width(), 3);
    int ticks = 0;
    EXPECT_TRUE(waitUntil(
        [&] {
          const QImage shown = onScreen(slider, below);
          ticks = ticksSeen(shown, shown.pixelColor(0, 0));
          return ticks == 5;
        },
        std::chrono::seconds(5)))
        << ticks;
  }
}

}  // namespace
}  // namespace tessary::test
