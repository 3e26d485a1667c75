#pragma once

#include <QtWidgets/QLabel>

namespace tessary {

/// A status text over the picture. Its box is given; a text that is too large for it, as with large
/// fonts, is written in smaller letters.
class StatusText final : public QLabel {
  Q_OBJECT
 public:
  explicit StatusText(QWidget* container);

  void showText(const QString& text);

 protected:
  bool event(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void fitFont();
};

}  // namespace tessary
