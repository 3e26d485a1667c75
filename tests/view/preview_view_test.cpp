#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeCompositor.h"
#include "FakeFailureListener.h"
#include "FakeRasterizer.h"
#include "FakeViewHost.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryKeyValueStore.h"
#include "TemporaryFolder.h"
#include "settings/PathGrants.h"
#include "view/PreviewView.h"

namespace tessary {
namespace {

using std::chrono::milliseconds;
using test::FakeCompositor;
using test::FakeRasterizer;
using test::FakeViewHost;
using test::ManualExecutor;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Makes one byte of any picture, and remembers its size.
class FakeEncoder final : public ImageEncoder {
 public:
  std::vector<uint8_t> encode(const PixelBuffer& picture, const std::string& xmp) override {
    encoded.push_back(picture.size());
    lastXmp = xmp;
    return {0};
  }
  size_t xmpRoom() const override { return 100'000; }
  std::vector<TextureSize> encoded;
  std::string lastXmp;
};

class SetClock final : public Clock {
 public:
  CalendarTime localTime() override { return {2025, 1, 15, 9, 30, 5, 3600}; }
};

/// Takes every frame, and remembers which.
class FakeAssetWriter final : public AssetWriter {
 public:
  /// What the test and the recording queue share.
  struct Movie {
    std::mutex mutex;
    std::vector<SampleBuffer> frames;
    std::vector<int64_t> statuses;
  };
  explicit FakeAssetWriter(std::shared_ptr<Movie> movie) : movie_(std::move(movie)) {}
  bool canApplyOutputSettings(const MovieSettings&) const override { return true; }
  Result<void> startWriting(const MovieSettings&) override { return {}; }
  void startSessionAtSourceTime(MediaTime) override {}
  bool isReadyForMoreMediaData() const override { return true; }
  Result<void> appendSampleBuffer(const SampleBuffer& frame) override {
    const std::lock_guard lock(movie_->mutex);
    movie_->frames.push_back(frame);
    return {};
  }
  void finishWritingWithCompletionHandler(std::function<void()> completed) override {
    finisher_ = std::jthread(std::move(completed));
  }
  std::string error() const override { return {}; }

 private:
  std::shared_ptr<Movie> movie_;
  std::jthread finisher_;
};

class MovieStatus final : public PreviewViewRecordDelegate {
 public:
  explicit MovieStatus(std::shared_ptr<FakeAssetWriter::Movie> movie) : movie_(std::move(movie)) {}
  void recordStatusDidChange(int64_t status) override {
    const std::lock_guard lock(movie_->mutex);
    movie_->statuses.push_back(status);
  }

 private:
  std::shared_ptr<FakeAssetWriter::Movie> movie_;
};

class RecordingDelegate final : public PreviewViewLocationDelegate {
 public:
  void previewViewFrameDidChange() override { calls.emplace_back("frame"); }
  void previewViewLocationDidChange(ViewPoint) override { calls.emplace_back("location"); }
  void previewViewZoomDidChange() override { calls.emplace_back("zoom"); }
  std::vector<std::string> calls;
};

class OverlayDelegate final : public PreviewViewOverlayDelegate {
 public:
  void overlayTextMayHaveChanged() override { ++changes; }
  void shapeDidFinish(const std::string& text) override { finished.push_back(text); }
  int changes = 0;
  std::vector<std::string> finished;
};

class PreviewViewTest : public ::testing::Test {
 protected:
  PreviewViewTest() {
    host.container = {800, 600};
    host.window = {{0, 360}, {800, 620}};
    host.screen = {1920, 1080};
    host.bottom = 1080;
    host.titleBar = 20;
    host.windowIsContainer = true;
    view.setLocationDelegate(&delegate);
  }

