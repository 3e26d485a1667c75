#include <QtGui/QAccessible>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QToolButton>
#include <gmock/gmock.h>

#include "Program.h"

namespace tessary::test {
namespace {

/// The program with the window of the controls open.
class ControlsRig {
 public:
  explicit ControlsRig(Start start = {}) : program(std::move(start)) {
    EXPECT_TRUE(program.waitForPicture());
    open();
  }
  void open() {
    key("ctrl+e");
    ASSERT_TRUE(waitUntil([&] {
      return window() && hasKeyboard(*window()) && !window()->findChildren<QSpinBox*>().isEmpty();
    }));
    waitForPlace(*window());
  }
  CameraControlsWindow* window() { return program.window().findChild<CameraControlsWindow*>(); }
  /// The widget that a screen reader knows by this name.
  template <typename T>
  T& named(const char* name) {
    for (T* widget : window()->findChildren<T*>())
      if (widget->accessibleName() == QLatin1String(name) ||
          QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name) ==
              QLatin1String(name))
        return *widget;
    ADD_FAILURE() << name;
    return *window()->findChild<T*>();
  }
  int32_t atCamera(uint32_t id) {
    return dynamic_cast<SimulatedMicroscope&>(*program.microscope->devices().at(0))
        .optics()
        .controls()
        .at(id - 1)
        .value;
  }
  /// How light the picture is, in a place without ink.
  int light() { return program.screenshot().pixelColor(20, 60).value(); }
  void type(QSpinBox& box, const char* text) {
    box.setFocus();
    box.selectAll();
    xdotool({"type", "--", QString::fromLatin1(text)});
    key("Return");
  }

