#pragma once
// What overlay tests expect, in image pixels, and its comparison with vertices to the last bit.

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/LinePrimitives.h"
#include "overlay/MyDataArray.h"

namespace tessary::test {

using Vertices = MyDataArray<PointVertex>;

struct Segment {
  double x1, y1, x2, y2;
};

/// The position formula with every narrowing forced through memory.
inline float clipReference(double fromMiddle, int32_t extent) {
  volatile float narrowed = static_cast<float>(fromMiddle);
  volatile float whole = static_cast<float>(extent);
  volatile double half = static_cast<double>(whole) / 2.0;
  volatile double quotient = static_cast<double>(narrowed) / half;
  return static_cast<float>(quotient);
}

inline PointVertex vertexAt(double fromMiddleX, double fromMiddleY, TextureSize size,
                            const VertexColor& color) {
  return {{clipReference(fromMiddleX, size.width), clipReference(fromMiddleY, size.height), 0, 1},
          {color[0], color[1], color[2], color[3]}};
}

inline PointVertex vertexAt(ImagePoint point, TextureSize size, const VertexColor& color) {
  return vertexAt(point.x - size.width / 2, size.height / 2 - point.y, size, color);
}

inline std::vector<PointVertex> lineVertices(const std::vector<Segment>& segments, TextureSize size,
                                             const VertexColor& color) {
  std::vector<PointVertex> vertices;
  for (const Segment& s : segments) {
    vertices.push_back(vertexAt(ImagePoint{s.x1, s.y1}, size, color));
    vertices.push_back(vertexAt(ImagePoint{s.x2, s.y2}, size, color));
  }
  return vertices;
}

/// Pixels of the circle that is plotted for radius `r`, in its order.
inline std::vector<PointVertex> circleVertices(ImagePoint center, int r, TextureSize size,
                                               const VertexColor& color) {
  std::vector<PointVertex> vertices;
  int x = r - 1, y = 0, stepX = 1, stepY = 1, err = 1 - 2 * r;
  while (x >= y) {
    const int offsets[8][2] = {{x, y},   {y, x},   {-y, x}, {-x, y},
                               {-x, -y}, {-y, -x}, {y, -x}, {x, -y}};
    for (const auto& [xx, yy] : offsets) {
      vertices.push_back(
          vertexAt(center.x + xx - size.width / 2, -center.y - yy + size.height / 2, size, color));
    }
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
  return vertices;
}

inline std::string describe(const PointVertex& v) {
  std::string text;
  for (const float f : v.position) text += std::to_string(f) + " ";
  text += "| ";
  for (const float f : v.color) text += std::to_string(f) + " ";
  return text;
}

inline bool sameBits(const PointVertex& a, const PointVertex& b) {
  using Bits = std::array<uint32_t, 8>;
  return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

inline void expectVertices(const Vertices& actual, const std::vector<PointVertex>& expected) {
  ASSERT_EQ(actual.count, static_cast<int32_t>(expected.size()));
  for (int32_t i = 0; i < actual.count; ++i) {
    const PointVertex& wanted = expected[static_cast<size_t>(i)];
    ASSERT_TRUE(sameBits(actual.data[i], wanted))
        << "vertex " << i << ": " << describe(actual.data[i]) << "wanted: " << describe(wanted);
  }
}

inline void expectLines(const Vertices& actual, const std::vector<Segment>& segments,
                        TextureSize size, const VertexColor& color) {
  expectVertices(actual, lineVertices(segments, size, color));
}

/// The pixels, in image coordinates, that a point list covers.
struct Box {
  int left, top, right, bottom;  ///< All four belong to the box.
  friend bool operator==(const Box&, const Box&) = default;
};
inline void PrintTo(const Box& b, std::ostream* out) {
  *out << b.left << "," << b.top << " to " << b.right << "," << b.bottom;
}
inline Box boxOf(const PointVertex* data, int32_t count, TextureSize size) {
  Box box{1 << 30, 1 << 30, -(1 << 30), -(1 << 30)};
  for (int32_t i = 0; i < count; ++i) {
    const double px = static_cast<double>(data[i].position[0]) * (size.width / 2.0);
    const double py = static_cast<double>(data[i].position[1]) * (size.height / 2.0);
    const int x = static_cast<int>(std::lround(px)) + size.width / 2;
    const int y = size.height / 2 - static_cast<int>(std::lround(py));
    box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
           std::max(box.bottom, y)};
  }
  return box;
}
inline Box boxOf(const Vertices& points, TextureSize size) {
  return boxOf(points.data, points.count, size);
}

}  // namespace tessary::test
