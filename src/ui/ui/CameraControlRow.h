#pragma once

#include <cstdint>

#include <QtCore/QObject>

#include "platform/CameraControls.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;
class QToolButton;

namespace tessary {

class PopUpButton;

/// One control of a camera as a row of widgets: its name, what sets it, and the way back to its
/// default.
class CameraControlRow final : public QObject {
  Q_OBJECT
 public:
  /// Puts its widgets into row `row` of `grid`, whose widget is to own this too.
  CameraControlRow(const CameraControl& control, QGridLayout& grid, int row);

  /// Shows `control`: the same one, its value and whether it can be set having changed at the most.
  void show(const CameraControl& control);
  const CameraControl& control() const { return control_; }

 signals:
  void valueWanted(uint32_t id, int32_t value);
  void pressed(uint32_t id);
  void defaultWanted(uint32_t id);

 protected:
  /// The wheel scrolls the list, and turns only what has the keyboard.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void addNumber(QGridLayout& grid, int row);
  void addSwitch(QGridLayout& grid, int row);
  void addMenu(QGridLayout& grid, int row);
  void addButton(QGridLayout& grid, int row);
  void addName(QGridLayout& grid, int row, QWidget& buddy);
  void addDefault(QGridLayout& grid, int row);
  void want(int32_t value);
  int32_t sliderPosition(int32_t value) const;

  CameraControl control_;
  // Those that its kind needs; all owned by the grid's widget.
  QLabel* name_ = nullptr;
  QSlider* slider_ = nullptr;
  QSpinBox* number_ = nullptr;
  QCheckBox* switch_ = nullptr;
  PopUpButton* menu_ = nullptr;
  QPushButton* button_ = nullptr;
  QToolButton* default_ = nullptr;
};

}  // namespace tessary