  Program program;
};

TEST(CameraControls, AreListedInGroupsAsTheCameraTellsThem) {
  ControlsRig rig;
  QStringList titles;
  for (const QGroupBox* box : rig.window()->findChildren<QGroupBox*>()) titles += box->title();
  EXPECT_EQ(titles, QStringList({"Exposure", "Focus", "Picture"}));
  const auto& brightness = rig.named<QSpinBox>("Brightness");
  EXPECT_EQ(brightness.minimum(), -64);
  EXPECT_EQ(brightness.maximum(), 64);
  EXPECT_EQ(rig.named<QSlider>("Exposure Time").maximum(), 99) << "5 to 500 in steps of 5";
  EXPECT_EQ(rig.named<QSpinBox>("Exposure Time").singleStep(), 5);
  EXPECT_EQ(rig.named<QComboBox>("Auto Exposure").currentText(), "Automatic");
  EXPECT_TRUE(rig.named<QCheckBox>("Autofocus").isChecked());
  EXPECT_TRUE(rig.named<QPushButton>("Focus Once").isVisible());
  EXPECT_EQ(rig.program.store->values.count("cameraControls"), 0u);
}

TEST(CameraControls, ASliderChangesThePictureWhileItIsDragged) {
  ControlsRig rig;
  const int before = rig.light();
  auto& slider = rig.named<QSlider>("Brightness");
  moveTo(slider, slider.rect().center());
  press();
  moveTo(slider, QPoint(slider.width() - 3, slider.height() / 2));
  EXPECT_TRUE(waitUntil([&] { return rig.light() > before + 30; })) << rig.light();
  EXPECT_TRUE(slider.isSliderDown());
  EXPECT_GT(rig.named<QSpinBox>("Brightness").value(), 40);
  moveTo(slider, QPoint(3, slider.height() / 2));
  EXPECT_TRUE(waitUntil([&] { return rig.light() < before - 30; })) << rig.light();
  release();
}

TEST(CameraControls, AnAutomaticModeGreysWhatItRules) {
  ControlsRig rig;
  auto& time = rig.named<QSpinBox>("Exposure Time");
  EXPECT_FALSE(time.isEnabled());
  EXPECT_FALSE(rig.named<QToolButton>("Default of Exposure Time").isEnabled());
  rig.named<QComboBox>("Auto Exposure").setFocus();
  key("space");
  ASSERT_TRUE(waitUntil([] { return QApplication::activePopupWidget() != nullptr; }));
  key("Down");
  key("Return");
  ASSERT_TRUE(waitUntil([&] { return time.isEnabled(); }));
  const int before = rig.light();
  rig.type(time, "40");
  EXPECT_TRUE(waitUntil([&] { return rig.light() < before - 60; })) << rig.light();
  EXPECT_EQ(rig.atCamera(Optics::kExposureTime), 40);
  rig.type(time, "42");
  EXPECT_TRUE(waitUntil([&] { return time.value() == 40; })) << "to the camera's steps";
  click(rig.named<QCheckBox>("Autofocus"), QPoint(8, 10));
  auto& once = rig.named<QPushButton>("Focus Once");
  ASSERT_TRUE(waitUntil([&] { return once.isEnabled(); }));
  rig.type(rig.named<QSpinBox>("Focus"), "20");
  EXPECT_TRUE(waitUntil([&] { return rig.atCamera(Optics::kFocus) == 20; }));
  click(once);
  EXPECT_TRUE(waitUntil([&] { return rig.named<QSpinBox>("Focus").value() == 120; }));
}

TEST(CameraControls, FollowWhatAnotherProgramChanges) {
  ControlsRig rig;
  rig.program.microscope->changeControl({Optics::kContrast, 130});
  EXPECT_TRUE(waitUntil([&] { return rig.named<QSpinBox>("Contrast").value() == 130; }));
  rig.program.microscope->changeControl({Optics::kExposureMode, 1});
  EXPECT_TRUE(waitUntil([&] { return rig.named<QSlider>("Exposure Time").isEnabled(); }));
  rig.program.window().close();
  EXPECT_EQ(rig.program.store->values.count("cameraControls"), 0u) << "it is not the user's";
}

TEST(CameraControls, OneGoesBackToItsDefaultAndSoDoAll) {
  ControlsRig rig;
  auto& brightness = rig.named<QSpinBox>("Brightness");
  rig.type(brightness, "30");
  rig.type(rig.named<QSpinBox>("Contrast"), "50");
  click(rig.named<QCheckBox>("Autofocus"), QPoint(8, 10));
  ASSERT_TRUE(waitUntil([&] { return rig.named<QSpinBox>("Focus").isEnabled(); }));
  click(rig.named<QToolButton>("Default of Brightness"));
  EXPECT_TRUE(waitUntil([&] { return brightness.value() == 0; }));
  EXPECT_EQ(rig.atCamera(Optics::kBrightness), 0);
  EXPECT_EQ(rig.atCamera(Optics::kContrast), 50);
  click(rig.named<QPushButton>("All Defaults"));
  EXPECT_TRUE(waitUntil([&] { return rig.named<QSpinBox>("Contrast").value() == 100; }));
  EXPECT_TRUE(waitUntil([&] { return rig.named<QCheckBox>("Autofocus").isChecked(); }));
  EXPECT_EQ(rig.atCamera(Optics::kAutoFocus), 1);
}

TEST(CameraControls, AreGivenBackAfterAReplugAndARestart) {
  MemoryKeyValueStore kept;
  {
    ControlsRig rig;
    rig.type(rig.named<QSpinBox>("Brightness"), "-40");
    ASSERT_TRUE(waitUntil([&] { return rig.atCamera(Optics::kBrightness) == -40; }));
    ASSERT_TRUE(waitUntil([&] { return rig.program.store->values.contains("cameraControls"); }))
        << "kept without an end";
    rig.program.microscope->unplug();
    ASSERT_TRUE(waitUntil([&] { return rig.window()->findChildren<QSpinBox*>().isEmpty(); }));
    EXPECT_FALSE(rig.named<QPushButton>("All Defaults").isEnabled());
    rig.program.microscope->plug();
    ASSERT_TRUE(waitUntil([&] { return !rig.window()->findChildren<QSpinBox*>().isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return rig.atCamera(Optics::kBrightness) == -40; }));
    EXPECT_TRUE(waitUntil([&] { return rig.named<QSpinBox>("Brightness").value() == -40; }));
    kept.values = rig.program.store->values;
  }
  Program again(Start{.prepare = [&](MemoryKeyValueStore& store) { store.values = kept.values; }});
  const auto& microscope = dynamic_cast<SimulatedMicroscope&>(*again.microscope->devices().at(0));
  EXPECT_TRUE(waitUntil([&] {
    return const_cast<SimulatedMicroscope&>(microscope).optics().controls()[2].value == -40;
  })) << "without the window";
}

TEST(CameraControls, TheKeyboardBeginsWithTheFirstRowAndReachesTheButtonsLast) {
  ControlsRig rig;
  std::vector<std::string> order;
  for (int steps = 0; steps < 20; ++steps) {
    const QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QString name = focus->accessibleName();
    if (const auto* button = qobject_cast<const QAbstractButton*>(focus); button && name.isEmpty())
      name = button->text().remove('&');
    if (!order.empty() && order.front() == name.toStdString()) break;
    order.push_back(name.toStdString());
    key("Tab");
  }
  EXPECT_THAT(order,
              ::testing::ElementsAre("Auto Exposure", "Default of Auto Exposure", "Autofocus",
                                     "Default of Autofocus", "Brightness", "Brightness",
                                     "Default of Brightness", "Contrast", "Contrast",
                                     "Default of Contrast", "All Defaults", "Close"));
}

TEST(CameraControls, TheWheelScrollsTheListAndTurnsOnlyWhatHasTheKeyboard) {
  ControlsRig rig;
  auto& brightness = rig.named<QSpinBox>("Brightness");
  rig.named<QSpinBox>("Contrast").setFocus();
  moveTo(brightness, brightness.rect().center());
  xdotool({"click", "4"});
  EXPECT_EQ(brightness.value(), 0);
  brightness.setFocus();
  xdotool({"click", "4"});
  EXPECT_TRUE(waitUntil([&] { return brightness.value() == 1; }));
}

TEST(CameraControls, TheWindowStaysBesideThePictureAndClosesWithEscape) {
  ControlsRig rig;
  const QRect picture = rig.program.window().frameGeometry();
  EXPECT_EQ(rig.window()->x(), picture.x() + picture.width());
  click(rig.program.button("Grid Item Identifier"));
  EXPECT_TRUE(waitUntil([&] { return hasKeyboard(rig.program.window()); })) << "not modal";
  EXPECT_TRUE(rig.window()->isVisible());
  key("ctrl+e");
  ASSERT_TRUE(waitUntil([&] { return hasKeyboard(*rig.window()); })) << "the same one";
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return !rig.window(); }));
  EXPECT_TRUE(rig.program.window().isVisible());
}

}  // namespace
}  // namespace tessary::test
