#pragma once

#include <QtWidgets/QWidget>

namespace tessary {

/// The main window's content: the picture fills it, sliders and status texts lie over the picture.
class PreviewContainerView final : public QWidget {
  Q_OBJECT
 public:
  PreviewContainerView();

 signals:
  /// Its size has changed.
  void frameDidChange();
  /// The wheel was turned over the picture, forwards if positive.
  void wheelDidTurn(int steps);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  int wheelAngle_ = 0;  ///< Eighths of a degree that make no step yet.
};

}  // namespace tessary
