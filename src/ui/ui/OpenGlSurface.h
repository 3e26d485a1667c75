#pragma once

#include <QtOpenGLWidgets/QOpenGLWidget>

#include "ui/PictureSurface.h"

namespace tessary {

/// Drawn with OpenGL, in a context of its own.
class OpenGlSurface final : public QOpenGLWidget, public PictureSurface {
  Q_OBJECT
 public:
  explicit OpenGlSurface(QWidget* parent);
  ~OpenGlSurface() override;

  QWidget& widget() override { return *this; }
  void setPreviewView(PreviewView* view) override;
  void withGraphicsContext(const std::function<void()>& work) override;

 signals:
  /// There is no context any more, or could never be made: nothing can be drawn here. Once.
  void contextWasLost();

 protected:
  void initializeGL() override;
  void paintGL() override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void releaseGraphics();

  PreviewView* view_ = nullptr;
  bool lost_ = false;
};

}  // namespace tessary
