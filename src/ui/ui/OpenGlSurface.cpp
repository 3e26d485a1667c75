#include "ui/OpenGlSurface.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace tessary {

OpenGlSurface::OpenGlSurface(QWidget* parent) : QOpenGLWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

OpenGlSurface::~OpenGlSurface() {
  setPreviewView(nullptr);
  // The base class lets the context go once this object is no OpenGlSurface any more.
  if (context()) disconnect(context(), nullptr, this, nullptr);
}

void OpenGlSurface::initializeGL() {
  connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &OpenGlSurface::releaseGraphics);
}

void OpenGlSurface::setPreviewView(PreviewView* view) {
  releaseGraphics();
  view_ = view;
}

void OpenGlSurface::withGraphicsContext(const std::function<void()>& work) {
  if (!isValid()) return;
  makeCurrent();
  if (QOpenGLContext::currentContext() == context()) work();
  doneCurrent();
}

void OpenGlSurface::releaseGraphics() {
  if (view_) withGraphicsContext([this] { view_->contextWillBeDestroyed(); });
}

void OpenGlSurface::paintGL() {
  if (view_ && view_->drawInView(Surface::framebuffer(deviceSize(*this)), devicePixelRatio()))
    return;
  QOpenGLFunctions& gl = *context()->functions();
  gl.glClearColor(kSurroundingGrey, kSurroundingGrey, kSurroundingGrey, 1.0F);
  gl.glClear(GL_COLOR_BUFFER_BIT);
}

void OpenGlSurface::paintEvent(QPaintEvent* event) {
  QOpenGLWidget::paintEvent(event);
  if (isValid() || lost_) return;
  lost_ = true;
  emit contextWasLost();
}

}  // namespace tessary
