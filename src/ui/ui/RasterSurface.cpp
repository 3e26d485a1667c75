#include "ui/RasterSurface.h"

#include <QtGui/QPaintEngine>
#include <QtGui/QPainter>

namespace tessary {
namespace {

/// Whether pixels are blue, green, red and a byte that is opaque.
bool isOfOurKind(const QImage& image) {
  return image.format() == QImage::Format_RGB32 ||
         image.format() == QImage::Format_ARGB32_Premultiplied;
}

}  // namespace

RasterSurface::RasterSurface(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_NoSystemBackground);
}

void RasterSurface::setPreviewView(PreviewView* view) {
  if (view_) view_->contextWillBeDestroyed();
  view_ = view;
}

bool RasterSurface::drawInto(QImage& target, QPoint origin, const QRegion& region) {
  if (!view_) return false;
  const TextureSize size = deviceSize(*this);
  uint8_t* pixels =
      target.bits() + qsizetype(origin.y()) * target.bytesPerLine() + qsizetype(origin.x()) * 4;
  // A part of this widget may lie outside of the window.
  const QRect inside = target.rect().intersected({origin, QSize(size.width, size.height)});
  for (const QRect& part : region) {
    const QRect rect = part.intersected(inside).translated(-origin);
    if (rect.isEmpty()) continue;
    const SurfaceClip clip{rect.left(), rect.top(), rect.left() + rect.width(),
                           rect.top() + rect.height()};
    const Surface surface = Surface::memory(size, pixels, size_t(target.bytesPerLine()), clip);
    if (!view_->drawInView(surface, devicePixelRatio())) return false;
  }
  return true;
}

void RasterSurface::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QPaintEngine& engine = *painter.paintEngine();
  const QPoint origin = painter.deviceTransform().map(QPointF(0, 0)).toPoint();
  const QRegion region = engine.systemClip();
  auto* window = engine.paintDevice()->devType() == QInternal::Image
                     ? static_cast<QImage*>(engine.paintDevice())
                     : nullptr;
  if (window && isOfOurKind(*window)) {
    if (drawInto(*window, origin, region)) return;
  } else {
    const auto [width, height] = deviceSize(*this);
    if (between_.size() != QSize(width, height))
      between_ = QImage(width, height, QImage::Format_RGB32);
    if (drawInto(between_, {}, between_.rect())) {
      painter.drawImage(rect(), between_);
      return;
    }
  }
  painter.fillRect(rect(), QColor::fromRgbF(kSurroundingGrey, kSurroundingGrey, kSurroundingGrey));
}

}  // namespace tessary
