#include "ui/PreviewControls.h"

#include <algorithm>
#include <cmath>

#include <QtWidgets/QSlider>

#include "ui/OverPicture.h"
#include "ui/StatusText.h"
#include "ui/ZoomSlider.h"

namespace tessary {
namespace {

constexpr int kPanTickMarks = 10;

/// Gives a pan slider its range, or hides it (range 0 to 0) where the picture fits.
void setPanRange(QSlider& slider, int32_t bitmapLength, int containerLength) {
  const int range = bitmapLength - containerLength;
  const QSignalBlocker quiet(slider);
  slider.setRange(0, std::max(range, 0));
  slider.setTickInterval(std::max(range / (kPanTickMarks - 1), 1));
  slider.setVisible(range > 0);
}

void setQuietly(QSlider& slider, int value) {
  const QSignalBlocker quiet(slider);
  slider.setValue(value);
}

}  // namespace

PreviewControls::PreviewControls(QWidget& container, PreviewView& previewView)
    : container_(container), previewView_(previewView) {
  setupSliders();
  setupTextFields();
}

void PreviewControls::setupSliders() {
  horizontalSlider = new QSlider(Qt::Horizontal, &container_);
  verticalSlider = new QSlider(Qt::Vertical, &container_);
  zoomSlider = new ZoomSlider(&container_);
  const auto setup = [](QSlider& slider, const char* name, const QString& title) {
    slider.setObjectName(QString::fromLatin1(name));
    slider.setAccessibleName(title);
    slider.setToolTip(title);
    slider.setGeometry(0, 0, 0, 0);
    slider.setTickPosition(QSlider::TicksBelow);
    styleOverPicture(slider);
    slider.show();
  };
  setup(*horizontalSlider, "horizontalSlider", tr("Scroll across"));
  setup(*verticalSlider, "verticalSlider", tr("Scroll down"));
  setup(*zoomSlider, "zoomSlider", tr("Zoom"));
  connect(horizontalSlider, &QSlider::valueChanged, this, &PreviewControls::horizontalSliderAct);
  connect(verticalSlider, &QSlider::valueChanged, this, &PreviewControls::verticalSliderAct);
  connect(zoomSlider, &QSlider::valueChanged, this, &PreviewControls::zoomSliderAct);
  // The zoom may have gone back to 100 per cent below a knob that stands still: a click on the knob
  // sends its step, and so does a key or a click that can't move it any further.
  connect(zoomSlider, &QSlider::sliderReleased, this, &PreviewControls::zoomSliderAct);
  connect(zoomSlider, &QSlider::actionTriggered, this, [this] {
    if (zoomSlider->sliderPosition() == zoomSlider->value()) zoomSliderAct();
  });
}

void PreviewControls::setupTextFields() {
  const auto add = [this](const char* name, Qt::Alignment alignment) {
    auto* text = new StatusText(&container_);
    text->setObjectName(QString::fromLatin1(name));
    text->setAlignment(alignment | Qt::AlignVCenter);
    text->setGeometry(0, 0, 0, 0);
    text->hide();
    return text;
  };
  zoomText = add("zoomText", Qt::AlignRight);
  fpsText = add("fpsText", Qt::AlignLeft);
}

void PreviewControls::horizontalSliderAct() {
  previewView_.offsetLocationTo(float(horizontalSlider->value()),
                                float(previewView_.viewLocation().y));
}

void PreviewControls::verticalSliderAct() {
  // Qt's vertical slider has its maximum at the top: the top of the picture is there.
  previewView_.offsetLocationTo(float(previewView_.viewLocation().x),
                                float(verticalSlider->maximum() - verticalSlider->value()));
}

void PreviewControls::zoomSliderAct() {
  previewView_.zoomTo(zoomSlider->value());
  previewViewFrameDidChange();
  showZoom();
}

void PreviewControls::stepZoomSlider(int steps) { setZoomSlider(zoomSlider->value() + steps); }

void PreviewControls::setZoomSlider(int step) {
  const int before = zoomSlider->value();
  zoomSlider->setValue(step);
  if (zoomSlider->value() == before) zoomSliderAct();  // as a click on the knob
}

void PreviewControls::previewViewLocationDidChange(ViewPoint location) {
  setQuietly(*horizontalSlider, int(location.x));
  setQuietly(*verticalSlider, int(verticalSlider->maximum() - location.y));
}

void PreviewControls::previewViewFrameDidChange() {
  horizontalSliderFrameDidChange();
  verticalSliderFrameDidChange();
  zoomSliderFrameDidChange();
  previewViewLocationDidChange(previewView_.viewLocation());
}

void PreviewControls::previewViewZoomDidChange() {
  setQuietly(*zoomSlider, previewView_.zoom());
  showZoom();
}

void PreviewControls::containerViewFrameDidChange() {
  horizontalSliderFrameDidChange();
  verticalSliderFrameDidChange();
  zoomSliderFrameDidChange();
  const ViewPoint location = previewView_.viewLocation();
  previewView_.offsetLocationTo(float(location.x), float(location.y));
  previewViewLocationDidChange(previewView_.viewLocation());
  const int top = container_.height() - 28;
  zoomText->setGeometry(container_.width() - 160, top, 37, 19);
  fpsText->setGeometry(15, top, 150, 19);
}

void PreviewControls::horizontalSliderFrameDidChange() {
  const int width = container_.width();
  if (width < previewView_.bitmapWidth()) horizontalSlider->setGeometry(width - 180, 10, 140, 20);
  setPanRange(*horizontalSlider, previewView_.bitmapWidth(), width);
}

void PreviewControls::verticalSliderFrameDidChange() {
  const int height = container_.height();
  if (height < previewView_.bitmapHeight())
    verticalSlider->setGeometry(container_.width() - 30, 30, 20, 140);
  setPanRange(*verticalSlider, previewView_.bitmapHeight(), height);
}

void PreviewControls::zoomSliderFrameDidChange() {
  zoomSlider->setGeometry(container_.width() - 120, container_.height() - 28, 100, 20);
}

void PreviewControls::showStatus(const Resolution& resolution, float videoFrameRate) {
  fpsText->showText(QStringLiteral("%1x%2  fps:%3")
                        .arg(resolution.width)
                        .arg(resolution.height)
                        .arg(std::lround(videoFrameRate)));
}

void PreviewControls::clearStatus() {
  for (StatusText* text : {zoomText, fpsText}) {
    text->clear();
    text->hide();
  }
}

void PreviewControls::showZoom() {
  zoomText->showText(QStringLiteral("%1%").arg(ZoomSlider::mapZoom100(previewView_.zoom())));
}

}  // namespace tessary
