#include <atomic>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "FakeCompositor.h"
#include "FakeViewHost.h"
#include "preview/RenderPipeline.h"

namespace tessary::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Fixture {
  explicit Fixture(Size container = {800, 600}) { host.container = container; }

  /// A frame of `size` whose bytes are `value`, as the frame queue brings it.
  void frame(TextureSize size, uint8_t value) {
    auto buffer = std::make_shared<PixelBuffer>(size);
    std::fill_n(buffer->data(), buffer->byteCount(), value);
    ring.push(std::move(buffer));
  }
  /// The main thread's share of a new size.
  void fitTo(TextureSize size) {
    texture = size;
    geometry.frameSizeDidChange(size);
    geometry.zoomTo(-1);
  }
  bool draw() { return pipeline.drawInView(geometry, overlay, {800, 600}, 1.0); }

  FakeViewHost host;
  TextureSize texture;
  ViewGeometry geometry{host, texture};
  FrameRing ring;
  FakeCompositor compositor;
  RenderPipeline pipeline{ring, compositor};
  OverlayVertices overlay;
};

TEST(RenderPipeline, DrawsNothingBeforeTheFirstFrame) {
  Fixture f;
  EXPECT_FALSE(f.draw());
  EXPECT_FALSE(f.pipeline.composeNow({}));
  EXPECT_THAT(f.compositor.calls, IsEmpty());
  EXPECT_EQ(f.pipeline.composedSize(), TextureSize{});
}

TEST(RenderPipeline, TheFrameQueueTouchesNoGraphics) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.frame({1280, 720}, 2);
  EXPECT_THAT(f.compositor.calls, IsEmpty());
}

TEST(RenderPipeline, MakesItsResourcesInTheFirstDrawAndComposesEachFrameOnce) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(
      f.compositor.takeCalls(),
      ElementsAre("clear", "init 640x480", "compose 1 lines 0 points 0", "present 80,60 640x480"));
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(), ElementsAre("present 80,60 640x480"));
  f.frame({640, 480}, 2);
  f.frame({640, 480}, 3);
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(),
              ElementsAre("compose 3 lines 0 points 0", "present 80,60 640x480"));
}

TEST(RenderPipeline, ComposesAFrozenPictureAgainWhenTheOverlayChanged) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  f.draw();
  f.compositor.calls.clear();
  const std::vector<PointVertex> vertices(6);
  f.overlay = {std::span(vertices).first(4), std::span(vertices).last(2), 7};
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(),
              ElementsAre("compose 1 lines 4 points 2", "present 80,60 640x480"));
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(), ElementsAre("present 80,60 640x480"));
}

TEST(RenderPipeline, HandsEachFrameOverOnceHoweverOftenTheOverlayChanges) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  for (uint64_t revision = 1; revision < 5; ++revision) {
    f.overlay.revision = revision;
    f.draw();
  }
  EXPECT_EQ(f.compositor.frames, 1U);
  EXPECT_EQ(f.compositor.composed.size(), 4U);
  f.frame({640, 480}, 2);
  f.draw();
  EXPECT_EQ(f.compositor.frames, 2U);
  EXPECT_EQ(f.compositor.composed.size(), 5U);
}

TEST(RenderPipeline, AfterALostContextTheNextCompositorShowsTheSame) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  f.draw();
  f.compositor.calls.clear();
  FakeCompositor next;
  f.pipeline.contextWasLost(next);
  EXPECT_THAT(f.compositor.calls, ElementsAre("lost"));
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.calls, ElementsAre("lost")) << "it is asked for nothing more";
  EXPECT_THAT(next.takeCalls(), ElementsAre("clear", "init 640x480", "compose 1 lines 0 points 0",
                                            "present 80,60 640x480"));
}

TEST(RenderPipeline, ZoomAndPanOnlyChangeWhereThePictureIsPresented) {
  Fixture f;
  f.frame({1280, 720}, 1);
  f.fitTo({1280, 720});
  f.draw();
  f.compositor.calls.clear();
  f.geometry.zoomTo(4);
  f.draw();
  f.geometry.offsetLocationTo(0, 480);
  f.draw();
  EXPECT_THAT(f.compositor.calls,
              ElementsAre("present -560,-240 1920x1080", "present 0,-480 1920x1080"));
}

TEST(RenderPipeline, TheSmallestFrameIs640By480) {
  struct Row {
    TextureSize size;
    bool composed;
  };
  const Row table[] = {
      {{640, 480}, true},  {{639, 480}, false}, {{640, 479}, false},
      {{320, 240}, false}, {{480, 640}, false}, {{1920, 479}, false},
  };
  for (const Row& row : table) {
    Fixture f;
    f.frame(row.size, 1);
    f.fitTo(row.size);
    EXPECT_EQ(f.draw(), row.composed) << row.size.width << "x" << row.size.height;
    EXPECT_EQ(f.compositor.hasBufferResources(), row.composed);
    EXPECT_EQ(f.pipeline.composedSize(), row.composed ? row.size : TextureSize{});
    EXPECT_NE(f.ring.slot(1), nullptr) << "the ring is filled all the same";
  }
}

