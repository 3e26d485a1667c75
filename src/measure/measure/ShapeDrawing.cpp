#include "measure/ShapeDrawing.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include <fmt/format.h>

#include "base/Truncate.h"
#include "measure/CalcAngle.h"
#include "settings/Preferences.h"

namespace tessary {

namespace {

constexpr int32_t kConstructionTick = 38;  // half length of a line's end ticks
constexpr int32_t kTick = 18;
constexpr double kLeastTextWidth = 100.0;

/// Where the mouse takes hold of a point: a pixel wider all round than the frame drawn there.
ImageRect handleRect(ImagePoint point) { return {{point.x - 6, point.y - 6}, {13, 13}}; }

template <typename... Args>
void formatInto(std::string& text, fmt::format_string<Args...> format, Args&&... args) {
  text.clear();
  fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
}

/// Whole pixels between two coordinates.
int32_t wholeDistance(double a, double b) { return truncateToInt32(std::abs(b - a)); }

/// 32-bit products and sums that are meant to wrap.
int32_t sumOfSquares(int32_t a, int32_t b) {
  const auto ua = static_cast<uint32_t>(a);
  const auto ub = static_cast<uint32_t>(b);
  return static_cast<int32_t>(ua * ua + ub * ub);
}

/// Where a parallel stands to its baseline.
///
///     pt3 - half ------- pt3 ------- pt3 + half     d: distance of the two, of either sign
///                         |
///     pt1 -------------- foot ------ pt2
struct Parallel {
  ImagePoint foot;
  ImagePoint half;
  double d;
};

Parallel parallelThrough(ImagePoint pt1, ImagePoint pt2, ImagePoint pt3) {
  if (pt2.y == pt1.y) {
    const double half = wholeDistance(pt1.x, pt2.x) / 2;
    return {{pt3.x, pt1.y}, {half, 0}, std::abs(pt3.y - pt1.y)};
  }
  if (pt2.x == pt1.x) {
    const double half = wholeDistance(pt1.y, pt2.y) / 2;
    return {{pt1.x, pt3.y}, {0, half}, std::abs(pt3.x - pt1.x)};
  }
  // Not the plain dot product: this way round is what decides the last digit of the label. Neither
  // division is by zero, for the baseline is slanted.
  const double t = std::atan2(pt2.y - pt1.y, pt2.x - pt1.x);
  const double u = pt3.x - pt1.x;
  const double v = pt3.y - pt1.y;
  const double a = v / std::tan(t);
  const double b = v / std::sin(t);
  const double c = u - a;
  const double d = c * std::sin(t);
  const double e = c * std::cos(t) + b;  // along the baseline from pt1 to the foot
  const ImagePoint foot{pt1.x + truncateToInt32(e * std::cos(t)),
                        pt1.y + truncateToInt32(e * std::sin(t))};
  const double length = std::sqrt(
      static_cast<double>(sumOfSquares(wholeDistance(pt1.x, pt2.x), wholeDistance(pt1.y, pt2.y))));
  const ImagePoint half{static_cast<double>(truncateToInt32(length * std::cos(t) * 0.5)),
                        static_cast<double>(truncateToInt32(length * std::sin(t) * 0.5))};
  return {foot, half, d};
}

/// The radius that a circle is labelled with, in pixels. Meant not to be rounded, unlike the one it
/// is plotted with.
int32_t labelRadius(ImagePoint pt1, ImagePoint pt2) {
  const int32_t dx = wholeDistance(pt1.x, pt2.x);
  const int32_t dy = wholeDistance(pt1.y, pt2.y);
  if (pt2.x == pt1.x) return dy;
  if (pt2.y == pt1.y) return dx;
  return truncateToInt32(std::sqrt(static_cast<float>(sumOfSquares(dx, dy))));
}

}  // namespace

void ShapeDrawing::drawShapeItem(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  s.lineVertices.count = 0;
  s.pointVertices.count = 0;
  switch (s.type) {
    case kOprLine: return drawShapeLine(index);
    case kOprLine2: return drawShapeLine2(index);
    case kOprCircle: return drawShapeCircle(index);
    case kOprRect: return drawShapeRect(index);
    case kOprAngle: return drawShapeAngle(index);
    case kOprPencil: return drawShapePencil(index);
    case kOprText: return drawShapeText(index);
    default: return;
  }
}

void ShapeDrawing::drawShapeLine(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  addLine(s, s.pt1, s.pt2);
  if (index == tool_._iDrawingShape) {
    addTicks(s, kConstructionTick);
  } else if (tool_.isMarked(index)) {
    addFramesIfMarked(index, {s.pt1, s.pt2});
  } else {
    addTicks(s, kTick);
  }
  if (isCalibrated()) {
    const auto a = static_cast<float>(std::abs(s.pt2.x - s.pt1.x));
    const auto b = static_cast<float>(std::abs(s.pt2.y - s.pt1.y));
    formatInto(text_, "{:.3f}{}", labelValue(std::sqrt(a * a + b * b)), context_.calibration._unit);
    addLabel(s, text_, s.pt1);
  }
  s.hitRects = {handleRect(s.pt1), handleRect(s.pt2), ImageRect{}, ImageRect{}};
}

void ShapeDrawing::drawShapeLine2(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  addLine(s, s.pt1, s.pt2);
  // While the baseline is dragged there is no third point yet.
  if (index == tool_._iDrawingShape && tool_._opr2 != kOprLine2) return;

  const auto [foot, half, d] = parallelThrough(s.pt1, s.pt2, s.pt3);
  addLine(s, s.pt3, foot);
  addLine(s, {s.pt3.x - half.x, s.pt3.y - half.y}, {s.pt3.x + half.x, s.pt3.y + half.y});
  addFramesIfMarked(index, {foot, s.pt3});
  if (isCalibrated()) {
    formatInto(text_, "{:.3f}{}", labelValue(static_cast<float>(d)), context_.calibration._unit);
    addLabel(s, text_, s.pt3);
  }
  // None at the ends of the baseline: the pair is taken by its foot or its third point.
  s.hitRects = {handleRect(foot), handleRect(s.pt3), ImageRect{}, ImageRect{}};
}

void ShapeDrawing::drawShapeCircle(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  if (s.pt2 == s.pt1) return;
  addLine(s, s.pt1, s.pt2);
  context_.lines._drawShapeCircle(s.pointVertices, s.pt1, s.pt2, vertexColor());
  addFrame(index, s.pt1);  // the centre always shows one
  addFramesIfMarked(index, {s.pt2});
  if (isCalibrated()) {
    const std::string& unit = context_.calibration._unit;
    const int32_t r = labelRadius(s.pt1, s.pt2);
    const auto diameter = static_cast<int32_t>(2u * static_cast<uint32_t>(r));
    const int32_t square = sumOfSquares(r, 0);
    formatInto(text_, "R:{:.3f}{}", labelValue(static_cast<float>(r)), unit);
    formatInto(text2_, "C:{:.3f}{}", labelValue(static_cast<float>(diameter * std::numbers::pi)),
               unit);
    // Meant to be divided once only, so that this is not in square units; a rectangle's area is.
    formatInto(text3_, "S:{:.3f}{}^2", labelValue(static_cast<float>(square * std::numbers::pi)),
               unit);
    addLabel3(s, s.pt1);
  }
  s.hitRects = {handleRect(s.pt1), handleRect(s.pt2), ImageRect{}, ImageRect{}};
}

void ShapeDrawing::drawShapeRect(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  if (s.pt2 == s.pt1) return;
  const ImagePoint corner3{s.pt1.x, s.pt2.y};
  const ImagePoint corner4{s.pt2.x, s.pt1.y};
  addBox(s, s.pt1, s.pt2);
  addFramesIfMarked(index, {s.pt1, s.pt2, corner3, corner4});
  if (isCalibrated()) {
    const std::string& unit = context_.calibration._unit;
    const float pixelsPerUnit = context_.calibration._pixelsPerUnit;
    const float w = static_cast<float>(std::abs(s.pt2.x - s.pt1.x)) / pixelsPerUnit;
    const float h = static_cast<float>(std::abs(s.pt2.y - s.pt1.y)) / pixelsPerUnit;
    const float area = w * h;
    formatInto(text_, "{:.3f}x{:.3f}{}", double{w}, double{h}, unit);
    formatInto(text2_, "S:{:.3f}{}^2", double{area}, unit);
    text3_.clear();
    addLabel3(s, {std::min(s.pt1.x, s.pt2.x), std::min(s.pt1.y, s.pt2.y)});
  }
  s.hitRects = {handleRect(s.pt1), handleRect(s.pt2), handleRect(corner3), handleRect(corner4)};
}

void ShapeDrawing::drawShapeAngle(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  if (s.pt2 == s.pt1) return;
  addLine(s, s.pt1, s.pt2);
  // While the first arm is dragged there is no second one yet.
  if (index == tool_._iDrawingShape && tool_._opr2 != kOprAngle) return;

  if (s.pt3 != s.pt2) {
    addLine(s, s.pt1, s.pt3);
    addFramesIfMarked(index, {s.pt1, s.pt2, s.pt3});
    formatInto(text_, "{:.3f}\u00B0", double{_CalcAngle(s.pt1, s.pt2, s.pt3)});
    addLabel(s, text_, s.pt1);
  }
  s.hitRects = {handleRect(s.pt1), handleRect(s.pt2), handleRect(s.pt3), ImageRect{}};
}

void ShapeDrawing::drawShapePencil(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  const auto points = s.pencilPoints.elements();
  if (points.empty()) return;
  for (size_t k = 1; k < points.size(); ++k) addLine(s, points[k - 1], points[k]);
  addFramesIfMarked(index, {points.front(), points.back()});
  s.hitRects = {};
  if (points.size() >= 2) {
    s.hitRects[0] = handleRect(points.front());
    s.hitRects[1] = handleRect(points.back());
  }
}

void ShapeDrawing::drawShapeText(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  if (!s.text) return;
  Size size = context_.text.getTextSize(*s.text);
  if (size.width <= kLeastTextWidth) size.width = kLeastTextWidth;
  s.pt2 = {s.pt1.x + size.width + 4, s.pt1.y + size.height + 4};
  if (tool_.isMarked(index)) {
    addBox(s, s.pt1, s.pt2);
    addFramesIfMarked(index, {s.pt1, s.pt2, {s.pt1.x, s.pt2.y}, {s.pt2.x, s.pt1.y}});
  }
  addLabel(s, *s.text, s.pt1);
  // The whole box and no handle.
  s.hitRects = {ImageRect{s.pt1, {size.width + 4, size.height + 4}}, ImageRect{}, ImageRect{},
                ImageRect{}};
}

VertexColor ShapeDrawing::vertexColor() const {
  return LinePrimitives::mtlColorFromColor(context_.preferences.lineColor);
}

double ShapeDrawing::labelValue(float pixels) const {
  return double{std::abs(pixels) / context_.calibration._pixelsPerUnit};
}

void ShapeDrawing::addLine(SHAPE& shape, ImagePoint from, ImagePoint to) {
  context_.lines.addLineToLineVector(shape.lineVertices, from, to, vertexColor());
}

void ShapeDrawing::addBox(SHAPE& shape, ImagePoint corner, ImagePoint opposite) {
  addLine(shape, corner, {opposite.x, corner.y});
  addLine(shape, {opposite.x, corner.y}, opposite);
  addLine(shape, opposite, {corner.x, opposite.y});
  addLine(shape, {corner.x, opposite.y}, corner);
}

void ShapeDrawing::addTicks(SHAPE& shape, int32_t auxLen) {
  context_.lines.drawLineAuxLine(shape.lineVertices, shape.pt1, shape.pt2, auxLen, vertexColor());
}

void ShapeDrawing::addFrame(int32_t index, ImagePoint center) {
  context_.lines.drawSmallFrame(shapes_.shape(index).lineVertices, center, tool_.isSelected(index),
                                vertexColor());
}

void ShapeDrawing::addFramesIfMarked(int32_t index, std::initializer_list<ImagePoint> centers) {
  if (!tool_.isMarked(index)) return;
  for (const ImagePoint center : centers) addFrame(index, center);
}

void ShapeDrawing::addLabel(SHAPE& shape, const std::string& text, ImagePoint anchor) {
  context_.text.addTextToPointVector(shape.pointVertices, text, anchor, false,
                                     context_.preferences.textColor);
}

void ShapeDrawing::addLabel3(SHAPE& shape, ImagePoint anchor) {
  context_.text.add3TextToPointVector(shape.pointVertices, text_, text2_, text3_, anchor, false,
                                      context_.preferences.textColor);
}

}  // namespace tessary
