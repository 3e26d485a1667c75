#pragma once

#include <memory>

#include <QtWidgets/QWidget>

#include "platform/Renderer.h"
#include "ui/PictureSurface.h"

namespace tessary {

/// Shows a PreviewView: it covers the container, hands ticks to the view, and translates the mouse
/// into the view's and the desktop's coordinates.
class PreviewWidget final : public QWidget {
  Q_OBJECT
 public:
  PreviewWidget(QWidget* container, Renderer renderer);
  ~PreviewWidget() override;

  /// Not owned; null ends it. The graphics of the view before are let go while their context is
  /// there.
  void setPreviewView(PreviewView* view);
  /// Asks for a tick.
  void drawSoon() { surface_->widget().update(); }
  /// Runs `work` at once with the graphics context current, if there is one at all.
  void withGraphicsContext(const std::function<void()>& work) {
    surface_->withGraphicsContext(work);
  }
  /// What lies over the picture, in words; empty without a view.
  QString overlayText() const;
  /// It may have changed: screen readers are told if it has.
  void overlayTextMayHaveChanged();

 signals:
  /// The graphics context was lost with all in it, or could not be made. From now on this draws
  /// with `Renderer::kRaster`: the view needs a compositor of that kind, at once.
  void rendererWasLost();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  std::unique_ptr<PictureSurface> makeSurface(Renderer renderer);
  void contextWasLost();
  MouseLocation location(const QMouseEvent& event) const;

  std::unique_ptr<PictureSurface> surface_;
  PreviewView* view_ = nullptr;
  QString toldText_;  // to screen readers
  bool pressedInView_ = false;
};

}  // namespace tessary
