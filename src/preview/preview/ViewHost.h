#pragma once

#include "base/Geometry.h"

namespace tessary {

/// What the view asks of the window system. Main thread.
///
/// The view lies in a container (its superview) whose origin is the top left corner, y downwards;
/// so do the view's own coordinates. Windows and screens count from the bottom left of the desktop,
/// y upwards. What is missing (container, window, screen) reads as zeros, and setting it does
/// nothing.
class ViewHost {
 public:
  virtual ~ViewHost() = default;

  virtual Size superviewFrameSize() const = 0;

  /// Where the view lies in the container. It may reach beyond it on any side.
  virtual ContainerRect frame() const = 0;
  /// The view's own coordinates of that rectangle.
  virtual ViewRect bounds() const = 0;
  virtual void setFrame(const ContainerRect& frame) = 0;
  virtual void setBounds(const ViewRect& bounds) = 0;
  /// These two keep the origin.
  virtual void setFrameSize(Size size) = 0;
  virtual void setBoundsSize(Size size) = 0;

  /// With its title bar and edges.
  virtual ScreenRect windowFrame() const = 0;
  /// The whole screen that the window is on.
  virtual ScreenRect screenFrame() const = 0;
  /// Size of the window without title bar and edges. Which corner stays is the platform's matter.
  virtual void setContentSize(Size size) = 0;
  /// Moves the window's bottom left corner.
  virtual void setFrameOrigin(ScreenPoint origin) = 0;

  /// The picture's size on screen has changed: watch the mouse there.
  virtual void updateTrackingAreas() = 0;
};

}  // namespace tessary
