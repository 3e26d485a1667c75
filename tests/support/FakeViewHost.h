#pragma once

#include <string>
#include <vector>

#include "preview/ViewHost.h"

namespace tessary::test {

/// A window system of plain numbers, with a log of what it was told, in order.
class FakeViewHost final : public ViewHost {
 public:
  Size container;  // size of the superview
  ContainerRect viewFrame{{0, 0}, {100, 100}};
  ViewRect viewBounds{{0, 0}, {100, 100}};
  ScreenRect window;
  ScreenRect screen;
  double titleBar = 0;             // height of the window above its content
  bool windowIsContainer = false;  // the container follows the window's content
  std::vector<std::string> calls;

  Size superviewFrameSize() const override { return container; }
  ContainerRect frame() const override { return viewFrame; }
  ViewRect bounds() const override { return viewBounds; }
  void setFrame(const ContainerRect& rect) override {
    calls.emplace_back("setFrame");
    viewFrame = rect;
    viewBounds = {{-1, -1}, {1, 1}};  // a platform may derive the bounds from the frame
  }
  void setBounds(const ViewRect& rect) override {
    calls.emplace_back("setBounds");
    viewBounds = rect;
  }
  void setFrameSize(Size size) override {
    calls.emplace_back("setFrameSize");
    viewFrame.size = size;
  }
  void setBoundsSize(Size size) override {
    calls.emplace_back("setBoundsSize");
    viewBounds.size = size;
  }
  ScreenRect windowFrame() const override { return window; }
  ScreenRect screenFrame() const override { return screen; }
  void setContentSize(Size size) override {
    calls.emplace_back("setContentSize");
    contentSize = size;
    // This platform keeps the bottom left corner, so that the top has to be put back.
    window.size = {size.width, size.height + titleBar};
    if (windowIsContainer) container = size;
  }
  void setFrameOrigin(ScreenPoint origin) override {
    calls.emplace_back("setFrameOrigin");
    window.origin = origin;
  }
  void updateTrackingAreas() override { calls.emplace_back("updateTrackingAreas"); }

  Size contentSize;
};

}  // namespace tessary::test
