// What is read, with the desktop's letters twice as large.

#include <QtGui/QFontInfo>
#include <QtGui/QScreen>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QProxyStyle>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

#include "DialogRig.h"
#include "ui/CalibrationHelpViewController.h"
#include "ui/CalibrationListWindowController.h"
#include "ui/CalibrationWindowController.h"
#include "ui/FileSavedWindowController.h"
#include "ui/InputTextWindowController.h"
#include "ui/MicroscopeWindowController.h"
#include "ui/RecordWindowController.h"
#include "ui/SharedIconsStyle.h"

namespace tessary::test {
namespace {

/// As long as it lives, letters are twice as large as the desktop's own.
class DoubledFont {
 public:
  DoubledFont() {
    QFont doubled = usual_;
    doubled.setPointSizeF(QFontInfo(usual_).pointSizeF() * 2);
    QApplication::setFont(doubled);
  }
  ~DoubledFont() { QApplication::setFont(usual_); }
  DoubledFont(const DoubledFont&) = delete;

 private:
  const QFont usual_ = QApplication::font();
};

/// What a widget needs for its text, in points.
QSize neededSize(const QWidget& widget) {
  const auto* label = qobject_cast<const QLabel*>(&widget);
  if (label && label->wordWrap()) return {0, label->heightForWidth(label->width())};
  if (label) return label->sizeHint();
  return widget.minimumSizeHint();
}

/// The visible widgets in `window` whose text is cut off, and what lies outside of the window.
QStringList clipped(const QWidget& window) {
  QStringList names;
  for (const QWidget* widget : window.findChildren<QWidget*>()) {
    const bool hasText =
        qobject_cast<const QLabel*>(widget) || qobject_cast<const QAbstractButton*>(widget) ||
        qobject_cast<const QComboBox*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
        qobject_cast<const QAbstractSpinBox*>(widget);
    const bool isPartOfSpinBox = qobject_cast<const QAbstractSpinBox*>(widget->parentWidget());
    if (!hasText || isPartOfSpinBox || !widget->isVisibleTo(&window)) continue;
    const QSize needed = neededSize(*widget);
    const QRect place(widget->mapTo(&window, QPoint()), widget->size());
    if (needed.width() > widget->width() || needed.height() > widget->height() ||
        !window.rect().contains(place))
      names << QStringLiteral("%1 %2: %3x%4 of %5x%6")
                   .arg(widget->metaObject()->className(), widget->objectName())
                   .arg(widget->width())
                   .arg(widget->height())
                   .arg(needed.width())
                   .arg(needed.height());
  }
  return names;
}

class LargeFonts : public DialogRig {
 protected:
  /// Opens it, and looks at all that it says.
  void expectReadable(QDialog& dialog) {
    dialog.show();
    waitForKeys(dialog);
    EXPECT_EQ(clipped(dialog).join(", ").toStdString(), "");
    EXPECT_TRUE(dialog.screen()->availableGeometry().contains(dialog.frameGeometry()));
    dialog.close();
    goBack();
  }

