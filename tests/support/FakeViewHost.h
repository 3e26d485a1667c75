#pragma once

#include <string>
#include <vector>

#include "preview/ViewHost.h"

namespace tessary::test {

/// A window system of plain numbers, with a log of what it was told, in order.
class FakeViewHost final : public ViewHost {
 public:
  Size container;  // size of the superview
  ScreenRect window;
  Size screen;
  double bottom = 0;               // of the desktop
  double titleBar = 0;             // height of the window above its content
  bool windowIsContainer = false;  // the container follows the window's content
  std::vector<std::string> calls;

  Size superviewFrameSize() const override { return container; }
  ScreenRect windowFrame() const override { return window; }
  Size screenSize() const override { return screen; }
  double desktopBottom() const override { return bottom; }
  void setContentSize(Size size) override {
    calls.emplace_back("setContentSize");
    contentSize = size;
    // This platform keeps the bottom left corner, so that the top has to be put back.
    const double lowEdge = window.origin.y + window.size.height;
    window.size = {size.width, size.height + titleBar};
    window.origin.y = lowEdge - window.size.height;
    if (windowIsContainer) container = size;
  }
  void setFrameOrigin(ScreenPoint origin) override {
    calls.emplace_back("setFrameOrigin");
    window.origin = origin;
  }

  Size contentSize;
};

}  // namespace tessary::test
