#pragma once

#include <array>
#include <cstdint>

#include "base/Color.h"
#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/MyDataArray.h"

namespace tessary {

/// Red, green, blue and alpha as the shaders read them.
using VertexColor = std::array<float, 4>;

/// Turns lines, circles and small markers into vertices. All points are image coordinates: pixels
/// of the video texture, origin at the top left, y down; here they become clip space, y up. Lines
/// take two vertices in a line list, circles one vertex a pixel in a point list. Main thread.
class LinePrimitives {
 public:
  /// `cvTextureSize` is read at each call. With a width or height of 0 positions are infinite or
  /// not a number, and nothing guards against it.
  explicit LinePrimitives(const TextureSize& cvTextureSize) : cvTextureSize_(cvTextureSize) {}

  /// Always opaque: the colour's own alpha is meant to be ignored.
  static VertexColor mtlColorFromColor(const Color& color);

  void addLineToLineVector(MyDataArray<PointVertex>& target, ImagePoint from, ImagePoint to,
                           const VertexColor& color) const;
  /// The pixel at `xx`, `yy` from the centre `from`.
  void addCirclePlotPoint(MyDataArray<PointVertex>& target, ImagePoint from, int32_t xx, int32_t yy,
                          const VertexColor& color) const;
  /// The circle around `from` through `to`. It is meant to be plotted one pixel inside its radius.
  /// A radius above kMaxRadius, which no frame can show, plots nothing.
  void _drawShapeCircle(MyDataArray<PointVertex>& target, ImagePoint from, ImagePoint to,
                        const VertexColor& color) const;
  /// Three lines, the tip at `from` pointing right or left, `size` long and twice as high.
  void drawSmallTriangle(MyDataArray<PointVertex>& target, ImagePoint from, bool toRight,
                         int32_t size, const VertexColor& color) const;
  /// A handle: a thin frame of four lines, or a thick one of twelve if selected.
  void drawSmallFrame(MyDataArray<PointVertex>& target, ImagePoint from, bool selected,
                      const VertexColor& color) const;
  /// One tick square to the segment through each of its ends, `auxLen` to both sides.
  void drawLineAuxLine(MyDataArray<PointVertex>& target, ImagePoint from, ImagePoint withPoint,
                       int32_t auxLen, const VertexColor& color) const;

  /// Largest radius whose square fits 32 bits.
  static constexpr int32_t kMaxRadius = 46340;

 private:
  const TextureSize& cvTextureSize_;
};

}  // namespace tessary
