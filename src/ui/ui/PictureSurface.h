#pragma once

#include <functional>

#include <QtWidgets/QWidget>

#include "view/PreviewView.h"

namespace tessary {

/// What the picture is drawn on, inside a PreviewWidget: one kind for each renderer. The mouse
/// passes through it.
class PictureSurface {
 public:
  virtual ~PictureSurface() = default;
  virtual QWidget& widget() = 0;
  /// Not owned; null ends it. The graphics of the view before are let go while their context is
  /// there.
  virtual void setPreviewView(PreviewView* view) = 0;
  /// Runs `work` at once with the graphics context current, if there is one at all.
  virtual void withGraphicsContext(const std::function<void()>& work) = 0;

 protected:
  /// The size of a widget's surface.
  static TextureSize deviceSize(const QWidget& widget);
};

}  // namespace tessary
