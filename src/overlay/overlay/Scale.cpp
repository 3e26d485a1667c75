#include "overlay/Scale.h"

#include <cmath>
#include <string>

#include <fmt/format.h>

#include "base/Truncate.h"
#include "settings/Preferences.h"

namespace tessary {

namespace {

constexpr int32_t kRulerStep = 10;  // pixels between the marks of the ruler
constexpr int32_t kRingStep = 100;  // pixels between the rings of the ruler
constexpr int32_t kMajorLength = 20;
constexpr double kIdealStep = 100.0;  // pixels

/// One drawing of one reticle. W, H and their integer halves are video pixels.
class ReticleDrawing {
 public:
  ReticleDrawing(OverlayContext& context, int32_t kind)
      : context_(context),
        kind_(kind),
        color_(LinePrimitives::mtlColorFromColor(context.preferences.gridColor)),
        W(context.cvTextureSize.width),
        H(context.cvTextureSize.height),
        cx(W / 2),
        cy(H / 2) {}

  void drawAxes() {
    addLine(cx, 0, cx, H);
    addLine(0, cy, W, cy);
  }

  /// Marks every 10 pixels, left of the vertical axis and above the horizontal one.
  void drawRuler() {
    for (int32_t i = 1; i < cy / kRulerStep; ++i) {
      for (const int32_t y : {cy - kRulerStep * i, cy + kRulerStep * i}) {
        if (isFullLine(i)) {
          addLine(0, y, W, y);
        } else if (const int32_t length = rulerMark(i); length > 0) {
          addLine(cx - length, y, cx, y);
        }
      }
    }
    for (int32_t i = 1; i < cx / kRulerStep; ++i) {
      for (const int32_t x : {cx - kRulerStep * i, cx + kRulerStep * i}) {
        if (isFullLine(i)) {
          addLine(x, 0, x, H);
        } else if (const int32_t length = rulerMark(i); length > 0) {
          addLine(x, cy - length, x, cy);
        }
      }
    }
    if (kind_ != kScaleConcentric) return;
    for (int32_t i = 1; i <= cx / kRingStep + 1; ++i) addRing(cx - kRingStep * i);
  }

  /// Steps of `s` pixels, each divided in ten. An interval's minor marks go from its outer end back
  /// towards the centre, and one step more than fits lets them reach the edge of the frame.
  void drawSteps(int32_t s) {
    for (int32_t i = 1; i <= cy / s + 1; ++i) {
      const int32_t above = cy - s * i;
      if (above > 0) addMajorAtY(above);
      for (int32_t j = 1; j <= 9; ++j) {
        const int32_t y = above + minorOffset(j, s);
        if (y > 0) addLine(cx, y, cx + minorLength(j), y);
      }
      const int32_t below = cy + s * i;
      if (below + 1 < H) addMajorAtY(below);
      for (int32_t j = 1; j <= 9; ++j) {
        const int32_t y = below - minorOffset(j, s);
        if (y + 1 < H) addLine(cx, y, cx + minorLength(j), y);
      }
    }
    for (int32_t i = 1; i <= cx / s + 1; ++i) {
      const int32_t before = cx - s * i;
      if (kind_ == kScaleConcentric) {
        addRing(before);
      } else if (before > 0) {
        addMajorAtX(before);
      }
      for (int32_t j = 1; j <= 9; ++j) {
        const int32_t x = before + minorOffset(j, s);
        if (x > 0) addLine(x, cy, x, cy - minorLength(j));
      }
      const int32_t behind = cx + s * i;
      if (kind_ != kScaleConcentric && behind + 1 < W) addMajorAtX(behind);
      for (int32_t j = 1; j <= 9; ++j) {
        const int32_t x = behind - minorOffset(j, s);
        if (x + 1 < W) addLine(x, cy, x, cy - minorLength(j));
      }
    }
  }

