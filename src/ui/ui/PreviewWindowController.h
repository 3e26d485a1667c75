#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>

#include "capture/CaptureController.h"
#include "dialogs/FailureMessages.h"
#include "platform/Renderer.h"
#include "ui/Announcer.h"
#include "ui/CalibrationFlow.h"
#include "ui/CameraControlsWindow.h"
#include "ui/CopyFlow.h"
#include "ui/FailureLine.h"
#include "ui/InputTextWindowController.h"
#include "ui/MainWindow.h"
#include "ui/MicroscopeWindowController.h"
#include "ui/PreviewContainerView.h"
#include "ui/PreviewControls.h"
#include "ui/PreviewWidget.h"
#include "ui/QtViewHost.h"
#include "ui/SavingFlow.h"
#include "ui/Toolbar.h"
#include "view/PreviewView.h"

namespace tessary {

/// The main window's controller and the hub of the program: every dialog, every command and the
/// capture session hang off it. Main thread, except where told.
class PreviewWindowController final : public QObject,
                                      private CaptureDialogs,
                                      private PreviewViewLocationDelegate,
                                      private PreviewViewOverlayDelegate,
                                      private MicroscopeWindowDelegate {
  Q_OBJECT
 public:
  /// What the controller is given; the references must outlive it.
  struct Dependencies {
    CaptureSystem& captureSystem;
    MicroscopeCatalogue& catalogue;
    RememberedControls& rememberedControls;
    Renderer renderer;
    Compositor& openGlCompositor;
    Compositor& rasterCompositor;
    TextRasterizer& textRasterizer;
    Preferences& preferences;
    Executor& mainQueue;
    ImageEncoder& jpegEncoder;
    ImageEncoder& pngEncoder;
    AssetWriterFactory makeAssetWriter;
    Clock& clock;
  };

  /// Puts the window together, not yet on screen, and without a session.
  explicit PreviewWindowController(Dependencies dependencies);
  ~PreviewWindowController() override;

  /// Shows the window; the first time it also goes to its place, and the capture session begins.
  void showWindow();
  MainWindow& window() { return window_; }
  PreviewView& getPreviewView() { return previewView; }
  /// Whether frames are passed on: false while nothing of the window can be seen.
  bool wndExposed() const { return capture_.wndExposed; }
  /// Tells the user, on a line over the picture.
  FailureListener& failures() { return failures_; }
  /// Stops the camera and finishes a movie that runs, without a touch to any window, since the
  /// display may have gone. Nothing can be done afterwards.
  void finishWork();
  /// Settings were changed in the options window.
  void preferencesDidChange();

 signals:
  /// The user wants the help or the options window.
  void howToClicked();
  void preferencesClicked();

 private:
  void setupPreviewView();
  /// The key that the kernel makes of a microscope's own button does what Space does.
  void setupCameraKey();
  void beginWork();

  // What happens to the window.
  void windowWillClose();
  void windowDidResize();
  void windowDidChangeOcclusionState();
  /// A hidden window records nothing; the user is told once it can be seen again.
  void tellOfGapInMovie(bool exposed);
  void containerViewFrameDidChange();
  void fpsTimerAct();
  void keyDown(QKeyEvent& event);

  // PreviewViewLocationDelegate
  void previewViewFrameDidChange() override;
  void previewViewLocationDidChange(ViewPoint location) override;
  void previewViewZoomDidChange() override;

  // PreviewViewOverlayDelegate
  void overlayTextMayHaveChanged() override { previewWidget_.overlayTextMayHaveChanged(); }
  void shapeDidFinish(const std::string& text) override;

  // CaptureDialogs
  bool closeCalibrationWindow() override;
  void closeInputTextWindow() override;
  bool isMicroscopeWindowUp() const override { return bool(microscopeWndController); }
  void refreshMicroscopes() override;
  void endMicroscopeSheet(int32_t returnCode) override;

  // MicroscopeWindowDelegate
  void startCaptureSession(const std::shared_ptr<MicroscopeInfo>& microscope,
                           const std::shared_ptr<Resolution>& resolution) override;

  // Commands.
  void perform(Command command);
  bool validateUserInterfaceItem(Command command) const;
  bool areToolsUsable() const;
  /// Shows a reticle, or puts it away if it is the one that shows.
  void toggleScale(int32_t scaleType);
  void folderToolbarItemDidClick();
  void microscopeToolbarItemDidClick();
  void textToolbarItemDidClick();
  void showCameraControls();

  Dependencies dependencies_;
  FailureMessages failures_;
  MainWindow window_;
  PreviewContainerView& containerView;  // owned by the window
  PreviewWidget& previewWidget_;        // owned by the container
  Announcer announcer_{containerView};
  QtViewHost viewHost_{window_, containerView};
  PreviewView previewView;
  PreviewControls controls_{containerView, previewView};
  Toolbar toolbar{window_};
  CalibrationFlow calibration_;
  SavingFlow saving_;
  CopyFlow copying_;
  CameraControlBoard cameraControls_;
  // After what it hands frames to: it ends first.
  CaptureController capture_;
  QTimer fpsTimer;
  bool working_ = false;  // the window has been shown
  bool framed_ = false;   // and seen
  std::optional<std::chrono::steady_clock::time_point> hiddenWhileRecording_;

  // A dialog is up while its pointer is set.
  QPointer<MicroscopeWindowController> microscopeWndController;
  QPointer<InputTextWindowController> inputTextWndController;
  QPointer<CameraControlsWindow> cameraControlsWindow_;
};

/// The one main window's controller. Made at launch, never replaced.
extern std::unique_ptr<PreviewWindowController> gPreviewWindowController;

}  // namespace tessary
