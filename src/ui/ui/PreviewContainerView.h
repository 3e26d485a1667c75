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

 protected:
  void resizeEvent(QResizeEvent* event) override;
};

}  // namespace tessary