  PreviewView::Dependencies dependencies() {
    return {
        host,
        compositor,
        rasterizer,
        preferences,
        mainQueue,
        jpegEncoder,
        pngEncoder,
        [movie = movie](const std::string&) { return std::make_unique<FakeAssetWriter>(movie); },
        failures,
        [this] { ++displays; },
        [](const std::function<void()>& work) { work(); },
        clock,
        [] { return std::string("Scope 55"); }};
  }
  static SampleBuffer frame(TextureSize size, milliseconds time = milliseconds(0)) {
    return {std::make_shared<PixelBuffer>(size), time};
  }
  /// A frame, and what it leads to on the main thread.
  void show(TextureSize size) {
    view.updateVideoFrame(frame(size));
    mainQueue.runAll();
    draw();
  }
  bool draw() {
    return view.drawInView({int32_t(host.container.width), int32_t(host.container.height)}, 1.0);
  }
  static MouseLocation at(double x, double y) { return {{x, y}, {x, y}}; }

  test::LogCapture log;
  test::MemoryKeyValueStore store;
  UserDefaults defaults{store};
  PathGrants grants;
  Preferences preferences{defaults, grants};
  FakeViewHost host;
  FakeCompositor compositor;
  FakeRasterizer rasterizer;
  ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  RecordingDelegate delegate;
  int displays = 0;
  SetClock clock;
  FakeEncoder jpegEncoder;
  FakeEncoder pngEncoder;
  std::shared_ptr<FakeAssetWriter::Movie> movie = std::make_shared<FakeAssetWriter::Movie>();
  PreviewView view{dependencies()};
};

TEST_F(PreviewViewTest, StartsWithoutAPicture) {
  EXPECT_EQ(view.zoom(), -1);
  EXPECT_EQ(view.bitmapWidth(), 100);
  EXPECT_FALSE(draw());
  EXPECT_EQ(view.getCurrScale(), 0);
  EXPECT_EQ(view.getCurrOperation(), 0);
}

TEST_F(PreviewViewTest, TheFirstFrameFitsTheWindowAndShows) {
  view.updateVideoFrame(frame({1280, 720}));
  EXPECT_FALSE(draw()) << "the window is not laid out yet";
  mainQueue.runAll();
  EXPECT_EQ(view.zoom(), 2);
  EXPECT_EQ(host.contentSize, (Size{1280, 720}));
  EXPECT_TRUE(draw());
  EXPECT_THAT(compositor.composed, ElementsAre(TextureSize{1280, 720}));
}

TEST_F(PreviewViewTest, FramesOfTheSameSizeLayOutOnce) {
  show({640, 480});
  host.calls.clear();
  show({640, 480});
  show({640, 480});
  EXPECT_THAT(host.calls, IsEmpty());
  EXPECT_EQ(compositor.composed.size(), 3U);
}

TEST_F(PreviewViewTest, AFrameSizeThatChangesWhileTheWindowIsLaidOutCountsInTheEnd) {
  view.updateVideoFrame(frame({640, 480}));
  view.updateVideoFrame(frame({1280, 720}));
  view.updateVideoFrame(frame({800, 600}));
  mainQueue.runAll();
  EXPECT_EQ(view.bitmapWidth(), 800);
  EXPECT_EQ(host.contentSize, (Size{800, 600}));
  EXPECT_TRUE(draw());
  EXPECT_THAT(compositor.composed, ElementsAre(TextureSize{800, 600}));
}

TEST_F(PreviewViewTest, ALayoutThatWaitedWhileTheMicroscopeWentIsLeftOut) {
  view.updateVideoFrame(frame({640, 480}));
  view.stopPreview();
  mainQueue.runAll();
  EXPECT_EQ(view.zoom(), -1);
  EXPECT_EQ(view.bitmapWidth(), 0);
  EXPECT_THAT(host.calls, IsEmpty());
  EXPECT_FALSE(draw());
}

TEST_F(PreviewViewTest, WorkThatWasQueuedDoesNotOutliveTheView) {
  auto other = std::make_unique<PreviewView>(dependencies());
  other->updateVideoFrame(frame({640, 480}));
  other.reset();
  mainQueue.runAll();
  EXPECT_EQ(displays, 0);
}

TEST_F(PreviewViewTest, HoweverManyFramesComeOneWakeUpIsOnItsWay) {
  show({640, 480});
  displays = 0;
  for (int i = 0; i < 100; ++i) view.updateVideoFrame(frame({640, 480}, milliseconds(33 * i)));
  EXPECT_EQ(mainQueue.runAll(), 1);
  EXPECT_EQ(displays, 1);
}

TEST_F(PreviewViewTest, AFrameBelow640By480FitsTheWindowAndIsCountedButNotShown) {
  for (const TextureSize size : {TextureSize{639, 480}, TextureSize{640, 479}}) {
    view.updateVideoFrame(frame(size, milliseconds(0)));
    view.updateVideoFrame(frame(size, milliseconds(100)));
    mainQueue.runAll();
    EXPECT_EQ(host.contentSize, (Size{double(size.width), double(size.height)}));
    EXPECT_FALSE(draw());
    EXPECT_GT(view.videoFrameRate(), 0.0F);
  }
  EXPECT_THAT(compositor.composed, IsEmpty());
}

TEST_F(PreviewViewTest, StopForgetsThePictureAndTellsNobody) {
  show({640, 480});
  view.setCalibration(100.0F, 0);
  view.startCalibration();
  delegate.calls.clear();
  view.stopPreview();
  EXPECT_EQ(view.zoom(), -1);
  EXPECT_EQ(view.bitmapWidth(), 0);
  EXPECT_EQ(view.bitmapHeight(), 0);
  EXPECT_EQ(view.viewLocation(), (ViewPoint{0, 0}));
  EXPECT_EQ(view.pixelsPerUnit(), -1.0F);
  EXPECT_THAT(delegate.calls, IsEmpty());
  EXPECT_FALSE(draw());
}

TEST_F(PreviewViewTest, StopTakesTheCalibrationLineAway) {
  show({640, 480});
  view.changeScale(1);
  draw();
  const size_t uncalibrated = compositor.lineCount;
  view.setCalibration(100.0F, 0);
  view.startCalibration();
  draw();
  ASSERT_NE(compositor.lineCount, uncalibrated);
  view.stopPreview();
  show({640, 480});
  view.changeScale(1);
  draw();
  EXPECT_EQ(compositor.lineCount, uncalibrated);
}

TEST_F(PreviewViewTest, ReticleAndShapesAreComposedOverTheFrame) {
  show({640, 480});
  view.changeScale(1);
  draw();
  const size_t reticle = compositor.lineCount;
  EXPECT_GT(reticle, 4U);
  view.changeOperation(1);
  ASSERT_TRUE(view.mouseDown(at(100, 100)));
  view.mouseDragged(at(200, 100));
  view.mouseUp(at(200, 100));
  draw();
  EXPECT_EQ(compositor.lineCount, reticle + 2 + 4) << "a line and two ticks";
  view.removeLastShape();
  draw();
  EXPECT_EQ(compositor.lineCount, reticle);
}

TEST_F(PreviewViewTest, ATickWithoutAnythingNewComposesNothing) {
  show({640, 480});
  const size_t before = compositor.composed.size();
  const size_t presented = compositor.presented;
  draw();
  draw();
  EXPECT_EQ(compositor.composed.size(), before);
  EXPECT_EQ(compositor.presented, presented + 2);
}

TEST_F(PreviewViewTest, TheMouseComposesWhatItChangesAndNothingElse) {
  show({640, 480});
  view.changeOperation(kOprLine);
  view.mouseDown(at(100, 100));
  view.mouseDragged(at(200, 100));
  view.mouseUp(at(200, 100));
  draw();
  struct Row {
    double x, y;
    bool changes;
  };
  const Row moves[] = {
      {300, 300, false}, {301, 300, false},  // beside the line
      {100, 100, true},  {102, 101, false},  // onto its handle, and on it
      {300, 300, true},  {300, 301, false},  // off again
  };
  for (const Row& row : moves) {
    SCOPED_TRACE(::testing::Message() << row.x << ", " << row.y);
    compositor.composed.clear();
    displays = 0;
    view.mouseMoved(at(row.x, row.y));
    EXPECT_EQ(displays, row.changes);
    draw();
    EXPECT_EQ(compositor.composed.size(), row.changes);
  }
  compositor.composed.clear();
  view.mouseDown(at(300, 300));  // selects nothing, as before
  view.mouseUp(at(300, 300));
  draw();
  EXPECT_THAT(compositor.composed, IsEmpty());
}

TEST_F(PreviewViewTest, TellsAFinishedShapeOnceAndNothingWhileItIsDragged) {
  show({640, 480});
  view.setCalibration(100.0f, kUnitMillimetre);
  OverlayDelegate overlay;
  view.setOverlayDelegate(&overlay);
  view.changeOperation(kOprLine);
  view.mouseDown(at(100, 100));
  const int changes = overlay.changes;
  view.mouseDragged(at(200, 100));
  view.mouseDragged(at(300, 100));
  view.mouseMoved(at(301, 100));
  EXPECT_EQ(overlay.changes, changes);
  EXPECT_THAT(overlay.finished, IsEmpty());
  view.mouseUp(at(300, 100));
  EXPECT_THAT(overlay.finished, ElementsAre("Line, 2.000mm"));
  view.mouseDown(at(300, 100));
  view.mouseUp(at(300, 100));
  EXPECT_THAT(overlay.finished, SizeIs(1)) << "it was selected only";

  view.changeOperation(kOprAngle);
  view.mouseDown(at(400, 400));
  view.mouseDragged(at(500, 400));
  view.mouseUp(at(500, 400));
  view.mouseMoved(at(400, 300));
  view.mouseDown(at(400, 300));
  view.mouseUp(at(400, 300));
  EXPECT_THAT(overlay.finished, ElementsAre("Line, 2.000mm", "Angle, 90.000\u00B0"));
}

TEST_F(PreviewViewTest, SaysThatItsTextMayHaveChanged) {
  show({640, 480});
  OverlayDelegate overlay;
  view.setOverlayDelegate(&overlay);
  const std::function<void()> steps[] = {
      [this] { view.changeOperation(kOprLine); },
      [this] { view.changeScale(kScaleGrid); },
      [this] { view.setCalibration(100.0f, kUnitMillimetre); },
      [this] { view.setInputText("a cell"); },
      [this] { view.mouseDown(at(100, 100)); },
      [this] { view.mouseUp(at(200, 100)); },
      [this] { view.removeLastShape(); },
      [this] { view.stopPreview(); },
  };
  int step = 0;
  for (const auto& take : steps) {
    SCOPED_TRACE(step++);
    const int changes = overlay.changes;
    take();
    EXPECT_EQ(overlay.changes, changes + 1);
  }
}

TEST_F(PreviewViewTest, TheCalibrationLineHidesReticleAndShapesUntilItEnds) {
  show({640, 480});
  view.changeScale(2);
  draw();
  const size_t grid = compositor.lineCount;
  view.startCalibration();
  draw();
  EXPECT_EQ(compositor.lineCount, 4U * 2 + 4U * 3 * 2);
  view.stopCalibration();
  draw();
  EXPECT_EQ(compositor.lineCount, grid);
}

TEST_F(PreviewViewTest, EveryToolReturnsToHundredPercentAndSaysSo) {
  show({640, 480});
  view.zoomTo(4);
  delegate.calls.clear();
  view.changeOperation(7);
  EXPECT_EQ(view.getCurrOperation(), 0);
  EXPECT_EQ(view.zoom(), 2);
  EXPECT_THAT(delegate.calls, ElementsAre("frame", "zoom"));
}

TEST_F(PreviewViewTest, AToolPickedAtHundredPercentSaysSoTooForASliderThatStandsElsewhere) {
  show({640, 480});
  ASSERT_EQ(view.zoom(), 2);
  for (const int32_t op : {1, 7}) {
    delegate.calls.clear();
    view.changeOperation(op);
    EXPECT_THAT(delegate.calls, ElementsAre("zoom")) << op;
  }
}

TEST_F(PreviewViewTest, TheCalibrationLineComesAndGoesAtHundredPercentWithoutSayingSo) {
  show({640, 480});
  for (const auto operation : {&PreviewView::startCalibration, &PreviewView::stopCalibration}) {
    view.zoomTo(4);
    delegate.calls.clear();
    (view.*operation)();
    EXPECT_EQ(view.zoom(), 2);
    EXPECT_THAT(delegate.calls, ElementsAre("frame"));
  }
}

TEST_F(PreviewViewTest, ACalibrationReturnsToHundredPercentAndDoesNotSaySo) {
  show({640, 480});
  view.zoomTo(4);
  delegate.calls.clear();
  view.setCalibration(10.0F, 1);
  EXPECT_EQ(view.zoom(), 2);
  EXPECT_THAT(delegate.calls, ElementsAre("frame"));
}

TEST_F(PreviewViewTest, AwayFromHundredPercentTheMouseOnlyPans) {
  host.windowIsContainer = false;
  show({1280, 720});
  view.zoomTo(4);
  const ViewPoint before = view.viewLocation();
  ASSERT_TRUE(view.mouseDown(at(400, 300)));
  view.mouseDragged(at(390, 280));
  view.mouseUp(at(390, 280));
  EXPECT_EQ(view.viewLocation(), (ViewPoint{before.x + 10, before.y + 20}));
}

TEST_F(PreviewViewTest, AnArmedToolAwayFromHundredPercentNeitherDrawsNorPans) {
  host.windowIsContainer = false;
  show({1280, 720});
  view.changeOperation(1);
  view.zoomTo(4);
  const ViewPoint before = view.viewLocation();
  ASSERT_TRUE(view.mouseDown(at(400, 300)));
  view.mouseDragged(at(390, 280));
  view.mouseUp(at(390, 280));
  EXPECT_EQ(view.viewLocation(), before);
  draw();
  EXPECT_EQ(compositor.lineCount, 0U);
}

TEST_F(PreviewViewTest, APressBesideTheViewIsNoneOfItsOwn) {
  host.windowIsContainer = false;
  show({640, 480});  // in a container of 800 by 600: a margin of 80 by 60
  EXPECT_FALSE(view.mouseDown(at(40, 300)));
  EXPECT_FALSE(view.mouseDown(at(400, 540)));
  EXPECT_TRUE(view.mouseDown(at(400, 539)));
  EXPECT_TRUE(view.mouseDown(at(80, 60)));
}

TEST_F(PreviewViewTest, AFrameSizeChangeDoesNotRebuildTheOverlay) {
  show({640, 480});
  view.changeScale(1);
  draw();
  const size_t lines = compositor.lineCount;
  show({1280, 720});
  EXPECT_EQ(compositor.lineCount, lines);
  view.preferencesDidChange();
  draw();
  EXPECT_GT(compositor.lineCount, lines);
}

TEST_F(PreviewViewTest, AStillHasTheFramesSizeAtEveryZoom) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  show({1280, 720});
  view.zoomTo(4);
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  preferences.imagePNG = 1;
  EXPECT_TRUE(view.saveImageFile("b.png"));
  EXPECT_THAT(jpegEncoder.encoded, ElementsAre(TextureSize{1280, 720}));
  EXPECT_THAT(pngEncoder.encoded, ElementsAre(TextureSize{1280, 720}));
}

TEST_F(PreviewViewTest, AFrameTooSmallToBeComposedIsSavedAlone) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  show({320, 240});
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  EXPECT_THAT(jpegEncoder.encoded, ElementsAre(TextureSize{320, 240}));
}

TEST_F(PreviewViewTest, AStillBetweenANewFrameSizeAndItsLayoutHasTheNewSize) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  show({1280, 720});
  view.changeScale(1);
  view.updateVideoFrame(frame({800, 600}));
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  EXPECT_EQ(compositor.composed.back(), (TextureSize{800, 600}));
  EXPECT_EQ(failures.told(), 0) << "what lies over the picture is in it";
  view.updateVideoFrame(frame({320, 240}));
  EXPECT_TRUE(view.saveImageFile("b.jpg"));
  EXPECT_THAT(jpegEncoder.encoded, ElementsAre(TextureSize{800, 600}, TextureSize{320, 240}));
}