TEST(RenderPipeline, ANewSizeMakesEverythingAnewAndStartsInSlotOne) {
  Fixture f;
  for (uint8_t i = 1; i <= 3; ++i) f.frame({640, 480}, i);
  f.fitTo({640, 480});
  f.draw();
  f.compositor.calls.clear();
  f.frame({1280, 720}, 9);
  EXPECT_EQ(f.ring.cvLastTexture(), 1);
  EXPECT_EQ(f.ring.slot(0), nullptr);
  EXPECT_EQ(f.ring.slot(2), nullptr);
  // The main thread lays out for the old size still: composed for a still, and not shown.
  EXPECT_FALSE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(),
              ElementsAre("clear", "init 1280x720", "compose 9 lines 0 points 0"));
  f.fitTo({1280, 720});
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(), ElementsAre("present -240,-60 1280x720"));
}

TEST(RenderPipeline, GoesThroughTooSmallAndBack) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  EXPECT_TRUE(f.draw());
  f.frame({320, 240}, 2);
  f.fitTo({320, 240});
  EXPECT_FALSE(f.draw());
  EXPECT_FALSE(f.compositor.hasBufferResources());
  f.frame({640, 480}, 3);
  f.fitTo({640, 480});
  EXPECT_TRUE(f.draw());
}

TEST(RenderPipeline, StoppingDropsTheResourcesInTheNextDrawAndTheSameSizeStartsAgain) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  f.draw();
  f.compositor.calls.clear();

  f.ring.clear();
  EXPECT_EQ(f.ring.newest().frame, nullptr);
  EXPECT_THAT(f.compositor.calls, IsEmpty());
  EXPECT_FALSE(f.draw());
  EXPECT_FALSE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(), ElementsAre("clear"));
  EXPECT_EQ(f.pipeline.composedSize(), TextureSize{});

  f.frame({640, 480}, 2);
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(
      f.compositor.takeCalls(),
      ElementsAre("clear", "init 640x480", "compose 2 lines 0 points 0", "present 80,60 640x480"));
}

TEST(RenderPipeline, ASurfaceWithoutSizeIsComposedAndNotPresented) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  EXPECT_FALSE(f.pipeline.drawInView(f.geometry, {}, {0, 0}, 1.0));
  EXPECT_THAT(f.compositor.calls,
              ElementsAre("clear", "init 640x480", "compose 1 lines 0 points 0"));
}

TEST(RenderPipeline, AStillFindsTheCurrentPictureWithoutADraw) {
  Fixture f;
  f.frame({640, 480}, 1);
  EXPECT_TRUE(f.pipeline.composeNow({}));
  EXPECT_EQ(f.pipeline.composedSize(), (TextureSize{640, 480}));
  PixelBuffer target({640, 480});
  EXPECT_TRUE(f.pipeline.readBack(target));
  PixelBuffer other({640, 479});
  EXPECT_FALSE(f.pipeline.readBack(other));
  EXPECT_THAT(f.compositor.calls,
              ElementsAre("clear", "init 640x480", "compose 1 lines 0 points 0", "readBack"));
}

TEST(RenderPipeline, ThereIsNothingToReadBackWithoutAPicture) {
  Fixture f;
  PixelBuffer target({640, 480});
  EXPECT_FALSE(f.pipeline.readBack(target));
  EXPECT_THAT(f.compositor.calls, IsEmpty());
}

TEST(RenderPipeline, ALostContextIsMadeUpForInTheNext) {
  Fixture f;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  f.draw();
  f.compositor.calls.clear();
  f.pipeline.contextWillBeDestroyed();
  EXPECT_THAT(f.compositor.takeCalls(), ElementsAre("clear", "drop all"));
  EXPECT_TRUE(f.draw());
  EXPECT_THAT(f.compositor.takeCalls(),
              ElementsAre("init 640x480", "compose 1 lines 0 points 0", "present 80,60 640x480"));
}

TEST(RenderPipeline, ASizeThatTheGraphicsRefuseIsTriedOnceAndNotAtEveryTick) {
  Fixture f;
  f.compositor.refuse = true;
  f.frame({640, 480}, 1);
  f.fitTo({640, 480});
  for (int tick = 0; tick < 3; ++tick) EXPECT_FALSE(f.draw());
  EXPECT_THAT(f.compositor.calls, ElementsAre("clear", "init 640x480"));
}

TEST(RenderPipeline, SizesChangingUnderTheDrawNeverMeetAFrameOfAnother) {
  Fixture f;  // the compositor checks each frame's size against its own
  std::atomic<bool> done{false};
  std::thread frameQueue([&] {
    const TextureSize sizes[] = {{640, 480}, {644, 484}, {100, 100}, {640, 482}};
    for (int i = 0; i < 400; ++i) f.frame(sizes[size_t(i / 3) % 4], uint8_t(i));
    done = true;
  });
  while (!done) f.pipeline.composeNow({});
  frameQueue.join();
  EXPECT_EQ(f.pipeline.composeNow({}), f.ring.newest().frame->size().width >= 640);
}

}  // namespace
}  // namespace tessary::test
