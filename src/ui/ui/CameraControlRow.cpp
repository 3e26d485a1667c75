#include "ui/CameraControlRow.h"

#include <algorithm>
#include <limits>

#include <QtCore/QEvent>
#include <QtCore/QSignalBlocker>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QToolButton>

#include "ui/PopUpButton.h"
#include "ui/ThemedIcon.h"

namespace tessary {
namespace {

constexpr int kNameColumn = 0;
constexpr int kSliderColumn = 1;
constexpr int kNumberColumn = 2;
constexpr int kDefaultColumn = 3;
constexpr int kSliderWidth = 140;
constexpr int kDefaultIconSize = 16;
/// Of a slider's way, what a page key goes.
constexpr int kPagesPerSlider = 10;

QString plain(const std::string& text) { return QString::fromStdString(text); }

/// One "&" alone would underline what follows.
QString shown(const std::string& text) { return plain(text).replace('&', "&&"); }

}  // namespace

CameraControlRow::CameraControlRow(const CameraControl& control, QGridLayout& grid, int row)
    : QObject(grid.parentWidget()), control_(control) {
  switch (control_.kind) {
    case ControlKind::Number: addNumber(grid, row); break;
    case ControlKind::Switch: addSwitch(grid, row); break;
    case ControlKind::Menu: addMenu(grid, row); break;
    case ControlKind::Button: addButton(grid, row); break;
  }
  if (control_.kind != ControlKind::Button) addDefault(grid, row);
  show(control_);
}

void CameraControlRow::addNumber(QGridLayout& grid, int row) {
  slider_ = new QSlider(Qt::Horizontal);
  slider_->setMinimumWidth(kSliderWidth);
  slider_->setRange(0, sliderPosition(control_.maximum));
  slider_->setPageStep(std::max(slider_->maximum() / kPagesPerSlider, 1));
  number_ = new QSpinBox;
  number_->setRange(control_.minimum, control_.maximum);
  number_->setSingleStep(control_.step);
  number_->setKeyboardTracking(false);  // of "120" not first 1 and 12
  for (QWidget* widget : {static_cast<QWidget*>(slider_), static_cast<QWidget*>(number_)}) {
    widget->setAccessibleName(plain(control_.name));
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->installEventFilter(this);
  }
  connect(slider_, &QSlider::valueChanged, this, [this](int position) {
    const int64_t value = control_.minimum + int64_t(position) * control_.step;
    want(int32_t(std::min<int64_t>(value, control_.maximum)));
  });
  // What was refused meanwhile.
  connect(slider_, &QSlider::sliderReleased, this, [this] { show(control_); });
  connect(number_, &QSpinBox::valueChanged, this, &CameraControlRow::want);
  addName(grid, row, *slider_);
  grid.addWidget(slider_, row, kSliderColumn);
  grid.addWidget(number_, row, kNumberColumn);
}

void CameraControlRow::addSwitch(QGridLayout& grid, int row) {
  switch_ = new QCheckBox(shown(control_.name));
  connect(switch_, &QCheckBox::toggled, this, [this](bool on) { want(on ? 1 : 0); });
  grid.addWidget(switch_, row, kNameColumn, 1, kDefaultColumn - kNameColumn);
}

void CameraControlRow::addMenu(QGridLayout& grid, int row) {
  menu_ = new PopUpButton;
  menu_->setAccessibleName(plain(control_.name));
  for (const ControlChoice& choice : control_.choices)
    menu_->addItem(plain(choice.name), choice.value);
  connect(menu_, &QComboBox::activated, this,
          [this](int index) { want(menu_->itemData(index).toInt()); });
  addName(grid, row, *menu_);
  grid.addWidget(menu_, row, kSliderColumn, 1, kDefaultColumn - kSliderColumn);
}

void CameraControlRow::addButton(QGridLayout& grid, int row) {
  button_ = new QPushButton(shown(control_.name));
  button_->setAutoDefault(false);  // Return is for the number fields
  connect(button_, &QAbstractButton::clicked, this, [this] { emit pressed(control_.id); });
  grid.addWidget(button_, row, kSliderColumn, 1, kDefaultColumn - kSliderColumn);
}

void CameraControlRow::addName(QGridLayout& grid, int row, QWidget& buddy) {
  name_ = new QLabel(shown(control_.name));
  name_->setBuddy(&buddy);
  grid.addWidget(name_, row, kNameColumn);
}

void CameraControlRow::addDefault(QGridLayout& grid, int row) {
  default_ = new QToolButton;
  default_->setIcon(themedIcon("Default"));
  default_->setIconSize(QSize(kDefaultIconSize, kDefaultIconSize));
  default_->setAutoRaise(true);
  default_->setFocusPolicy(Qt::TabFocus);
  default_->setToolTip(tr("Back to the camera's own value"));
  default_->setAccessibleName(tr("Default of %1").arg(plain(control_.name)));
  connect(default_, &QAbstractButton::clicked, this, [this] { emit defaultWanted(control_.id); });
  grid.addWidget(default_, row, kDefaultColumn);
}

void CameraControlRow::show(const CameraControl& control) {
  control_ = control;
  for (QWidget* widget :
       std::initializer_list<QWidget*>{name_, slider_, number_, switch_, menu_, button_, default_})
    if (widget) widget->setEnabled(control_.canBeSet);
  const int32_t value = control_.value;
  if (slider_ && !slider_->isSliderDown()) {
    const QSignalBlocker silent(slider_);
    slider_->setValue(sliderPosition(value));
  }
  if (number_ && number_->value() != value) {
    const QSignalBlocker silent(number_);
    number_->setValue(value);
  }
  if (switch_) {
    const QSignalBlocker silent(switch_);
    switch_->setChecked(value != 0);
  }
  if (menu_) menu_->setCurrentIndex(menu_->findData(value));
}

void CameraControlRow::want(int32_t value) {
  if (value != control_.value) emit valueWanted(control_.id, value);
}

int32_t CameraControlRow::sliderPosition(int32_t value) const {
  const int64_t steps = (int64_t(value) - control_.minimum) / control_.step;
  return int32_t(std::min<int64_t>(steps, std::numeric_limits<int32_t>::max()));
}

bool CameraControlRow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus()) return false;
  event->ignore();
  return true;
}

}  // namespace tessary