TEST_F(PreviewViewTest, AStillThatCanNotBeReadBackIsSavedWithoutOverlayAndSaysSo) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  show({1280, 720});
  compositor.readsBack = false;
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  EXPECT_EQ(failures.told(), 0) << "nothing lies over the picture";
  view.changeScale(1);
  EXPECT_TRUE(view.saveImageFile("b.jpg"));
  EXPECT_THAT(failures.text(Failure::OverlayLeftOut), HasSubstr("can't be read back"));
  EXPECT_THAT(jpegEncoder.encoded, ElementsAre(TextureSize{1280, 720}, TextureSize{1280, 720}));
  compositor.readsBack = true;
  EXPECT_TRUE(view.saveImageFile("c.jpg"));
  EXPECT_EQ(failures.text(Failure::OverlayLeftOut), "");
}

TEST_F(PreviewViewTest, AFrameTooSmallToBeComposedSaysThatTheOverlayIsLeftOut) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  show({320, 240});
  view.changeScale(1);
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  EXPECT_THAT(failures.text(Failure::OverlayLeftOut), HasSubstr("Choose a larger resolution"));
}

TEST_F(PreviewViewTest, FramesTooSmallToBeComposedAreSaidToBeSoUntilTheyAreNot) {
  show({639, 480});
  EXPECT_THAT(failures.text(Failure::FrameTooSmall),
              HasSubstr("Pictures of 639x480 are too small to be shown. Choose 640x480 or more"));
  show({640, 480});
  EXPECT_EQ(failures.text(Failure::FrameTooSmall), "");
  show({640, 479});
  EXPECT_THAT(failures.text(Failure::FrameTooSmall), HasSubstr("640x479"));
  view.stopPreview();
  EXPECT_EQ(failures.text(Failure::FrameTooSmall), "") << "there are no pictures";
}

