#pragma once

#include <string>

namespace tessary {

/// Told what happens over the picture, so that it can be said as well as seen. Main thread.
class PreviewViewOverlayDelegate {
 public:
  virtual ~PreviewViewOverlayDelegate() = default;
  /// What `PreviewView::overlayText` tells may have changed. Not while the mouse is dragged.
  virtual void overlayTextMayHaveChanged() = 0;
  /// A shape was finished with the mouse; `text` tells its kind and its values.
  virtual void shapeDidFinish(const std::string& text) = 0;
};

}  // namespace tessary
