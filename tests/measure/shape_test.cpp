#include "measure/SHAPE.h"

#include <utility>

#include <gtest/gtest.h>

namespace tessary::test {
namespace {

const PointVertex kVertex{{1, 2, 0, 1}, {0.5f, 0.5f, 0.5f, 1}};

SHAPE filledShape() {
  SHAPE s;
  s.type = kOprPencil;
  s.pt1 = {1, 2};
  s.pt2 = {3, 4};
  s.pt3 = {5, 6};
  const ImagePoint points[] = {{7, 8}, {9, 10}};
  s.pencilPoints.push_back(points, 2);
  s.text = std::make_shared<const std::string>("text");
  s.hitRects[3] = {{1, 1}, {2, 2}};
  s.lineVertices.push_back(&kVertex, 1);
  s.lineVertices.pos = 11;
  s.pointVertices.push_back(&kVertex, 1);
  s.pointVertices.pos = 12;
  return s;
}

void expectFilled(const SHAPE& s) {
  EXPECT_EQ(s.type, kOprPencil);
  EXPECT_EQ(s.pt1, (ImagePoint{1, 2}));
  EXPECT_EQ(s.pt2, (ImagePoint{3, 4}));
  EXPECT_EQ(s.pt3, (ImagePoint{5, 6}));
  ASSERT_EQ(s.pencilPoints.count, 2);
  EXPECT_EQ(s.pencilPoints.data[1], (ImagePoint{9, 10}));
  EXPECT_EQ(s.hitRects[3], (ImageRect{{1, 1}, {2, 2}}));
  ASSERT_EQ(s.lineVertices.count, 1);
  EXPECT_EQ(s.lineVertices.data[0].position[1], 2.0f);
  EXPECT_EQ(s.lineVertices.pos, 11);
  EXPECT_EQ(s.pointVertices.count, 1);
  EXPECT_EQ(s.pointVertices.pos, 12);
}

TEST(Shape, StartsAsAnEmptyLineWhoseRunsBeginAtZero) {
  const SHAPE s;
  EXPECT_EQ(s.type, kOprLine);
  EXPECT_EQ(s.pt1, ImagePoint{});
  EXPECT_EQ(s.pt2, ImagePoint{});
  EXPECT_EQ(s.pt3, ImagePoint{});
  EXPECT_EQ(s.text, nullptr);
  for (const ImageRect& rect : s.hitRects) EXPECT_EQ(rect, ImageRect{});
  EXPECT_EQ(s.pencilPoints.data, nullptr);
  EXPECT_EQ(s.lineVertices.data, nullptr);
  EXPECT_EQ(s.pointVertices.data, nullptr);
  EXPECT_EQ(s.pencilPoints.pos, 0);
  EXPECT_EQ(s.lineVertices.pos, 0);
  EXPECT_EQ(s.pointVertices.pos, 0);
}

TEST(Shape, ACopySharesTheTextAndOwnsItsArrays) {
  const SHAPE source = filledShape();
  const SHAPE copy = source;
  expectFilled(copy);
  EXPECT_EQ(copy.text, source.text);
  EXPECT_NE(copy.pencilPoints.data, source.pencilPoints.data);
  EXPECT_NE(copy.lineVertices.data, source.lineVertices.data);
  EXPECT_NE(copy.pointVertices.data, source.pointVertices.data);
}

TEST(Shape, MoveAssignmentTakesTheTextAndCopiesTheArrays) {
  SHAPE source = filledShape();
  SHAPE target = filledShape();
  const std::weak_ptr<const std::string> old = target.text;
  target = std::move(source);
  expectFilled(target);
  EXPECT_EQ(*target.text, "text");
  EXPECT_TRUE(old.expired());
  // What is left behind is used here on purpose.
  EXPECT_EQ(source.text, nullptr);
  ASSERT_EQ(source.lineVertices.count, 1);
  EXPECT_NE(target.lineVertices.data, source.lineVertices.data);
}

TEST(Shape, CodesKeepTheirValues) {
  EXPECT_EQ(kOprDrag, 0);
  EXPECT_EQ(kOprLine, 1);
  EXPECT_EQ(kOprLine2, 2);
  EXPECT_EQ(kOprCircle, 3);
  EXPECT_EQ(kOprRect, 4);
  EXPECT_EQ(kOprAngle, 5);
  EXPECT_EQ(kOprPencil, 6);
  EXPECT_EQ(kOprText, 7);
  for (int32_t type = -1; type <= 52; ++type) {
    EXPECT_EQ(hasThirdPoint(type), type == 2 || type == 5) << type;
  }
}

}  // namespace
}  // namespace tessary::test
