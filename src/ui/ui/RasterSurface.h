#pragma once

#include <QtGui/QImage>

#include "ui/PictureSurface.h"

namespace tessary {

/// Drawn without any graphics library, straight into the window's own memory.
class RasterSurface final : public QWidget, public PictureSurface {
  Q_OBJECT
 public:
  explicit RasterSurface(QWidget* parent);
  ~RasterSurface() override { setPreviewView(nullptr); }

  QWidget& widget() override { return *this; }
  void setPreviewView(PreviewView* view) override;
  /// There is none, and none is needed.
  void withGraphicsContext(const std::function<void()>& work) override { work(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  /// Draws the part of the picture that lies under `region`, in device pixels of `target`, whose
  /// pixel `origin` is this widget's first. False when there is no picture.
  bool drawInto(QImage& target, QPoint origin, const QRegion& region);

  PreviewView* view_ = nullptr;
  QImage between_;  // for windows whose memory is of another kind
};

}  // namespace tessary