TEST_F(PreviewViewTest, AStillSaysWhereItComesFromAndWhatIsMeasuredOnIt) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  preferences.calibrations[3] = {.name = "4x", .ppu = 10.0};
  preferences.calibration = 3;
  show({1280, 720});
  view.setCalibration(10.0F, kUnitMillimetre);
  view.changeOperation(kOprLine);
  view.mouseDown(at(100, 100));
  view.mouseDragged(at(200, 100));
  view.mouseUp(at(200, 100));
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  for (const char* part :
       {"2025-01-15T09:30:05+01:00", "Scope 55", "<tiff:ImageWidth>1280<", ">10</tessary:Pix",
        "<tessary:Name>4x<", "<tessary:Value>10.000<", "<tessary:Unit>mm<"})
    EXPECT_THAT(jpegEncoder.lastXmp, HasSubstr(part));

  preferences.calibrations[3] = {};
  EXPECT_EQ(view.stillInfo().table.calibration, "") << "deleted, and still in force";
  EXPECT_EQ(view.stillInfo().pixelsPerUnit, 10.0F);
  view.setCalibration(kUncalibrated, kUnitMillimetre);
  ASSERT_EQ(view.stillInfo().table.rows.size(), 1U);
  EXPECT_EQ(view.stillInfo().table.rows[0].values[0].unit, "px");
}