  /// Centred on the crosshair's first mark right of the centre; on the other two, whose lines and
  /// rings it would cover there, between the centre and that mark.
  void drawLabel(const std::string& text, int32_t s) {
    const double w = context_.text.getTextSize(text).width;
    const double x = kind_ == kScaleCrosshair ? (W - w) / 2 + s : (W + s - w) / 2;
    context_.text.addTextToPointVector(context_._totalPoints, text, {x, cy + 4.0}, false,
                                       context_.preferences.gridColor);
  }

 private:
  void addLine(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
    context_.lines.addLineToLineVector(context_._totalLines,
                                       {static_cast<double>(x1), static_cast<double>(y1)},
                                       {static_cast<double>(x2), static_cast<double>(y2)}, color_);
  }

  /// Around the centre through (x, H/2). 0 is meant to be let in, here alone.
  void addRing(int32_t x) {
    if (x < 0) return;
    const auto middle = static_cast<double>(cy);
    context_.lines._drawShapeCircle(context_._totalPoints, {static_cast<double>(cx), middle},
                                    {static_cast<double>(x), middle}, color_);
  }

  void addMajorAtY(int32_t y) {
    if (kind_ == kScaleCrosshair) addLine(cx, y, cx + kMajorLength, y);
    if (kind_ == kScaleGrid) addLine(0, y, W, y);
  }

  void addMajorAtX(int32_t x) {
    if (kind_ == kScaleCrosshair) addLine(x, cy, x, cy - kMajorLength);
    if (kind_ == kScaleGrid) addLine(x, 0, x, H);
  }

  bool isFullLine(int32_t i) const { return kind_ == kScaleGrid && i % 10 == 0; }

  /// 0 for no mark.
  int32_t rulerMark(int32_t i) const {
    if (kind_ == kScaleConcentric && i % 10 == 0) return 0;
    return i % 5 == 0 ? 10 : 4;
  }

  static int32_t minorLength(int32_t j) { return j == 5 ? 14 : 8; }

  static int32_t minorOffset(int32_t j, int32_t s) {
    const auto offset = static_cast<float>(j * (s / 10.0));
    return truncateToInt32(static_cast<double>(offset) + 0.5);
  }

  OverlayContext& context_;
  const int32_t kind_;
  const VertexColor color_;
  const int32_t W;
  const int32_t H;
  const int32_t cx;
  const int32_t cy;
};

}  // namespace

void Scale::calcGridPixelsAndLen() {
  const float pixelsPerUnit = context_.calibration._pixelsPerUnit;
  if (pixelsPerUnit <= 0.0f) {
    _scalePixels = 0;
    _scaleLen = 0.0f;
    return;
  }
  double best = 100.0;
  float decade = 0.0001f;
  for (int i = 0; i < 6; ++i, decade *= 10.0f) {
    for (const float factor : {1.0f, 2.0f, 5.0f}) {
      const float length = decade * factor;
      const float pixels = length * pixelsPerUnit;
      const double distance = std::abs(kIdealStep - static_cast<double>(pixels));
      if (best > distance) {
        best = distance;
        _scalePixels = truncateToInt32(static_cast<double>(pixels) + 0.5);
        _scaleLen = length;
      }
    }
  }
}

void Scale::drawReticle(int32_t kind) {
  if (calibrationLine_._showCalibrationLine != 0 || _scaleType != kind) return;

  ReticleDrawing drawing(context_, kind);
  drawing.drawAxes();
  if (context_.calibration._pixelsPerUnit < 0.0f) {
    drawing.drawRuler();
  } else if (_scaleLen > 0.0f && _scalePixels > 0) {
    // A step of less than half a pixel can't be drawn: axes only.
    drawing.drawSteps(_scalePixels);
    drawing.drawLabel(
        fmt::format("{:.3g}{}", static_cast<double>(_scaleLen), context_.calibration._unit),
        _scalePixels);
  }
}

}  // namespace tessary
