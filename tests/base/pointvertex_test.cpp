#include "base/PointVertex.h"

#include <gtest/gtest.h>

#include "CompositorFrames.h"

namespace tessary::test {
namespace {

TEST(LineShift, MovesEveryVertexToItsPixelsCentreFarFromAnyRounding) {
  for (const int32_t size : {480, 481, 640, 641, 1079, 1080, 1920, 1921, 4095, 4096}) {
    for (int32_t i = 0; i < size; ++i) {
      const PointVertex vertex = vertexAt({size, size}, i, i);
      const float x = vertex.position[0] + lineShift(size);
      const float y = lineShift(size) - vertex.position[1];  // rows count from the top
      ASSERT_NEAR((x + 1.0F) * float(size) / 2.0F, float(i) + 0.5F, 0.01F) << size;
      ASSERT_NEAR((y + 1.0F) * float(size) / 2.0F, float(i) + 0.5F, 0.01F) << size;
    }
  }
}

}  // namespace
}  // namespace tessary::test
