#include "view/PreviewView.h"

#include <utility>

#include <fmt/format.h>

#include "measure/MeasurementRows.h"
#include "measure/OverlayText.h"

namespace tessary {
namespace {

bool isComposed(TextureSize size) {
  return size.width >= RenderPipeline::kSmallestFrame.width &&
         size.height >= RenderPipeline::kSmallestFrame.height;
}

}  // namespace

PreviewView::PreviewView(Dependencies dependencies) : dependencies_(std::move(dependencies)) {}

void PreviewView::setLocationDelegate(PreviewViewLocationDelegate* delegate) {
  _locationDelegate = delegate;
  geometry_.setLocationDelegate(delegate);
}

void PreviewView::zoomTo(int32_t step) {
  geometry_.zoomTo(step);
  dependencies_.setNeedsDisplay();
}

void PreviewView::offsetLocationTo(float x, float y) {
  geometry_.offsetLocationTo(x, y);
  dependencies_.setNeedsDisplay();
}

void PreviewView::windowDidResize() {
  geometry_.windowDidResize();
  dependencies_.setNeedsDisplay();
}

void PreviewView::changeScale(int32_t scaleType) {
  overlay_.changeScale(scaleType);
  overlayDidChange();
}

void PreviewView::setCalibration(float pixelsPerUnit, int32_t unit) {
  overlay_.setCalibration(pixelsPerUnit, unit);
  overlayDidChange();
}

void PreviewView::startCalibration() {
  overlay_.startCalibration();
  overlayDidChange();
}

void PreviewView::stopCalibration() {
  overlay_.stopCalibration();
  overlayDidChange();
}

void PreviewView::changeOperation(int32_t op) {
  overlay_.changeOperation(op);
  overlayDidChange();
  if (_locationDelegate) _locationDelegate->previewViewZoomDidChange();
}

void PreviewView::setInputText(const std::string& text) {
  overlay_.shapes.setInputText(text);
  overlayDidChange();
}

void PreviewView::removeSelectedShape() {
  overlay_.shapes.removeSelectedShape();
  overlayDidChange();
}

void PreviewView::removeLastShape() {
  overlay_.shapes.removeLastShape();
  overlayDidChange();
}

void PreviewView::removeAllShapes() {
  overlay_.shapes.removeAllShapes();
  overlayDidChange();
}

void PreviewView::redrawLinesAndPoints() {
  overlay_.redrawLinesAndPoints();
  dependencies_.setNeedsDisplay();
}

bool PreviewView::mouseDown(const MouseLocation& location) {
  if (!contains(geometry_.viewFrame(), location.container)) return false;
  tellFinished(overlay_.mouse.mouseDown(viewPoint(location), location.screen));
  overlayDidChange();
  return true;
}

void PreviewView::mouseUp(const MouseLocation& location) {
  tellFinished(overlay_.mouse.mouseUp(viewPoint(location)));
  overlayDidChange();
}

void PreviewView::mouseDragged(const MouseLocation& location) {
  overlay_.mouse.mouseDragged(viewPoint(location), location.screen);
  dependencies_.setNeedsDisplay();
}

void PreviewView::mouseMoved(const MouseLocation& location) {
  if (!contains(geometry_.viewFrame(), location.container)) return;
  const uint64_t before = overlay_.context.revision;
  overlay_.mouse.mouseMoved(viewPoint(location));
  if (overlay_.context.revision != before) dependencies_.setNeedsDisplay();
}

void PreviewView::overlayDidChange() {
  dependencies_.setNeedsDisplay();
  if (overlayDelegate_) overlayDelegate_->overlayTextMayHaveChanged();
}

void PreviewView::tellFinished(int32_t index) {
  if (!overlayDelegate_ || !overlay_.shapes.hasShape(index)) return;
  overlayDelegate_->shapeDidFinish(
      shapeText(overlay_.shapes.shape(index), overlay_.context.calibration));
}

std::string PreviewView::overlayText() const { return tessary::overlayText(overlay_); }

ViewPoint PreviewView::viewPoint(const MouseLocation& location) const {
  return geometry_.convertPointFromSuperview(location.container);
}

void PreviewView::updateVideoFrame(const SampleBuffer& frame) {
  if (ring_.push(frame.imageBuffer)) {
    dependencies_.mainQueue.post(lifetime_.guard([this] { frameSizeDidChange(); }));
  }
  if (recordingTakesFrames(recording_.recordingStatus())) recording_.appendMovieFrame(frame);
  frameRate_.calculateFramerateAtTimestamp(frame.presentationTimeStamp);
  wakeUp();
}

void PreviewView::frameSizeDidChange() {
  const FrameRing::Newest newest = ring_.newest();
  // Of several sizes in a row the last one counts, and after a stop there is none to lay out for.
  if (!newest.frame || newest.run == laidOutRun_) return;
  laidOutRun_ = newest.run;
  _cvTextureSize = newest.frame->size();
  geometry_.frameSizeDidChange(_cvTextureSize);
  geometry_.startPreview();
  dependencies_.setNeedsDisplay();
  if (isComposed(_cvTextureSize)) {
    dependencies_.failures.recovered(Failure::FrameTooSmall);
    return;
  }
  constexpr TextureSize kSmallest = RenderPipeline::kSmallestFrame;
  dependencies_.failures.failed(
      Failure::FrameTooSmall,
      fmt::format("Pictures of {}x{} are too small to be shown. Choose {}x{} or more, or another "
                  "microscope.",
                  _cvTextureSize.width, _cvTextureSize.height, kSmallest.width, kSmallest.height));
}

void PreviewView::stopPreview() {
  dependencies_.failures.recovered(Failure::FrameTooSmall);
  _cvTextureSize = {};
  geometry_.stopPreview();
  overlay_.stopPreview();
  ring_.clear();
  overlayDidChange();
}

void PreviewView::wakeUp() {
  if (wakeUpPending_.exchange(true)) return;
  dependencies_.mainQueue.post(lifetime_.guard([this] {
    wakeUpPending_ = false;
    dependencies_.setNeedsDisplay();
  }));
}

std::shared_ptr<const PixelBuffer> PreviewView::currentPicture(Done done) {
  // By the size that is composed: the layout for a new one may not have come yet.
  std::shared_ptr<PixelBuffer> picture;
  dependencies_.withGraphicsContext([&] {
    if (!pipeline_.composeNow(overlay_.vertices())) return;
    picture = std::make_shared<PixelBuffer>(pipeline_.composedSize());
    if (!pipeline_.readBack(*picture)) picture = nullptr;
  });
  if (picture) {
    dependencies_.failures.recovered(Failure::OverlayLeftOut);
    return picture;
  }
  FrameRing::Frame frame = ring_.newest().frame;
  if (!frame) return std::make_shared<PixelBuffer>(TextureSize{});
  if (!overlay_.isEmpty()) {
    dependencies_.failures.failed(
        Failure::OverlayLeftOut,
        isComposed(frame->size())
            ? fmt::format("The picture was {} without what lies over it: it can't be read back "
                          "from the graphics card. {} it again.",
                          done.word, done.again)
            : fmt::format("A picture this small is {} without what lies over it. Choose a larger "
                          "resolution.",
                          done.word));
  }
  return frame;
}

bool PreviewView::saveImageFile(const std::string& fileName) {
  const Preferences& preferences = dependencies_.preferences;
  return stillImage_.saveImageFile(preferences.url.value_or(std::string()), fileName,
                                   preferences.imagePNG, *currentPicture(kSaved), stillInfo());
}

StillInfo PreviewView::stillInfo() const {
  const Preferences& preferences = dependencies_.preferences;
  const Calibration& calibration = overlay_.context.calibration;
  StillInfo info{dependencies_.clock.localTime(), dependencies_.cameraModel(),
                 calibration._pixelsPerUnit, calibration._unit};
  info.table.rows = measurementRows(overlay_.shapes, overlay_.tool, calibration);
  if (const auto slot = slotInForce())
    info.table.calibration = preferences.calibrations[size_t(*slot)].name;
  return info;
}

std::optional<int32_t> PreviewView::slotInForce() const {
  const Calibration& calibration = overlay_.context.calibration;
  return dependencies_.preferences.slotInForce(calibration._pixelsPerUnit, calibration._unit);
}

void PreviewView::startRecord(const std::string& file,
                              std::weak_ptr<PreviewViewRecordDelegate> delegate) {
  recording_.startRecord(file, std::move(delegate), _cvTextureSize);
}

bool PreviewView::drawInView(const Surface& surface, double devicePixelRatio) {
  return pipeline_.drawInView(geometry_, overlay_.vertices(), surface, devicePixelRatio);
}

}  // namespace tessary
