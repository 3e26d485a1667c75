#pragma once

#include "base/Geometry.h"

namespace tessary {

/// Told where the picture went, so that sliders and texts can follow. Main thread.
class PreviewViewLocationDelegate {
 public:
  virtual ~PreviewViewLocationDelegate() = default;
  /// The view was laid out anew: by a zoom, a resize, or the start of a preview.
  virtual void previewViewFrameDidChange() = 0;
  /// The user dragged the picture; `location` is where it lies now.
  virtual void previewViewLocationDidChange(ViewPoint location) = 0;
  /// Something other than the zoom slider chose the zoom.
  virtual void previewViewZoomDidChange() = 0;
};

}  // namespace tessary
