#include "ui/PreviewWidget.h"

#include <cmath>

#include <QtGui/QMouseEvent>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace tessary {
namespace {

constexpr float kBackground = 0.1F;

}  // namespace

PreviewWidget::PreviewWidget(QWidget* container) : QOpenGLWidget(container) {
  setObjectName(QStringLiteral("previewView"));
  setAccessibleName(tr("Microscope picture"));
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
}

PreviewWidget::~PreviewWidget() {
  setPreviewView(nullptr);
  // The base class lets the context go once this object is no PreviewWidget any more.
  if (context()) disconnect(context(), nullptr, this, nullptr);
}

void PreviewWidget::initializeGL() {
  connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PreviewWidget::releaseGraphics);
}

void PreviewWidget::setPreviewView(PreviewView* view) {
  releaseGraphics();
  view_ = view;
}

void PreviewWidget::withGraphicsContext(const std::function<void()>& work) {
  if (!context()) return;
  makeCurrent();
  work();
  doneCurrent();
}

void PreviewWidget::releaseGraphics() {
  if (view_) withGraphicsContext([this] { view_->contextWillBeDestroyed(); });
}

void PreviewWidget::paintGL() {
  const double ratio = devicePixelRatio();
  const TextureSize surface{int32_t(std::lround(width() * ratio)),
                            int32_t(std::lround(height() * ratio))};
  if (view_ && view_->drawInView(surface, ratio)) return;
  QOpenGLFunctions& gl = *context()->functions();
  gl.glClearColor(kBackground, kBackground, kBackground, 1.0F);
  gl.glClear(GL_COLOR_BUFFER_BIT);
}

MouseLocation PreviewWidget::location(const QMouseEvent& event) const {
  const QPointF position = event.position();
  const QPointF global = event.globalPosition();
  return {{position.x(), position.y()}, {global.x(), global.y()}};
}

void PreviewWidget::mousePressEvent(QMouseEvent* event) {
  if (!view_) return;
  if (event->button() == Qt::RightButton) view_->rightMouseDown();
  if (event->button() != Qt::LeftButton) return;
  pressedInView_ = view_->mouseDown(location(*event));
}

void PreviewWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (!view_ || event->button() != Qt::LeftButton || !pressedInView_) return;
  pressedInView_ = false;
  view_->mouseUp(location(*event));
}

void PreviewWidget::mouseMoveEvent(QMouseEvent* event) {
  if (!view_) return;
  if (event->buttons() & Qt::LeftButton) {
    if (pressedInView_) view_->mouseDragged(location(*event));
  } else if (event->buttons() == Qt::NoButton) {
    view_->mouseMoved(location(*event));
  }
}

}  // namespace tessary
