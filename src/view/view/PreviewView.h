#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Clock.h"
#include "base/Executor.h"
#include "base/Failures.h"
#include "base/Lifetime.h"
#include "base/SampleBuffer.h"
#include "capture/CapturePicture.h"
#include "measure/Overlay.h"
#include "output/Recording.h"
#include "output/StillImage.h"
#include "output/StillInfo.h"
#include "platform/AssetWriter.h"
#include "platform/Compositor.h"
#include "platform/ImageEncoder.h"
#include "platform/TextRasterizer.h"
#include "preview/FrameRate.h"
#include "preview/FrameRing.h"
#include "preview/RenderPipeline.h"
#include "preview/ViewGeometry.h"
#include "settings/Preferences.h"
#include "view/PreviewViewOverlayDelegate.h"

namespace tessary {

/// Where the mouse is: in the container and on the desktop.
struct MouseLocation {
  ContainerPoint container;
  ScreenPoint screen;
};

/// The picture: owns one component for each thing that it is made of, and holds only the sequences
/// that cross them. Knows no toolkit. Main thread, except where told.
class PreviewView final : public CapturePicture {
 public:
  /// What the view is given; all of it must outlive the view.
  struct Dependencies {
    ViewHost& host;
    Compositor& compositor;
    TextRasterizer& textRasterizer;
    const Preferences& preferences;
    Executor& mainQueue;
    ImageEncoder& jpegEncoder;
    ImageEncoder& pngEncoder;
    AssetWriterFactory makeAssetWriter;
    FailureListener& failures;
    /// Asks for a tick, that is for a `drawInView` soon. Main thread.
    std::function<void()> setNeedsDisplay;
    /// Runs what it is given at once, with the graphics context current. Main thread.
    std::function<void(const std::function<void()>&)> withGraphicsContext;
    Clock& clock;
    /// The model (UTF-8) of the camera that the picture comes from; empty if nobody knows. Main
    /// thread.
    std::function<std::string()> cameraModel;
  };

  explicit PreviewView(Dependencies dependencies);
  /// No frame may be on its way any more.
  ~PreviewView() override = default;
  PreviewView(const PreviewView&) = delete;
  PreviewView& operator=(const PreviewView&) = delete;

  // Geometry.
  int32_t zoom() const { return geometry_.zoom(); }
  int32_t bitmapWidth() const { return geometry_.bitmapWidth(); }
  int32_t bitmapHeight() const { return geometry_.bitmapHeight(); }
  ViewPoint viewLocation() const { return geometry_.viewLocation(); }
  void setLocationDelegate(PreviewViewLocationDelegate* delegate);
  void zoomTo(int32_t step);
  void offsetLocationTo(float x, float y);
  void windowDidResize();

  // Reticle, calibration and shapes.
  int32_t getCurrScale() const { return overlay_.scale.getCurrScale(); }
  void changeScale(int32_t scaleType) override;
  void setCalibration(float pixelsPerUnit, int32_t unit) override;
  /// The calibration in force; negative for none.
  float pixelsPerUnit() const { return overlay_.context.calibration._pixelsPerUnit; }
  /// The slot that the calibration in force came from, as long as it holds that calibration.
  std::optional<int32_t> slotInForce() const;
  void startCalibration();
  void stopCalibration() override;
  /// Length of the calibration line in video pixels.
  int32_t calibrationLineLen() const { return overlay_.calibrationLine.calibrationLineLen(); }
  int32_t getCurrOperation() const { return overlay_.tool.getCurrOperation(); }
  /// Takes a tool in hand and returns to 100 percent, the only zoom at which shapes are made.
  void changeOperation(int32_t op);
  void setInputText(const std::string& text);
  void removeSelectedShape();
  void removeLastShape();
  void removeAllShapes() override;
  /// What lies over the picture, in words (measure/OverlayText.h).
  std::string overlayText() const;
  /// Not owned; null for none.
  void setOverlayDelegate(PreviewViewOverlayDelegate* delegate) { overlayDelegate_ = delegate; }
  /// Colours or text size have changed.
  void preferencesDidChange() { redrawLinesAndPoints(); }
  /// Rebuilds everything that lies over the picture; the next tick shows it.
  void redrawLinesAndPoints();

