#pragma once
// Everything that shapes and the mouse work with, as the view wires it, without a window.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "FakeRasterizer.h"
#include "FakeViewHost.h"
#include "MemoryKeyValueStore.h"
#include "NoGrants.h"
#include "base/Log.h"
#include "measure/Overlay.h"
#include "preview/ViewGeometry.h"
#include "settings/Preferences.h"

namespace tessary::test {

using Vertices = MyDataArray<PointVertex>;

/// Every letter is 10 by 20 and shows as one pixel at its lower left corner.
class DottedRasterizer final : public TextRasterizer {
 public:
  Size imageBounds(const std::string& text, const Font& font) override {
    return {static_cast<double>(letters(text) * 10 * font.pixelSize / 26), 20};
  }
  void drawLine(const std::string& text, const Font&, const Color& color, double x, double baseline,
                const Bitmap& bitmap) override {
    if (recording) drawn.push_back(text);
    lastColor = color;
    const int row = bitmap.height - 1 - static_cast<int>(baseline);
    for (int i = 0; i < letters(text); ++i) {
      uint8_t* pixel = bitmap.data + row * bitmap.bytesPerRow + (static_cast<int>(x) + 10 * i) * 4;
      pixel[0] = static_cast<uint8_t>(std::lround(color.red * 255));
      pixel[1] = static_cast<uint8_t>(std::lround(color.green * 255));
      pixel[2] = static_cast<uint8_t>(std::lround(color.blue * 255));
      pixel[3] = 255;
    }
  }
  static int letters(const std::string& text) { return FakeRasterizer::letters(text); }
  /// What was drawn since the last call.
  std::vector<std::string> take() { return std::exchange(drawn, {}); }

  bool recording = true;
  std::vector<std::string> drawn;
  Color lastColor;
};

class CountingDelegate final : public PreviewViewLocationDelegate {
 public:
  void previewViewFrameDidChange() override {}
  void previewViewLocationDidChange(ViewPoint location) override { locations.push_back(location); }
  void previewViewZoomDidChange() override {}
  std::vector<ViewPoint> locations;
};

struct RegisteredDefaults : UserDefaults {
  explicit RegisteredDefaults(KeyValueStore& keyValueStore) : UserDefaults(keyValueStore) {
    Preferences::registerDefaults(*this);
  }
};

struct Segment {
  double x1, y1, x2, y2;
};

struct Desk {
  explicit Desk(TextureSize frame = {640, 480}, Size container = {640, 480}) : texture(frame) {
    preferences.lineColor = {1.0, 0.5, 0.25, 0.5};
    preferences.textColor = {0.0, 1.0, 0.5, 1.0};
    preferences.gridColor = {1.0, 0.0, 0.0, 1.0};
    preferences.font = {26};
    host.container = container;
    geometry.setLocationDelegate(&delegate);
    geometry.frameSizeDidChange(frame);
    geometry.zoomTo(-1);
  }

  void stopPreview() {
    texture = {};
    geometry.stopPreview();
    overlay.stopPreview();
  }

  // The mouse at 100 percent without a pan: a view point, and the screen point that belongs to it.
  static ViewPoint viewOf(ImagePoint p) { return {p.x, p.y}; }
  static ScreenPoint screenOf(ImagePoint p) { return {p.x + 1000, p.y + 2000}; }
  void press(ImagePoint p) { mouse.mouseDown(viewOf(p), screenOf(p)); }
  void drag(ImagePoint p) { mouse.mouseDragged(viewOf(p), screenOf(p)); }
  void release(ImagePoint p) { mouse.mouseUp(viewOf(p)); }
  void move(ImagePoint p) { mouse.mouseMoved(viewOf(p)); }
  void click(ImagePoint p) {
    press(p);
    release(p);
  }
  /// Draws a whole shape with its tool; `third` is used by tools that need it.
  SHAPE& draw(int32_t op, ImagePoint from, ImagePoint to, ImagePoint third = {}) {
    overlay.changeOperation(op);
    press(from);
    drag(to);
    release(to);
    if (hasThirdPoint(op)) {
      move(third);
      press(third);
      release(third);
    }
    rasterizer.take();
    return shapes._shapes.back();
  }
  /// A shape with these points, drawn in its idle state; what it was labelled with.
  std::vector<std::string> labelsOf(int32_t type, ImagePoint pt1, ImagePoint pt2,
                                    ImagePoint pt3 = {-1, -1}) {
    SHAPE& s = shapes.newShape(pt1);
    const int32_t index = std::exchange(tool._iDrawingShape, -1);
    s.type = type;
    s.pt2 = pt2;
    s.pt3 = pt3;
    rasterizer.take();
    preferences.textColor.alpha -= 1e-9;  // so that no label is known already
    shapes.redrawSelectedShape(index);
    return rasterizer.take();
  }

  VertexColor lineColor() const { return {1.0f, 0.5f, 0.25f, 1.0f}; }

