#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "FakeFailureListener.h"
#include "FakeViewHost.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryKeyValueStore.h"
#include "Picture.h"
#include "Renderer.h"
#include "qt/QtTextRasterizer.h"
#include "settings/PathGrants.h"
#include "view/PreviewView.h"

namespace tessary::test {

/// The view with real text and a real compositor over a dark frame of 640 by 480 that grows lighter
/// to the right and to the bottom. The three colours of the overlay differ: reticles orange, lines
/// cyan, texts yellow.
///
/// Shapes and reticles are chosen so that no line or label runs exactly between two pixels, and no
/// slanted line across an edge, where the choice is the adapter's: our own raster and both of
/// Mesa's software drivers (GALLIUM_DRIVER=llvmpipe, softpipe) draw the very same pictures.
class PixelTest : public ::testing::Test {
 protected:
  static constexpr TextureSize kSize{640, 480};
  /// A place where nothing is ever under the mouse.
  static constexpr ImagePoint kAside{5, 475};

  PixelTest() {
    host.container = {kSize.width * 1.0, kSize.height * 1.0};
    host.window = {{0, 0}, host.container};
    host.screen = {1920, 1080};
    host.bottom = 1080;
    host.windowIsContainer = true;
    preferences.gridColor = {1.0, 0.5, 0.0, 1.0};
    preferences.lineColor = {0.0, 0.9, 0.9, 1.0};
    preferences.textColor = {1.0, 1.0, 0.25, 1.0};
  }

  void SetUp() override {
    ASSERT_NE(renderer, nullptr);
    view.updateVideoFrame({darkFrame(), std::chrono::milliseconds(0)});
    mainQueue.runAll();
    ASSERT_EQ(view.zoom(), 2);
  }

  // The mouse, in image coordinates.
  void press(ImagePoint p) { ASSERT_TRUE(view.mouseDown(at(p))); }
  void dragTo(ImagePoint p) { view.mouseDragged(at(p)); }
  void release(ImagePoint p) { view.mouseUp(at(p)); }
  void moveTo(ImagePoint p) { view.mouseMoved(at(p)); }
  void click(ImagePoint p) {
    press(p);
    release(p);
  }
  /// Press, drag through all points, release at the last.
  void stroke(std::initializer_list<ImagePoint> points) {
    press(*points.begin());
    for (const ImagePoint& p : points) dragTo(p);
    release(*(points.end() - 1));
  }
  /// The whole of a shape, by the tool of this code, with the third point if there is one.
  void draw(int32_t tool, std::initializer_list<ImagePoint> points) {
    view.changeOperation(tool);
    const ImagePoint* p = points.begin();
    if (tool == kOprPencil) {
      stroke(points);
    } else {
      stroke({p[0], p[1]});
      if (points.size() > 2) {
        moveTo(p[2]);
        click(p[2]);
      }
    }
    moveTo(kAside);
  }

  /// What a still would show now.
  ::testing::AssertionResult picture(const std::string& name) {
    view.drawInView(Surface{}, 1.0);  // composes; there is no screen to draw to
    PixelBuffer composed(kSize);
    if (!compositor.readBack(composed)) return ::testing::AssertionFailure() << "nothing composed";
    return looksLike(composed, name);
  }

  LogCapture log;
  std::unique_ptr<Renderer> renderer = Renderer::make();
  MemoryKeyValueStore store;
  UserDefaults defaults{store};
  PathGrants grants;
  Preferences preferences{defaults, grants};
  FakeViewHost host;
  Compositor& compositor = renderer->compositor();
  QtTextRasterizer rasterizer;
  ManualExecutor mainQueue;
  FakeFailureListener failures;
  SystemClock clock;
  struct : ImageEncoder {
    std::vector<uint8_t> encode(const PixelBuffer&, const std::string&) override { return {}; }
    size_t xmpRoom() const override { return 0; }
  } noEncoder;
  PreviewView view{{.host = host,
                    .compositor = compositor,
                    .textRasterizer = rasterizer,
                    .preferences = preferences,
                    .mainQueue = mainQueue,
                    .jpegEncoder = noEncoder,
                    .pngEncoder = noEncoder,
                    .makeAssetWriter = {},
                    .failures = failures,
                    .setNeedsDisplay = [] {},
                    .withGraphicsContext = [](const std::function<void()>& work) { work(); },
                    .clock = clock,
                    .cameraModel = [] { return std::string(); }}};

 private:
  /// The container is as large as the frame, and lies at the screen's top left.
  static MouseLocation at(ImagePoint p) { return {{p.x, p.y}, {p.x, p.y}}; }

  static std::shared_ptr<PixelBuffer> darkFrame() {
    auto frame = std::make_shared<PixelBuffer>(kSize);
    uint8_t* byte = frame->data();
    for (int32_t y = 0; y < kSize.height; ++y) {
      for (int32_t x = 0; x < kSize.width; ++x) {
        *byte++ = uint8_t(40 + x / 16);
        *byte++ = uint8_t(20 + y / 16);
        *byte++ = 40;
        *byte++ = 255;
      }
    }
    return frame;
  }
};

}  // namespace tessary::test
