#pragma once

#include "base/Geometry.h"

namespace tessary {

/// What the view asks of the window system: the container (superview) that it lies in, its window,
/// and the screen. What is missing reads as zeros, and setting it does nothing. Main thread.
class ViewHost {
 public:
  virtual ~ViewHost() = default;

  virtual Size superviewFrameSize() const = 0;
  /// With its title bar and edges.
  virtual ScreenRect windowFrame() const = 0;
  /// Of the whole screen that the window is on.
  virtual Size screenSize() const = 0;
  /// Where the desktop's first screen ends below.
  virtual double desktopBottom() const = 0;
  /// Size of the window without title bar and edges, as far as its screen has room for that. Which
  /// corner stays is the platform's matter.
  virtual void setContentSize(Size size) = 0;
  /// Moves the window's top left corner, as far as the window then still lies on its screen.
  virtual void setFrameOrigin(ScreenPoint origin) = 0;
};

}  // namespace tessary
