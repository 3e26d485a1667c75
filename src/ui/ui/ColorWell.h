#pragma once

#include <QtWidgets/QPushButton>

#include "base/Color.h"

namespace tessary {

/// A button that shows a colour and lets the user choose another with the platform's dialog.
class ColorWell final : public QPushButton {
  Q_OBJECT
 public:
  explicit ColorWell(QWidget* parent = nullptr);

  /// The colour as it was set, to the last bit, until the user chooses one.
  const Color& color() const { return color_; }
  void setColor(const Color& color);

 private:
  void chooseColor();

  Color color_;
};

}  // namespace tessary
