#include "ui/PreviewWidget.h"

#include <utility>

#include <QtGui/QAccessible>
#include <QtGui/QMouseEvent>

#include "ui/OpenGlSurface.h"
#include "ui/RasterSurface.h"

namespace tessary {

PreviewWidget::PreviewWidget(QWidget* container, Renderer renderer) : QWidget(container) {
  setObjectName(QStringLiteral("previewView"));
  setAccessibleName(tr("Microscope picture"));
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  surface_ = makeSurface(renderer);
}

PreviewWidget::~PreviewWidget() = default;

std::unique_ptr<PictureSurface> PreviewWidget::makeSurface(Renderer renderer) {
  if (renderer == Renderer::kRaster) return std::make_unique<RasterSurface>(this);
  auto surface = std::make_unique<OpenGlSurface>(this);
  // Not in the middle of its painting.
  connect(surface.get(), &OpenGlSurface::contextWasLost, this, &PreviewWidget::contextWasLost,
          Qt::QueuedConnection);
  return surface;
}

void PreviewWidget::contextWasLost() {
  PreviewView* view = view_;
  setPreviewView(nullptr);
  surface_ = makeSurface(Renderer::kRaster);
  surface_->widget().setGeometry(rect());
  surface_->widget().show();
  emit rendererWasLost();
  setPreviewView(view);
}

void PreviewWidget::setPreviewView(PreviewView* view) {
  surface_->setPreviewView(view);
  view_ = view;
  drawSoon();
}

QString PreviewWidget::overlayText() const {
  return view_ ? QString::fromStdString(view_->overlayText()) : QString();
}

void PreviewWidget::overlayTextMayHaveChanged() {
  if (!QAccessible::isActive()) return;
  const QString text = overlayText();
  if (text == std::exchange(toldText_, text)) return;
  QAccessibleEvent described(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&described);
}

void PreviewWidget::resizeEvent(QResizeEvent*) { surface_->widget().setGeometry(rect()); }

MouseLocation PreviewWidget::location(const QMouseEvent& event) const {
  // The event's own position is rounded to whole points, several pixels on a high-density screen.
  const QPointF position = event.scenePosition() - mapTo(window(), QPointF());
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
