// Long random sequences of everything that a user, or an unplugged camera, can do. After each step
// the total lists must be the reticle and then each shape's own vertices.
#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "MeasureFixture.h"

namespace tessary::test {
namespace {

class RandomUser {
 public:
  explicit RandomUser(uint32_t seed) : random_(seed) { remember(); }

  void step() {
    const int kind = pick(100);
    if (kind < 70) {
      useMouse();
    } else if (kind < 80) {
      desk_.overlay.changeOperation(pick(9) - 1);
    } else if (kind < 92) {
      editList();
    } else {
      changeView();
    }
  }

  void expectConsistent() const {
    if (listsHoldShapes_) return expectRuns(desk_, front_);
    ASSERT_EQ(desk_.totalLines.count, static_cast<int32_t>(front_.lines.size()));
    ASSERT_EQ(desk_.totalPoints.count, static_cast<int32_t>(front_.points.size()));
    ASSERT_TRUE(sameBits(desk_.totalLines.data, front_.lines.data(), desk_.totalLines.count));
    ASSERT_TRUE(sameBits(desk_.totalPoints.data, front_.points.data(), desk_.totalPoints.count));
  }

  /// After a rebuild every shape is drawn anew: the lists, and not only the runs, are as told.
  void rebuildAndExpect() {
    if (desk_.calibrationLine.isShown()) desk_.overlay.stopCalibration();
    desk_.overlay.redrawLinesAndPoints();
    remember();
    expectConsistent();
  }

  int32_t shapeCount() const { return desk_.shapes.shapeCount(); }

 private:
  int pick(int n) { return static_cast<int>(random_() % static_cast<uint32_t>(n)); }

  /// A place in the picture, a little outside of it, or on a handle.
  ImagePoint place() {
    const int count = desk_.shapes.shapeCount();
    if (pick(3) == 0 && count > 0) {
      const SHAPE& s = desk_.shapes.shape(pick(count));
      const ImagePoint corner = s.hitRects[static_cast<size_t>(pick(4))].origin;
      return {corner.x + pick(14), corner.y + pick(14)};
    }
    if (pick(6) == 0) {
      const auto& line = desk_.calibrationLine;
      const int32_t x =
          pick(2) ? line._calibrationLineLeftPosition : line._calibrationLineRightPosition;
      return {double(x), 240.0};
    }
    return {pick(720) - 40 + pick(4) * 0.25, pick(560) - 40 + pick(4) * 0.25};
  }

  void useMouse() {
    // A move, drag or press with the line showing rebuilds, with the line alone.
    const bool calibrating = desk_.calibrationLine.isShown();
    switch (pick(4)) {
      case 0: desk_.press(place()); break;
      case 1: desk_.release(place()); break;
      case 2: desk_.drag(place()); break;
      default: desk_.move(place()); break;
    }
    if (calibrating) remember();
  }

  void editList() {
    ShapeList& shapes = desk_.shapes;
    switch (pick(12)) {
      case 0:
      case 1: return shapes.setInputText(pick(5) == 0 ? "" : std::string(1 + pick(20), 'x'));
      case 2:
      case 3: return shapes.removeSelectedShape();
      case 4:
      case 5: return shapes.removeLastShape();
      case 6: return pick(8) == 0 ? shapes.removeAllShapes() : shapes.removeLastShape();
      case 7:
        desk_.tool._iDrawingShape = pick(shapes.shapeCount() + 3) - 1;  // stale
        return;
      case 8: desk_.tool._iSelectedShape = pick(shapes.shapeCount() + 3) - 1; return;
      case 9: desk_.tool._iHoverShape = pick(shapes.shapeCount() + 3) - 1; return;
      default:
        return shapes.moveShape(pick(shapes.shapeCount() + 3) - 1, pick(41) - 20, pick(41) - 20);
    }
  }

  void changeView() {
    switch (pick(9)) {
      case 0: desk_.overlay.startCalibration(); break;
      case 1:
      case 2: desk_.overlay.stopCalibration(); break;
      case 3: desk_.overlay.changeScale(pick(5)); break;
      case 4: {
        const float values[] = {-1.0f, 0.0f, 1.0f, 17.3f, 1000.0f};
        desk_.overlay.setCalibration(values[pick(5)], pick(2));
        break;
      }
      case 5: desk_.geometry.zoomTo(pick(6) - 1); return;  // rebuilds nothing
      case 6: desk_.stopPreview(); return;
      case 7: {
        const TextureSize sizes[] = {{640, 480}, {641, 481}, {1280, 720}};
        desk_.texture = sizes[pick(3)];
        desk_.geometry.frameSizeDidChange(desk_.texture);
        desk_.geometry.zoomTo(-1);
        return;
      }
      default:
        desk_.preferences.lineColor.green = pick(10) / 10.0;
        desk_.preferences.textColor.red = pick(10) / 10.0;
        desk_.overlay.redrawLinesAndPoints();
        break;
    }
    remember();
  }

  /// Notes what the last full rebuild put in front of the shapes.
  void remember() {
    listsHoldShapes_ = !desk_.calibrationLine.isShown();
    if (listsHoldShapes_) {
      front_ = frontRun(desk_);
    } else {
      front_ = {{desk_.totalLines.data, desk_.totalLines.data + desk_.totalLines.count},
                {desk_.totalPoints.data, desk_.totalPoints.data + desk_.totalPoints.count}};
    }
  }

  std::mt19937 random_;
  Desk desk_;
  FrontRun front_;
  bool listsHoldShapes_ = true;
};

TEST(RandomSequences, KeepTheRunsInTheTotalLists) {
  int32_t most = 0;
  for (uint32_t seed = 1; seed <= 12; ++seed) {
    RandomUser user(seed);
    for (int i = 0; i < 2500; ++i) {
      SCOPED_TRACE(fmt::format("seed {} step {}", seed, i));
      user.step();
      user.expectConsistent();
      if (testing::Test::HasFailure()) return;
      if (i % 500 == 499) user.rebuildAndExpect();
      most = std::max(most, user.shapeCount());
    }
  }
  EXPECT_GT(most, 8);  // it was not all about empty lists
}

}  // namespace
}  // namespace tessary::test