TEST_F(PreviewViewTest, ACopyThatCanNotBeReadBackSaysSoInItsOwnWords) {
  EXPECT_FALSE(view.hasPicture());
  EXPECT_EQ(view.copyPicture()->byteCount(), 0U);
  show({1280, 720});
  EXPECT_TRUE(view.hasPicture());
  EXPECT_EQ(view.copyPicture()->size(), (TextureSize{1280, 720}));
  view.changeScale(1);
  compositor.readsBack = false;
  EXPECT_EQ(view.copyPicture()->size(), (TextureSize{1280, 720}));
  EXPECT_EQ(failures.text(Failure::OverlayLeftOut),
            "The picture was copied without what lies over it: it can't be read back from the "
            "graphics card. Copy it again.");
  show({320, 240});
  view.copyPicture();
  EXPECT_EQ(failures.text(Failure::OverlayLeftOut),
            "A picture this small is copied without what lies over it. Choose a larger "
            "resolution.");
  view.stopPreview();
  EXPECT_FALSE(view.hasPicture());
}

TEST_F(PreviewViewTest, WithoutAPictureAStillIsSaidToBeSavedAndNothingIsWritten) {
  test::TemporaryFolder folder;
  preferences.url = folder.path();
  EXPECT_TRUE(view.saveImageFile("a.jpg"));
  EXPECT_THAT(jpegEncoder.encoded, IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(PreviewViewTest, ARecordingGetsTheFramesThatComeWhileItRunsAndNoOther) {
  show({640, 480});
  const auto status = std::make_shared<MovieStatus>(movie);
  const auto waitFor = [&](auto condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
      mainQueue.runAll();
      {
        const std::lock_guard lock(movie->mutex);
        if (condition()) return true;
      }
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::yield();
    }
  };
  view.updateVideoFrame(frame({640, 480}, milliseconds(100)));
  view.startRecord("/none/a.mp4", status);
  ASSERT_TRUE(waitFor([&] { return movie->statuses == std::vector<int64_t>{kRecordingWaiting}; }))
      << "the frame before began nothing";
  std::vector<SampleBuffer> shown;
  for (const int time : {200, 233, 266}) {
    shown.push_back(frame({640, 480}, milliseconds(time)));
    view.updateVideoFrame(shown.back());
    ASSERT_TRUE(waitFor([&] { return movie->frames.size() == shown.size(); }));
  }
  view.stopRecord();
  ASSERT_TRUE(waitFor(
      [&] { return !movie->statuses.empty() && movie->statuses.back() == kRecordingFinished; }));
  view.updateVideoFrame(frame({640, 480}, milliseconds(300)));
  view.startRecord("/none/b.mp4", status);  // behind all that was handed over
  ASSERT_TRUE(waitFor([&] { return movie->statuses.back() == kRecordingWaiting; }));
  for (size_t i = 0; i < shown.size(); ++i) {
    EXPECT_EQ(movie->frames[i].imageBuffer, shown[i].imageBuffer);
    EXPECT_EQ(movie->frames[i].presentationTimeStamp, shown[i].presentationTimeStamp);
  }
  EXPECT_EQ(movie->frames.size(), shown.size());
  EXPECT_THAT(movie->statuses, ElementsAre(kRecordingWaiting, kRecordingRunning, kRecordingStopping,
                                           kRecordingFinished, kRecordingWaiting));
}

TEST_F(PreviewViewTest, FramesMayComeFromAnotherThreadWhileTheMainThreadWorks) {
  std::atomic<bool> done{false};
  std::thread stream([&] {
    for (int i = 0; i < 600; ++i)
      view.updateVideoFrame(
          frame(i / 100 % 2 ? TextureSize{800, 600} : TextureSize{640, 480}, milliseconds(i)));
    done = true;
  });
  while (!done) {
    mainQueue.runAll();
    draw();
    view.zoomTo(displays % 5);
  }
  stream.join();
  view.stopPreview();
  show({640, 480});
  EXPECT_EQ(compositor.composed.back(), (TextureSize{640, 480}));
}

}  // namespace
}  // namespace tessary
