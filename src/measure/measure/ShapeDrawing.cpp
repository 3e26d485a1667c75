#include "measure/ShapeDrawing.h"

#include <algorithm>

#include "measure/Parallel.h"
#include "settings/Preferences.h"

namespace tessary {

namespace {

constexpr int32_t kConstructionTick = 38;  // half length of a line's end ticks
constexpr int32_t kTick = 18;
constexpr double kLeastTextWidth = 100.0;

/// Where the mouse takes hold of a point: a pixel wider all round than the frame drawn there.
ImageRect handleRect(ImagePoint point) { return {{point.x - 6, point.y - 6}, {13, 13}}; }

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
    text_.clear();
    appendValue(text_, valuesOf(s)[0]);
    addLabel(s, text_, s.pt1);
  }
  s.hitRects = {handleRect(s.pt1), handleRect(s.pt2), ImageRect{}, ImageRect{}};
}

void ShapeDrawing::drawShapeLine2(int32_t index) {
  SHAPE& s = shapes_.shape(index);
  addLine(s, s.pt1, s.pt2);
  // While the baseline is dragged there is no third point yet.
  if (tool_.isHalfMade(index, kOprLine2)) return;

  const Parallel parallel = parallelThrough(s.pt1, s.pt2, s.pt3);
  const ImagePoint foot = parallel.foot;
  const ImagePoint half = parallel.half;
  addLine(s, s.pt3, foot);
  addLine(s, {s.pt3.x - half.x, s.pt3.y - half.y}, {s.pt3.x + half.x, s.pt3.y + half.y});
  addFramesIfMarked(index, {foot, s.pt3});
  if (isCalibrated()) {
    text_.clear();
    appendValue(text_, valuesOf(s)[0]);
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
    const ShapeValues values = valuesOf(s);
    appendValue(text_ = "R:", values[0]);
    appendValue(text2_ = "C:", values[1]);
    appendValue(text3_ = "S:", values[2]);
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
    const ShapeValues values = valuesOf(s);
    text_.clear();
    appendNumber(text_, values[0]);
    appendValue(text_ += 'x', values[1]);
    appendValue(text2_ = "S:", values[2]);
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
  if (tool_.isHalfMade(index, kOprAngle)) return;

  if (s.pt3 != s.pt2) {
    addLine(s, s.pt1, s.pt3);
    addFramesIfMarked(index, {s.pt1, s.pt2, s.pt3});
    text_.clear();
    appendValue(text_, valuesOf(s)[0]);
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

ShapeValues ShapeDrawing::valuesOf(const SHAPE& shape) const {
  return shapeValues(shape, context_.calibration);
}

void ShapeDrawing::appendValue(std::string& text, const ShapeValue& value) const {
  appendNumber(text, value);
  appendUnit(text, value.kind, context_.calibration);
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
