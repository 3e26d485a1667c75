#pragma once

#include <QtOpenGLWidgets/QOpenGLWidget>

#include "view/PreviewView.h"

namespace tessary {

/// Shows a PreviewView: it covers the container, hands ticks to the view, and translates the mouse
/// into the view's and the desktop's coordinates.
class PreviewWidget final : public QOpenGLWidget {
  Q_OBJECT
 public:
  explicit PreviewWidget(QWidget* container);
  ~PreviewWidget() override;

  /// Not owned; null ends it. The graphics of the view before are let go while their context is
  /// there.
  void setPreviewView(PreviewView* view);
  /// Runs `work` at once with this widget's graphics context current.
  void withGraphicsContext(const std::function<void()>& work);

 protected:
  void initializeGL() override;
  void paintGL() override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  void releaseGraphics();
  MouseLocation location(const QMouseEvent& event) const;

  PreviewView* view_ = nullptr;
  bool pressedInView_ = false;
};

}  // namespace tessary
