#include "ui/PreviewWindowController.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QMessageBox>
#include <fmt/format.h>

#include "base/FileCalls.h"

namespace tessary {
namespace {

constexpr std::chrono::milliseconds kStatusInterval(1500);
constexpr int kTopMargin = 25;

}  // namespace

std::unique_ptr<PreviewWindowController> gPreviewWindowController;

PreviewWindowController::PreviewWindowController(Surroundings surroundings)
    : surroundings_(std::move(surroundings)) {}

PreviewWindowController::~PreviewWindowController() {
  if (previewWidget_) previewWidget_->setPreviewView(nullptr);
}

void PreviewWindowController::showWindow() {
  if (!std::exchange(loaded_, true)) windowDidLoad();
  window_.show();
  window_.raise();
}

void PreviewWindowController::windowDidLoad() {
  connect(&window_, &MainWindow::willClose, this, &PreviewWindowController::windowWillClose);
  connect(&window_, &MainWindow::didResize, this, &PreviewWindowController::windowDidResize);
  connect(&window_, &MainWindow::keyDown, this, [this](QKeyEvent* event) { keyDown(*event); });
  toolbar = std::make_unique<Toolbar>(
      window_, [this](Command command) { perform(command); },
      [this](Command command) { return validateUserInterfaceItem(command); });
  toolbar->setupToolbar();
  toolbar->setupMenuItems();  // before the window shows, so that it does not jump
  window_.setWindowTitle(QString());
  setupPreviewView();
  controls_ = std::make_unique<PreviewControls>(*containerView, *previewView);
  new FailureLine(*containerView, failures_);  // owned by the container
  capture_ = std::make_unique<CaptureController>(CaptureController::Surroundings{
      surroundings_.captureSystem, surroundings_.catalogue, gCurrMicroscope,
      surroundings_.preferences, surroundings_.mainQueue, *this, failures_});
  capture_->setupCaptureSession();
  window_.move(window_.x(), window_.screen()->geometry().y() + kTopMargin);
  connect(containerView, &PreviewContainerView::frameDidChange, this,
          &PreviewWindowController::containerViewFrameDidChange);
  connect(&window_, &MainWindow::occlusionStateDidChange, this,
          &PreviewWindowController::windowDidChangeOcclusionState);
  capture_->addObservers();
  capture_->onMicroscopesInitialized();
  connect(&fpsTimer, &QTimer::timeout, this, &PreviewWindowController::fpsTimerAct);
  fpsTimer.start(kStatusInterval);
  // Whatever an event has changed, the commands follow before the user can see it.
  const auto* events = QAbstractEventDispatcher::instance();
  for (const auto turn :
       {&QAbstractEventDispatcher::aboutToBlock, &QAbstractEventDispatcher::awake})
    connect(events, turn, toolbar.get(), &Toolbar::validateItems);
}

void PreviewWindowController::setupPreviewView() {
  containerView = new PreviewContainerView;
  window_.setCentralWidget(containerView);
  previewWidget_ = new PreviewWidget(containerView);
  connect(containerView, &PreviewContainerView::frameDidChange, previewWidget_,
          [this] { previewWidget_->setGeometry(containerView->rect()); });
  viewHost_ = std::make_unique<QtViewHost>(window_, *containerView);
  previewView = std::make_unique<PreviewView>(PreviewView::Surroundings{
      *viewHost_, surroundings_.compositor, surroundings_.textRasterizer, surroundings_.preferences,
      surroundings_.mainQueue, surroundings_.jpegEncoder, surroundings_.pngEncoder,
      surroundings_.makeAssetWriter, failures_, [widget = previewWidget_] { widget->update(); },
      [widget = previewWidget_](const std::function<void()>& work) {
        widget->withGraphicsContext(work);
      }});
  calibration_ = std::make_unique<CalibrationFlow>(window_, *previewView, surroundings_.preferences,
                                                   surroundings_.clock);
  saving_ = std::make_unique<SavingFlow>(window_, *previewView, surroundings_.preferences,
                                         surroundings_.clock);
  previewView->setCalibration(kUncalibrated, kUnitMillimetre);
  previewView->setLocationDelegate(this);
  previewWidget_->setPreviewView(previewView.get());
  window_.show();
}

void PreviewWindowController::windowWillClose() {
  fpsTimer.stop();
  closeCalibrationWindow();
  closeInputTextWindow();
  capture_->windowWillClose();
}

void PreviewWindowController::finishWork() {
  capture_->windowWillClose();
  previewView->finishRecording();
}

void PreviewWindowController::windowDidResize() {
  if (previewView) previewView->windowDidResize();
}

void PreviewWindowController::windowDidChangeOcclusionState() {
  const bool exposed = !window_.isOccluded();
  capture_->wndExposed = exposed;
  tellOfGapInMovie(exposed);
}

void PreviewWindowController::tellOfGapInMovie(bool exposed) {
  const auto now = std::chrono::steady_clock::now();
  if (!exposed) {
    if (!hiddenWhileRecording_ && recordingTakesFrames(previewView->recordingStatus()))
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
  controls_->containerViewFrameDidChange();
}

void PreviewWindowController::fpsTimerAct() {
  capture_->watchFrames();
  if (!gCurrMicroscope) {
    controls_->clearStatus();
    return;
  }
  const auto& resolution = gCurrMicroscope->currResolution;
  controls_->showStatus(resolution ? *resolution : Resolution{}, previewView->videoFrameRate());
}

void PreviewWindowController::keyDown(QKeyEvent& event) {
  // Whether a microscope is open is not asked here.
  if (event.text() == QLatin1String(" "))
    saving_->getPathAndSaveImage();
  else if (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace)
    previewView->removeSelectedShape();
}

void PreviewWindowController::preferencesDidChange() { previewView->preferencesDidChange(); }

void PreviewWindowController::previewViewFrameDidChange() {
  if (controls_) controls_->previewViewFrameDidChange();
}

void PreviewWindowController::previewViewLocationDidChange(Point location) {
  controls_->previewViewLocationDidChange(location);
}

void PreviewWindowController::previewViewZoomDidChange() { controls_->previewViewZoomDidChange(); }

void PreviewWindowController::updateVideoFrame(const SampleBuffer& sampleBuffer) {
  previewView->updateVideoFrame(sampleBuffer);
}

void PreviewWindowController::stopPreview() { previewView->stopPreview(); }
void PreviewWindowController::stopCalibration() { previewView->stopCalibration(); }
void PreviewWindowController::changeScale(int32_t type) { previewView->changeScale(type); }

void PreviewWindowController::setCalibration(float pixelsPerUnit, int32_t unit) {
  previewView->setCalibration(pixelsPerUnit, unit);
}

void PreviewWindowController::removeAllShapes() { previewView->removeAllShapes(); }

bool PreviewWindowController::closeCalibrationWindow() {
  return calibration_->closeCalibrationWindow();
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
  capture_->startCaptureSession(microscope, resolution);
}

void PreviewWindowController::perform(Command command) {
  switch (command) {
    case Command::Help: surroundings_.howToClicked(); break;
    case Command::Options: surroundings_.preferencesClicked(); break;
    case Command::Folder: folderToolbarItemDidClick(); break;
    case Command::Microscope: microscopeToolbarItemDidClick(); break;
    case Command::Crosshair: toggleScale(kScaleCrosshair); break;
    case Command::Grid: toggleScale(kScaleGrid); break;
    case Command::Concentric: toggleScale(kScaleConcentric); break;
    case Command::Line: previewView->changeOperation(kOprLine); break;
    case Command::Line2: previewView->changeOperation(kOprLine2); break;
    case Command::Circle: previewView->changeOperation(kOprCircle); break;
    case Command::Rectangle: previewView->changeOperation(kOprRect); break;
    case Command::Angle: previewView->changeOperation(kOprAngle); break;
    case Command::Pencil: previewView->changeOperation(kOprPencil); break;
    case Command::Drag: previewView->changeOperation(kOprDrag); break;
    case Command::DeleteLast: previewView->removeLastShape(); break;
    case Command::DeleteAll: previewView->removeAllShapes(); break;
    case Command::Calibration: calibration_->calibrationToolbarItemDidClick(); break;
    case Command::Shutter: saving_->getPathAndSaveImage(); break;
    case Command::Record: saving_->recordToolbarItemDidClick(); break;
    case Command::Text: textToolbarItemDidClick(); break;
  }
}

bool PreviewWindowController::validateUserInterfaceItem(Command command) const {
  switch (command) {
    case Command::Help:
    case Command::Options:
    case Command::Folder:
    case Command::Microscope: return true;
    default:
      return capture_ && capture_->capDevice && !calibration_->isCalibrationWindowUp() &&
             !inputTextWndController;
  }
}

void PreviewWindowController::toggleScale(int32_t scaleType) {
  previewView->changeScale(previewView->getCurrScale() == scaleType ? kScaleNone : scaleType);
}

void PreviewWindowController::folderToolbarItemDidClick() {
  const auto& url = surroundings_.preferences.url;
  if (!url) {
    showAlert(QMessageBox::Information, tr("Folder not initialized"),
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
    showAlert(QMessageBox::Warning, tr("No microscope found"),
              tr("Please connect your microscope."));
    return;
  }
  if (microscopeWndController) return;
  microscopeWndController = new MicroscopeWindowController(&window_);
  microscopeWndController->setDelegate(this);
  connect(microscopeWndController, &QDialog::finished, this, [this] {
    microscopeWndController->deleteLater();
    microscopeWndController.clear();
  });
  microscopeWndController->open();
}

void PreviewWindowController::textToolbarItemDidClick() {
  if (inputTextWndController) return;
  inputTextWndController = new InputTextWindowController(&window_);
  connect(inputTextWndController, &QDialog::finished, this, [this](int returnCode) {
    if (returnCode == 1) previewView->setInputText(inputTextWndController->getInputText());
    closeInputTextWindow();
  });
  inputTextWndController->open();
}

void PreviewWindowController::showAlert(int icon, const QString& message,
                                        const QString& information) {
  auto* alert =
      new QMessageBox(QMessageBox::Icon(icon), QString(), message, QMessageBox::Ok, &window_);
  alert->setInformativeText(information);
  alert->setAttribute(Qt::WA_DeleteOnClose);
  alert->open();
}

}  // namespace tessary
