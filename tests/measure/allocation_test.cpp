// The steady state of a redraw allocates nothing.
#include <atomic>
#include <cstdlib>
#include <new>

#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace {

std::atomic<int64_t> gAllocations{0};

void* countedAllocation(size_t size) {
  ++gAllocations;
  void* block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

// Not inlined, so that the compiler does not take one half of a pair for foreign to the other.
[[gnu::noinline]] void* operator new(size_t size) { return countedAllocation(size); }
[[gnu::noinline]] void* operator new[](size_t size) { return countedAllocation(size); }
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, size_t) noexcept { std::free(block); }

namespace tessary::test {
namespace {

/// The blocks of all vertex arrays: these come from `malloc`, not from `operator new`.
std::vector<const void*> blocks(const Desk& desk) {
  std::vector<const void*> result{desk.totalLines.data, desk.totalPoints.data};
  for (const SHAPE& s : desk.shapes._shapes) {
    result.push_back(s.lineVertices.data);
    result.push_back(s.pointVertices.data);
  }
  return result;
}

TEST(SteadyState, ARedrawAllocatesNothing) {
  Desk desk;
  desk.overlay.setCalibration(0.0625f, kUnitMillimetre);  // long labels
  desk.overlay.changeScale(kScaleCrosshair);
  desk.draw(kOprLine, {100, 20}, {200, 20});
  desk.draw(kOprLine2, {100, 100}, {200, 130}, {150, 150});
  desk.draw(kOprCircle, {300, 300}, {340, 330});
  desk.draw(kOprRect, {400, 100}, {460, 140});
  desk.draw(kOprAngle, {100, 300}, {200, 300}, {150, 250});
  desk.draw(kOprPencil, {500, 300}, {520, 330});
  desk.shapes.setInputText("a text that is longer than a string holds without a block");
  desk.rasterizer.recording = false;
  const std::vector<ImagePoint> handles = {{100, 20},  {150, 150}, {300, 300}, {400, 100},
                                           {100, 300}, {500, 300}, {340, 220}};
  const auto useAll = [&] {
    for (const ImagePoint p : handles) {
      desk.move(p);
      desk.press(p);
      for (int i = 1; i <= 5; ++i) desk.drag({p.x + i, p.y - i});
      desk.drag(p);
      desk.release(p);
      desk.move({5, 470});
    }
    desk.press({5, 470});
    desk.release({5, 470});
    desk.overlay.redrawLinesAndPoints();
  };
  useAll();
  const auto before = blocks(desk);
  const int64_t allocations = gAllocations;
  useAll();
  const int64_t allocated = gAllocations - allocations;
  EXPECT_EQ(allocated, 0);
  EXPECT_EQ(blocks(desk), before);
  EXPECT_EQ(desk.shapes.shape(4).pt1, (ImagePoint{100, 300}));  // every drag found its shape
}

TEST(SteadyState, TheCountingSeesAnAllocation) {
  const int64_t before = gAllocations;
  const auto* volatile number = new int(1);
  EXPECT_GT(gAllocations, before);
  delete number;
}

}  // namespace
}  // namespace tessary::test
