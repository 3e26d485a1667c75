#pragma once

#include <QtCore/QObject>

#include "view/PreviewView.h"

class QSlider;
class QWidget;

namespace tessary {

class StatusText;
class ZoomSlider;

/// The three sliders and the two status texts that lie over the picture, and their two-way link
/// with the picture's location and zoom.
class PreviewControls final : public QObject {
  Q_OBJECT
 public:
  /// Both must outlive it. The controls have no size until the first layout places them.
  PreviewControls(QWidget& container, PreviewView& previewView);

  void previewViewLocationDidChange(ViewPoint location);
  void previewViewFrameDidChange();
  void previewViewZoomDidChange();
  void containerViewFrameDidChange();

  /// Moves the zoom slider, as a hand would.
  void stepZoomSlider(int steps);
  void setZoomSlider(int step);

  /// "640x480  fps:30"; `videoFrameRate` in frames a second is rounded, halves away from zero.
  void showStatus(const Resolution& resolution, float videoFrameRate);
  /// Blanks both texts.
  void clearStatus();

 private:
  void setupSliders();
  void setupTextFields();
  void horizontalSliderAct();
  void verticalSliderAct();
  void zoomSliderAct();
  void horizontalSliderFrameDidChange();
  void verticalSliderFrameDidChange();
  void zoomSliderFrameDidChange();
  void showZoom();

  QWidget& container_;
  PreviewView& previewView_;
  // Children of the container.
  QSlider* horizontalSlider = nullptr;
  QSlider* verticalSlider = nullptr;
  ZoomSlider* zoomSlider = nullptr;
  StatusText* zoomText = nullptr;
  StatusText* fpsText = nullptr;
};

}  // namespace tessary