 private:
  DoubledFont doubled_;
};

TEST_F(LargeFonts, CutNothingOffInTheSheets) {
  MicroscopeWindowController microscope(&window);
  expectReadable(microscope);
  RecordWindowController record(&window, preferences);
  expectReadable(record);
  InputTextWindowController text(&window);
  expectReadable(text);
  CalibrationWindowController calibration(&window, preferences);
  expectReadable(calibration);
  preferences.url = "/home/somebody/Pictures/Microscope";
  OptionsWindowController options(preferences);
  expectReadable(options);
}

TEST_F(LargeFonts, CutNothingOffInTheListOfCalibrations) {
  preferences.calibrations.fill({.name = "A long working distance, 0.5x",
                                 .pixels = 853,
                                 .length = 0.5,
                                 .resolution = 47187200,
                                 .date = 20251225,
                                 .ppu = 17060.25});
  CalibrationListWindowController list(&window, preferences, [] { return 0.0F; });
  open(list);
  EXPECT_EQ(clipped(list).join(", ").toStdString(), "");
  auto& table = find<QTableView>(list, "calibrations");
  const QHeaderView& header = *table.horizontalHeader();
  for (int column = 0; column < table.model()->columnCount(); ++column) {
    EXPECT_GE(header.sectionSize(column), header.sectionSizeHint(column)) << column;
    for (int row = 0; row < table.model()->rowCount(); ++row) {
      const QModelIndex cell = table.model()->index(row, column);
      const QSize needed = table.itemDelegate()->sizeHint(
          [&] {
            QStyleOptionViewItem option;
            option.initFrom(&table);
            return option;
          }(),
          cell);
      const QRect place = table.visualRect(cell);
      EXPECT_GE(place.width(), needed.width()) << row << " " << column;
      EXPECT_GE(place.height(), needed.height()) << row << " " << column;
      EXPECT_TRUE(table.viewport()->rect().contains(place)) << row << " " << column;
    }
  }
}

TEST_F(LargeFonts, CutNothingOffInTheNotice) {
  FileSavedWindowController notice(&window);
  notice.setParentWindow(window);
  notice.setFileName(QStringLiteral("1.jpg"));
  notice.setFileName(QStringLiteral("2026-11-22-10-20-30-001.jpg"));
  notice.showWindow();
  ASSERT_TRUE(waitUntil([&] { return placeOnDisplay(notice).has_value(); }));
  EXPECT_EQ(clipped(notice).join(", ").toStdString(), "");
}

TEST(LargeFontsInTheWindow, ShrinkInTheBoxesOfTheStatus) {
  const int usual = QFontInfo(QApplication::font()).pixelSize();
  const struct {
    const char* name;
    QSize box;
  } rows[] = {{"zoomText", {37, 19}}, {"fpsText", {150, 19}}};
  for (const bool large : {false, true}) {
    const auto doubled = large ? std::make_unique<DoubledFont>() : nullptr;
    Program program(Start{.width = 1280, .height = 720});
    ASSERT_TRUE(program.waitForPicture());
    program.slider("zoomSlider").setValue(4);
    ASSERT_TRUE(waitUntil([&] { return !program.text("fpsText").isEmpty(); }));
    for (const auto& row : rows) {
      SCOPED_TRACE(row.name);
      const QLabel& label = *program.find<QLabel>(row.name);
      EXPECT_EQ(label.size(), row.box);
      const QFontMetrics metrics(label.font());
      EXPECT_LE(metrics.horizontalAdvance(label.text()), row.box.width());
      EXPECT_LE(metrics.height(), row.box.height());
      const int size = QFontInfo(label.font()).pixelSize();
      if (large)
        EXPECT_GE(size, usual - 1) << "it can be read";
      else
        EXPECT_EQ(size, usual) << "it fits as it is";
    }
  }
}

TEST(LargeFontsInTheWindow, CutNothingOffInWhatGoesWrongNorInTheCamerasControls) {
  const DoubledFont doubled;
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  gPreviewWindowController->failures().failed(
      Failure::Camera,
      "Another program is using the camera. Close that program, then choose the camera again.");
  const QLabel& line = *program.find<QLabel>("failureText");
  EXPECT_GE(line.height(), line.heightForWidth(line.width()));
  EXPECT_TRUE(program.container().rect().contains(line.geometry()));
  key("ctrl+e");
  const auto controls = [&] { return program.window().findChild<CameraControlsWindow*>(); };
  ASSERT_TRUE(waitUntil([&] {
    return controls() && hasKeyboard(*controls()) &&
           !controls()->findChildren<QSpinBox*>().isEmpty();
  }));
  EXPECT_EQ(clipped(*controls()).join(", ").toStdString(), "");
}

/// A desktop whose toolbars have icons of that size.
class IconSizeStyle final : public QProxyStyle {
 public:
  explicit IconSizeStyle(int size) : QProxyStyle(QStringLiteral("fusion")), size_(size) {}
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override {
    return metric == PM_ToolBarIconSize ? size_ : QProxyStyle::pixelMetric(metric, option, widget);
  }

 private:
  int size_;
};

TEST(LargeFontsInTheWindow, IconsHaveTheSizeOfTheDesktops) {
  for (const int size : {24, 40}) {
    QApplication::setStyle(new IconSizeStyle(size));
    Program program(Start{.plugged = false});
    const auto& button = dynamic_cast<QToolButton&>(program.button("Line Item Identifier"));
    EXPECT_EQ(button.iconSize(), QSize(size, size));
  }
  QApplication::setStyle(new SharedIconsStyle);
}

}  // namespace
}  // namespace tessary::test