  // The mouse. A press outside the view's frame is none of the view's and answers false.
  bool mouseDown(const MouseLocation& location);
  void mouseUp(const MouseLocation& location);
  void mouseDragged(const MouseLocation& location);
  void mouseMoved(const MouseLocation& location);
  void rightMouseDown() { overlay_.mouse.rightMouseDown(); }

  // Frames.
  void updateVideoFrame(const SampleBuffer& frame) override;
  /// Frames per second over the last second, not rounded. Any thread.
  float videoFrameRate() const { return frameRate_.videoFrameRate(); }
  void stopPreview() override;

  // Stills and movies.
  /// Whether there is a picture to save or to copy.
  bool hasPicture() const { return bool(ring_.newest().frame); }
  /// Saves the picture with everything that lies over it, at the frame's size, to `fileName` in the
  /// folder of the preferences, in their photo format. True unless no file can be made there.
  bool saveImageFile(const std::string& fileName);
  /// The picture that would be saved now; 0 by 0 without one.
  std::shared_ptr<const PixelBuffer> copyPicture() { return currentPicture(kCopied); }
  /// Where that picture comes from, and what is measured on it.
  StillInfo stillInfo() const;
  /// Records frames as they come into `file` (UTF-8, absolute). Returns at once.
  void startRecord(const std::string& file, std::weak_ptr<PreviewViewRecordDelegate> delegate);
  /// Frames later than `seconds` behind a movie's first are not recorded; 0 for no limit. At once.
  void setRecordLimit(int32_t seconds) { recording_.setLimit(seconds); }
  /// Returns at once.
  void stopRecord() { recording_.stopRecord(); }
  /// Finishes a movie that runs, and waits for that; nothing can be recorded afterwards.
  void finishRecording() { recording_.finish(); }
  /// One of the values of output/RecordingStatus.h. Any thread.
  int64_t recordingStatus() const { return recording_.recordingStatus(); }

  // Ticks, with the graphics context current.
  /// Draws to `surface`, which covers the container. False, and nothing drawn, when there is no
  /// picture.
  bool drawInView(const Surface& surface, double devicePixelRatio);
  void contextWillBeDestroyed() { pipeline_.contextWillBeDestroyed(); }
  /// The graphics context was lost; `next`, which must outlive the view, draws from now on.
  void contextWasLost(Compositor& next) { pipeline_.contextWasLost(next); }

 private:
  /// Main-thread half of a new frame size: fits view and window to it.
  void frameSizeDidChange();
  ViewPoint viewPoint(const MouseLocation& location) const;
  /// A step was made that changes what lies over the picture; it shows with the next tick.
  void overlayDidChange();
  void tellFinished(int32_t index);
  /// How the user is told what was done with a picture, and to do it again.
  struct Done {
    const char* word;
    const char* again;
  };
  static constexpr Done kSaved{"saved", "Save"};
  static constexpr Done kCopied{"copied", "Copy"};

  /// The composed picture, or the frame alone where nothing is composed or can be read back, which
  /// is told if something lies over it; 0 by 0 without a picture.
  std::shared_ptr<const PixelBuffer> currentPicture(Done done);
  /// At most one wake-up is on its way, however many frames come. Any thread.
  void wakeUp();

  Dependencies dependencies_;
  TextureSize
      _cvTextureSize;  // `_cvTextureWidth`, `_cvTextureHeight` as the main thread knows them
  PreviewViewLocationDelegate* _locationDelegate = nullptr;
  PreviewViewOverlayDelegate* overlayDelegate_ = nullptr;
  ViewGeometry geometry_{dependencies_.host, _cvTextureSize};
  FrameRing ring_;
  FrameRate frameRate_;
  RenderPipeline pipeline_{ring_, dependencies_.compositor};
  StillImage stillImage_{dependencies_.jpegEncoder, dependencies_.pngEncoder,
                         dependencies_.mainQueue, dependencies_.failures};
  Recording recording_{dependencies_.makeAssetWriter, dependencies_.mainQueue,
                       dependencies_.failures};

  Overlay overlay_{dependencies_.preferences, _cvTextureSize, dependencies_.textRasterizer,
                   geometry_};

  uint64_t laidOutRun_ = 0;  // of the ring
  std::atomic<bool> wakeUpPending_{false};
  const Lifetime lifetime_;  // last: ends first
};

}  // namespace tessary
