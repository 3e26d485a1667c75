#include "overlay/LinePrimitives.h"

#include <cmath>

#include "base/Truncate.h"
#include "overlay/ClipSpace.h"

namespace tessary {

namespace {

PointVertex makeVertex(float x, float y, const VertexColor& color) {
  return {{x, y, 0.0f, 1.0f}, {color[0], color[1], color[2], color[3]}};
}

void addFrame(const LinePrimitives& lines, MyDataArray<PointVertex>& target, ImagePoint center,
              double half, const VertexColor& color) {
  const ImagePoint topLeft{center.x - half, center.y - half};
  const ImagePoint bottomLeft{center.x - half, center.y + half};
  const ImagePoint bottomRight{center.x + half, center.y + half};
  const ImagePoint topRight{center.x + half, center.y - half};
  lines.addLineToLineVector(target, topLeft, bottomLeft, color);
  lines.addLineToLineVector(target, bottomLeft, bottomRight, color);
  lines.addLineToLineVector(target, bottomRight, topRight, color);
  lines.addLineToLineVector(target, topRight, topLeft, color);
}

/// Rounded to nearest only where the radius is slanted.
int32_t plotRadius(ImagePoint from, ImagePoint to) {
  const int32_t dx = truncateToInt32(std::abs(to.x - from.x));
  const int32_t dy = truncateToInt32(std::abs(to.y - from.y));
  if (to.x == from.x) return dy;
  if (to.y == from.y) return dx;
  // The sum is meant to wrap at 32 bits. A negative one has no root, and so plots nothing.
  const auto ux = static_cast<uint32_t>(dx);
  const auto uy = static_cast<uint32_t>(dy);
  const auto sum = static_cast<int32_t>(ux * ux + uy * uy);
  const float root = std::sqrt(static_cast<float>(sum));
  return truncateToInt32(static_cast<double>(root) + 0.5);
}

}  // namespace

VertexColor LinePrimitives::mtlColorFromColor(const Color& color) {
  return {static_cast<float>(color.red), static_cast<float>(color.green),
          static_cast<float>(color.blue), 1.0f};
}

void LinePrimitives::addLineToLineVector(MyDataArray<PointVertex>& target, ImagePoint from,
                                         ImagePoint to, const VertexColor& color) const {
  const auto [width, height] = cvTextureSize_;
  for (const ImagePoint point : {from, to}) {
    // Integer halves on purpose: with an odd size the middle pixel is not at exactly 0.
    const float x = clipCoordinate(point.x - width / 2, width);
    const float y = clipCoordinate(height / 2 - point.y, height);
    const PointVertex vertex = makeVertex(x, y, color);
    target.push_back(&vertex, 1);
  }
}

void LinePrimitives::addCirclePlotPoint(MyDataArray<PointVertex>& target, ImagePoint from,
                                        int32_t xx, int32_t yy, const VertexColor& color) const {
  const auto [width, height] = cvTextureSize_;
  const float x = clipCoordinate(from.x + xx - width / 2, width);
  const float y = clipCoordinate(-from.y - yy + height / 2, height);
  const PointVertex vertex = makeVertex(x, y, color);
  target.push_back(&vertex, 1);
}

void LinePrimitives::_drawShapeCircle(MyDataArray<PointVertex>& target, ImagePoint from,
                                      ImagePoint to, const VertexColor& color) const {
  const int32_t r = plotRadius(from, to);
  if (r > kMaxRadius) return;
  int32_t x = r - 1;
  int32_t y = 0;
  int32_t stepX = 1;
  int32_t stepY = 1;
  int32_t err = stepX - 2 * r;
  while (x >= y) {
    addCirclePlotPoint(target, from, x, y, color);
    addCirclePlotPoint(target, from, y, x, color);
    addCirclePlotPoint(target, from, -y, x, color);
    addCirclePlotPoint(target, from, -x, y, color);
    addCirclePlotPoint(target, from, -x, -y, color);
    addCirclePlotPoint(target, from, -y, -x, color);
    addCirclePlotPoint(target, from, y, -x, color);
    addCirclePlotPoint(target, from, x, -y, color);
    if (err <= 0) {
      y += 1;
      err += stepY;
      stepY += 2;
    }
    if (err > 0) {
      x -= 1;
      stepX += 2;
      err += stepX - 2 * r;
    }
  }
}

void LinePrimitives::drawSmallTriangle(MyDataArray<PointVertex>& target, ImagePoint from,
                                       bool toRight, int32_t size, const VertexColor& color) const {
  const double baseX = toRight ? from.x - size : from.x + size;
  const ImagePoint upper{baseX, from.y - size};
  const ImagePoint lower{baseX, from.y + size};
  addLineToLineVector(target, from, upper, color);
  addLineToLineVector(target, upper, lower, color);
  addLineToLineVector(target, lower, from, color);
}

void LinePrimitives::drawSmallFrame(MyDataArray<PointVertex>& target, ImagePoint from,
                                    bool selected, const VertexColor& color) const {
  addFrame(*this, target, from, 5.0, color);
  if (!selected) return;
  addFrame(*this, target, from, 4.0, color);
  addFrame(*this, target, from, 3.0, color);
}

void LinePrimitives::drawLineAuxLine(MyDataArray<PointVertex>& target, ImagePoint from,
                                     ImagePoint withPoint, int32_t auxLen,
                                     const VertexColor& color) const {
  // Half a tick, from its low end on the left or, for a horizontal segment, at the top.
  double a = 0.0;
  double b = 0.0;
  if (withPoint.x == from.x) {
    a = auxLen;
  } else if (withPoint.y == from.y) {
    b = -auxLen;
  } else {
    const double t = std::atan2(withPoint.y - from.y, withPoint.x - from.x);
    a = truncateToInt32(auxLen * std::sin(t));
    b = truncateToInt32(auxLen * std::cos(t));
  }
  for (const ImagePoint end : {from, withPoint}) {
    addLineToLineVector(target, {end.x - a, end.y + b}, {end.x + a, end.y - b}, color);
  }
}

}  // namespace tessary
