#pragma once

#include <QtWidgets/QSlider>

namespace tessary {

/// Chooses a zoom step, and tells it in percent to those who hear it.
class ZoomSlider final : public QSlider {
  Q_OBJECT
 public:
  /// From the first step to the last one that the user can choose, at 100 percent.
  explicit ZoomSlider(QWidget* parent);

  /// A zoom step in percent, whole for every step.
  static int mapZoom100(int32_t zoom);
  QString percentText() const;
  /// Moves the knob to the step that comes nearest.
  void setPercent(double percent);

 protected:
  void sliderChange(SliderChange change) override;
};

}  // namespace tessary
