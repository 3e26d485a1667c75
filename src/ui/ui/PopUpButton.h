#pragma once

#include <QtWidgets/QComboBox>

namespace tessary {

/// A combo box that changes only by a choice from its open list. The mouse wheel and the arrow keys
/// would otherwise step through the entries one by one, each of them taking effect: on the way from
/// no limit to an hour a recording would meet the limit of 30 seconds.
class PopUpButton final : public QComboBox {
  Q_OBJECT
 public:
  using QComboBox::QComboBox;

 protected:
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace tessary