  LogRedirection quiet{[](std::string_view) {}};  // the settings log what they load
  MemoryKeyValueStore store;
  RegisteredDefaults defaults{store};
  NoGrants grants;
  Preferences preferences{defaults, grants};
  TextureSize texture;
  FakeViewHost host;
  CountingDelegate delegate;
  ViewGeometry geometry{host, texture};
  DottedRasterizer rasterizer;
  Overlay overlay{preferences, texture, rasterizer, geometry};
  // Its parts, as the tests call them.
  const LinePrimitives& lines = overlay.context.lines;
  TextPrimitives& text = overlay.context.text;
  Vertices& totalLines = overlay.context._totalLines;
  Vertices& totalPoints = overlay.context._totalPoints;
  ToolState& tool = overlay.tool;
  CalibrationLine& calibrationLine = overlay.calibrationLine;
  ShapeList& shapes = overlay.shapes;
  MouseInteraction& mouse = overlay.mouse;
};

/// A pixel's vertex, each narrowing written out.
inline PointVertex vertexAt(ImagePoint p, TextureSize size, const VertexColor& color) {
  const auto place = [](double fromMiddle, int32_t extent) {
    const float narrowed = static_cast<float>(fromMiddle);
    return static_cast<float>(double{narrowed} / (double{static_cast<float>(extent)} / 2.0));
  };
  return {
      {place(p.x - size.width / 2, size.width), place(size.height / 2 - p.y, size.height), 0, 1},
      {color[0], color[1], color[2], color[3]}};
}

inline bool sameBits(const PointVertex* a, const PointVertex* b, int32_t count) {
  return count == 0 || std::memcmp(a, b, static_cast<size_t>(count) * sizeof(PointVertex)) == 0;
}

/// Compares a line list with `segments`, to the last bit.
inline void expectLines(const Desk& desk, const Vertices& actual,
                        const std::vector<Segment>& segments) {
  ASSERT_EQ(actual.count, static_cast<int32_t>(segments.size() * 2));
  for (size_t i = 0; i < segments.size(); ++i) {
    const Segment& s = segments[i];
    const PointVertex wanted[] = {vertexAt({s.x1, s.y1}, desk.texture, desk.lineColor()),
                                  vertexAt({s.x2, s.y2}, desk.texture, desk.lineColor())};
    EXPECT_TRUE(sameBits(&actual.data[i * 2], wanted, 2)) << "segment " << i;
  }
}

/// Four sides of a handle of this half size.
inline std::vector<Segment> square(ImagePoint c, double half) {
  const double l = c.x - half, r = c.x + half, t = c.y - half, b = c.y + half;
  return {{l, t, l, b}, {l, b, r, b}, {r, b, r, t}, {r, t, l, t}};
}
inline std::vector<Segment> thinFrame(ImagePoint c) { return square(c, 5); }
inline std::vector<Segment> operator+(std::vector<Segment> a, const std::vector<Segment>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
inline std::vector<Segment> thickFrame(ImagePoint c) {
  return square(c, 5) + square(c, 4) + square(c, 3);
}
inline std::vector<Segment> box(ImagePoint a, ImagePoint b) {
  return {{a.x, a.y, b.x, a.y}, {b.x, a.y, b.x, b.y}, {b.x, b.y, a.x, b.y}, {a.x, b.y, a.x, a.y}};
}

inline ImageRect handle(ImagePoint p) { return {{p.x - 6, p.y - 6}, {13, 13}}; }
inline const ImageRect kNoRect{};

/// What `redrawLinesAndPoints` puts in front of the shapes.
struct FrontRun {
  std::vector<PointVertex> lines;
  std::vector<PointVertex> points;
};
inline FrontRun frontRun(const Desk& desk) {
  int32_t shapeLines = 0;
  int32_t shapePoints = 0;
  for (const SHAPE& s : desk.shapes._shapes) {
    shapeLines += s.lineVertices.count;
    shapePoints += s.pointVertices.count;
  }
  const auto front = [](const Vertices& total, int32_t behind) {
    return std::vector(total.data, total.data + (total.count - behind));
  };
  return {front(desk.totalLines, shapeLines), front(desk.totalPoints, shapePoints)};
}

/// The total lists are this front run and then each shape's own vertices, where its `pos` says.
inline void expectRuns(const Desk& desk, const FrontRun& front) {
  const auto check = [&](const Vertices& total, const std::vector<PointVertex>& first,
                         Vertices SHAPE::*own) {
    int32_t at = static_cast<int32_t>(first.size());
    ASSERT_LE(at, total.count);
    EXPECT_TRUE(sameBits(total.data, first.data(), at)) << "front run";
    for (int32_t i = 0; i < desk.shapes.shapeCount(); ++i) {
      const Vertices& run = desk.shapes.shape(i).*own;
      ASSERT_EQ(run.pos, at) << "shape " << i;
      ASSERT_LE(at + run.count, total.count) << "shape " << i;
      EXPECT_TRUE(sameBits(total.data + at, run.data, run.count)) << "shape " << i;
      at += run.count;
    }
    EXPECT_EQ(total.count, at);
  };
  check(desk.totalLines, front.lines, &SHAPE::lineVertices);
  check(desk.totalPoints, front.points, &SHAPE::pointVertices);
}
inline void expectRuns(const Desk& desk) { expectRuns(desk, frontRun(desk)); }

}  // namespace tessary::test
