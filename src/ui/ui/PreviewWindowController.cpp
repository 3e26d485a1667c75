#include "ui/PreviewWindowController.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtGui/QShortcut>
#include <fmt/format.h>

#include "base/FileCalls.h"
#include "base/Log.h"
#include "ui/Windows.h"

namespace tessary {
namespace {

constexpr std::chrono::milliseconds kStatusInterval(1500);
constexpr int kTopMargin = 25;

}  // namespace

std::unique_ptr<PreviewWindowController> gPreviewWindowController;

PreviewWindowController::PreviewWindowController(Dependencies dependencies)
    : dependencies_(std::move(dependencies)),
      containerView(*new PreviewContainerView),
      previewWidget_(*new PreviewWidget(&containerView, dependencies_.renderer)),
      previewView(
          {viewHost_,
           dependencies_.renderer == Renderer::kOpenGl ? dependencies_.openGlCompositor
                                                       : dependencies_.rasterCompositor,
           dependencies_.textRasterizer, dependencies_.preferences, dependencies_.mainQueue,
           dependencies_.jpegEncoder, dependencies_.pngEncoder, dependencies_.makeAssetWriter,
           failures_, [this] { previewWidget_.drawSoon(); },
           [this](const std::function<void()>& work) { previewWidget_.withGraphicsContext(work); },
           dependencies_.clock,
           [] { return gCurrMicroscope ? gCurrMicroscope->name : std::string(); }}),
      calibration_(window_, previewView, dependencies_.preferences, dependencies_.clock),
      saving_(window_, previewView, dependencies_.preferences, dependencies_.clock, announcer_),
      copying_(previewView, dependencies_.pngEncoder, failures_),
      cameraControls_(dependencies_.captureSystem, dependencies_.rememberedControls),
      capture_({dependencies_.captureSystem, dependencies_.catalogue, gCurrMicroscope,
                dependencies_.preferences, dependencies_.mainQueue, previewView, *this, failures_,
                cameraControls_}) {
  connect(&window_, &MainWindow::willClose, this, &PreviewWindowController::windowWillClose);
  connect(&window_, &MainWindow::didResize, this, &PreviewWindowController::windowDidResize);
  connect(&window_, &MainWindow::keyDown, this, [this](QKeyEvent* event) { keyDown(*event); });
  connect(&toolbar, &Toolbar::commandDidClick, this, &PreviewWindowController::perform);
  connect(&toolbar, &Toolbar::zoomDidStep, &controls_, &PreviewControls::stepZoomSlider);
  connect(&toolbar, &Toolbar::zoomDidReset, &controls_,
          [this] { controls_.setZoomSlider(kZoom100); });
  connect(&containerView, &PreviewContainerView::wheelDidTurn, &controls_,
          &PreviewControls::stepZoomSlider);
  toolbar.setupToolbar();
  toolbar.setupMenuItems();  // before the window shows, so that it does not jump
  window_.setWindowTitle(QString());
  setupCameraKey();
  setupPreviewView();
  new FailureLine(containerView, failures_, announcer_);  // owned by the container
}

PreviewWindowController::~PreviewWindowController() {
  delete cameraControlsWindow_;  // before the controls that it shows
  previewWidget_.setPreviewView(nullptr);
}

void PreviewWindowController::setupPreviewView() {
  window_.setCentralWidget(&containerView);
  connect(&containerView, &PreviewContainerView::frameDidChange, &previewWidget_,
          [this] { previewWidget_.setGeometry(containerView.rect()); });
  previewView.setCalibration(kUncalibrated, kUnitMillimetre);
  previewView.setLocationDelegate(this);
  previewView.setOverlayDelegate(this);
  previewWidget_.setPreviewView(&previewView);
  connect(&previewWidget_, &PreviewWidget::rendererWasLost, this, [this] {
    log("OpenGL is lost: the picture is drawn without it from now on");
    previewView.contextWasLost(dependencies_.rasterCompositor);
  });
}

void PreviewWindowController::setupCameraKey() {
  auto* cameraKey = new QShortcut(&window_);
  cameraKey->setKeys({Qt::Key_WebCam, Qt::Key_Camera});
  // Wherever the keyboard is: the hand that presses it is at the microscope.
  cameraKey->setContext(Qt::ApplicationShortcut);
  // A button that is held down wants one still.
  cameraKey->setAutoRepeat(false);
  connect(cameraKey, &QShortcut::activated, &saving_, &SavingFlow::getPathAndSaveImage);
}

void PreviewWindowController::showWindow() {
  window_.show();
  window_.raise();
  if (!std::exchange(working_, true)) beginWork();
}

void PreviewWindowController::beginWork() {
  capture_.setupCaptureSession();
  viewHost_.setFrameOrigin(
      {double(window_.x()), double(window_.screen()->geometry().y() + kTopMargin)});
  // From here on: until the first picture or a resize by hand nothing is meant to lay out controls.
  connect(&containerView, &PreviewContainerView::frameDidChange, this,
          &PreviewWindowController::containerViewFrameDidChange);
  connect(&window_, &MainWindow::occlusionStateDidChange, this,
          &PreviewWindowController::windowDidChangeOcclusionState);
  capture_.addObservers();
  capture_.onMicroscopesInitialized();
  connect(&fpsTimer, &QTimer::timeout, this, &PreviewWindowController::fpsTimerAct);
  fpsTimer.start(kStatusInterval);
  // Whatever an event has changed, the commands follow before the user can see it.
  const auto validate = [this] {
    toolbar.validateItems([this](Command command) { return validateUserInterfaceItem(command); });
  };
  const auto* events = QAbstractEventDispatcher::instance();
  for (const auto turn :
       {&QAbstractEventDispatcher::aboutToBlock, &QAbstractEventDispatcher::awake})
    connect(events, turn, this, validate);
}

void PreviewWindowController::windowWillClose() {
  fpsTimer.stop();
  closeCalibrationWindow();
  closeInputTextWindow();
  if (cameraControlsWindow_) cameraControlsWindow_->close();
  capture_.windowWillClose();
}

void PreviewWindowController::finishWork() {
  capture_.windowWillClose();
  previewView.finishRecording();
}

void PreviewWindowController::windowDidResize() { previewView.windowDidResize(); }

void PreviewWindowController::windowDidChangeOcclusionState() {
  const bool exposed = !window_.isOccluded();
  capture_.wndExposed = exposed;
  // From its first exposure on the window manager's frame around it is known.
  if (exposed && !std::exchange(framed_, true)) viewHost_.windowWasFramed();
  tellOfGapInMovie(exposed);
}

void PreviewWindowController::tellOfGapInMovie(bool exposed) {
  const auto now = std::chrono::steady_clock::now();
  if (!exposed) {
    if (!hiddenWhileRecording_ && recordingTakesFrames(previewView.recordingStatus()))
      hiddenWhileRecording_ = now;
    return;
  }
  const auto since = std::exchange(hiddenWhileRecording_, std::nullopt);
  if (!since) return;
  const auto seconds = std::chrono::round<std::chrono::seconds>(now - *since).count();
  failures_.failed(Failure::NothingRecorded,
                   fmt::format("Nothing was recorded for {} s, while the window was hidden. Leave "
                               "it visible while recording.",
                               std::max<int64_t>(seconds, 1)));
}

void PreviewWindowController::containerViewFrameDidChange() {
  controls_.containerViewFrameDidChange();
}

void PreviewWindowController::fpsTimerAct() {
  capture_.watchFrames();
  cameraControls_.keepChanges();
  if (!gCurrMicroscope) {
    controls_.clearStatus();
    return;
  }
  const auto& resolution = gCurrMicroscope->currResolution;
  controls_.showStatus(resolution ? *resolution : Resolution{}, previewView.videoFrameRate());
}

void PreviewWindowController::keyDown(QKeyEvent& event) {
  // Whether a microscope is open is not asked here.
  if (event.text() == QLatin1String(" "))
    saving_.getPathAndSaveImage();
  else if (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace)
    previewView.removeSelectedShape();
}

void PreviewWindowController::preferencesDidChange() { previewView.preferencesDidChange(); }

void PreviewWindowController::previewViewFrameDidChange() { controls_.previewViewFrameDidChange(); }

void PreviewWindowController::previewViewLocationDidChange(ViewPoint location) {
  controls_.previewViewLocationDidChange(location);
}

void PreviewWindowController::previewViewZoomDidChange() { controls_.previewViewZoomDidChange(); }

void PreviewWindowController::shapeDidFinish(const std::string& text) {
  announcer_.announce(QString::fromStdString(text));
}

bool PreviewWindowController::closeCalibrationWindow() {
  return calibration_.closeCalibrationWindow();
}

void PreviewWindowController::closeInputTextWindow() {
  if (!inputTextWndController) return;
  // Closed, not ended: nobody is told of a text.
  InputTextWindowController* closing = inputTextWndController;
  inputTextWndController.clear();
  closing->disconnect(this);
  closing->close();
  closing->deleteLater();
}

void PreviewWindowController::refreshMicroscopes() {
  microscopeWndController->refreshMicroscopes();
}

void PreviewWindowController::endMicroscopeSheet(int32_t returnCode) {
  microscopeWndController->done(returnCode);
}

void PreviewWindowController::startCaptureSession(const std::shared_ptr<MicroscopeInfo>& microscope,
                                                  const std::shared_ptr<Resolution>& resolution) {
  capture_.startCaptureSession(microscope, resolution);
}

void PreviewWindowController::perform(Command command) {
  switch (command) {
    case Command::Help: emit howToClicked(); break;
    case Command::Options: emit preferencesClicked(); break;
    case Command::Folder: folderToolbarItemDidClick(); break;
    case Command::Microscope: microscopeToolbarItemDidClick(); break;
    case Command::Crosshair: toggleScale(kScaleCrosshair); break;
    case Command::Grid: toggleScale(kScaleGrid); break;
    case Command::Concentric: toggleScale(kScaleConcentric); break;
    case Command::Line: previewView.changeOperation(kOprLine); break;
    case Command::Line2: previewView.changeOperation(kOprLine2); break;
    case Command::Circle: previewView.changeOperation(kOprCircle); break;
    case Command::Rectangle: previewView.changeOperation(kOprRect); break;
    case Command::Angle: previewView.changeOperation(kOprAngle); break;
    case Command::Pencil: previewView.changeOperation(kOprPencil); break;
    case Command::Drag: previewView.changeOperation(kOprDrag); break;
    case Command::DeleteLast: previewView.removeLastShape(); break;
    case Command::DeleteAll: previewView.removeAllShapes(); break;
    case Command::Calibration: calibration_.calibrationToolbarItemDidClick(); break;
    case Command::Shutter: saving_.getPathAndSaveImage(); break;
    case Command::Record: saving_.recordToolbarItemDidClick(); break;
    case Command::Text: textToolbarItemDidClick(); break;
    case Command::CameraControls: showCameraControls(); break;
    case Command::Copy: copying_.copy(); break;
  }
}

bool PreviewWindowController::validateUserInterfaceItem(Command command) const {
  switch (command) {
    case Command::Help:
    case Command::Options:
    case Command::Folder:
    case Command::Microscope: return true;
    // Also while a calibration is under way: it is then that the picture has to be sharp.
    case Command::CameraControls: return bool(capture_.capDevice);
    case Command::Copy: return areToolsUsable() && previewView.hasPicture();
    default: return areToolsUsable();
  }
}

bool PreviewWindowController::areToolsUsable() const {
  return capture_.capDevice && !calibration_.isCalibrationWindowUp() && !inputTextWndController;
}

void PreviewWindowController::toggleScale(int32_t scaleType) {
  previewView.changeScale(previewView.getCurrScale() == scaleType ? kScaleNone : scaleType);
}

void PreviewWindowController::folderToolbarItemDidClick() {
  const auto& url = dependencies_.preferences.url;
  if (!url) {
    openAlert(window_, QMessageBox::Information, tr("Folder not initialized"),
              tr("Please try to capture/save a photo and setup the folder."));
    return;
  }
  // Who shows the folder looks into it first.
  if (!isFolder(*url).has_value()) {
    failures_.failed(Failure::StillNotSaved,
                     "The folder does not answer. Choose another folder in Options.");
    return;
  }
  QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(*url)));
}

void PreviewWindowController::microscopeToolbarItemDidClick() {
  if (gMicroscopes.empty()) {
    openAlert(window_, QMessageBox::Warning, tr("No microscope found"),
              tr("Please connect your microscope."));
    return;
  }
  if (microscopeWndController) return;
  auto* sheet = new MicroscopeWindowController(&window_);
  sheet->setDelegate(this);
  openSheet(*this, microscopeWndController, *sheet);
}

void PreviewWindowController::showCameraControls() {
  if (!cameraControlsWindow_) {
    cameraControlsWindow_ = new CameraControlsWindow(&window_, cameraControls_);
    connect(cameraControlsWindow_, &QDialog::finished, this, [this] {
      cameraControlsWindow_->deleteLater();
      cameraControlsWindow_.clear();
    });
  }
  cameraControlsWindow_->showWindow();
}

void PreviewWindowController::textToolbarItemDidClick() {
  if (inputTextWndController) return;
  openSheet(*this, inputTextWndController, *new InputTextWindowController(&window_),
            [this](int returnCode) {
              if (returnCode == 1) previewView.setInputText(inputTextWndController->getInputText());
            });
}

}  // namespace tessary
