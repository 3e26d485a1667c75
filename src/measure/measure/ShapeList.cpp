#include "measure/ShapeList.h"

#include <memory>

namespace tessary {

int32_t ShapeList::hitTest(ImagePoint point) const {
  for (int32_t i = 0; i < shapeCount(); ++i) {
    for (const ImageRect& rect : shape(i).hitRects) {
      if (contains(rect, point)) return i;
    }
  }
  return -1;
}

SHAPE& ShapeList::newShape(ImagePoint p) {
  tool_._iDrawingShape = shapeCount();
  SHAPE& s = _shapes.emplace_back();
  s.type = tool_._opr1;
  s.pt1 = p;
  s.pt2 = {-1, -1};
  s.pt3 = {-1, -1};
  if (tool_._iDrawingShape < 1) {
    s.lineVertices.pos = context_._totalLines.count;
    s.pointVertices.pos = context_._totalPoints.count;
  } else {
    const SHAPE& before = shape(tool_._iDrawingShape - 1);
    s.lineVertices.pos = before.lineVertices.pos + before.lineVertices.count;
    s.pointVertices.pos = before.pointVertices.pos + before.pointVertices.count;
  }
  return s;
}

void ShapeList::moveShape(int32_t index, int32_t dx, int32_t dy) {
  if (!hasShape(index)) return;
  const auto move = [dx, dy](ImagePoint& point) {
    point.x += dx;
    point.y += dy;
  };
  SHAPE& s = shape(index);
  if (s.type == kOprPencil) {
    for (int32_t k = 0; k < s.pencilPoints.count; ++k) move(s.pencilPoints.data[k]);
  } else {
    move(s.pt1);
    move(s.pt2);
    if (hasThirdPoint(s.type)) move(s.pt3);
  }
  redrawSelectedShape(index);
}

void ShapeList::redrawSelectedShape(int32_t index) {
  const SHAPE& s = shape(index);
  const int32_t oldLines = s.lineVertices.count;
  const int32_t oldPoints = s.pointVertices.count;
  drawing_.drawShapeItem(index);
  if (!holdsTotalLists_) return;

  const auto& lines = s.lineVertices;
  const auto& points = s.pointVertices;
  context_._totalLines.replace(lines.data, lines.pos, lines.count, oldLines);
  context_._totalPoints.replace(points.data, points.pos, points.count, oldPoints);
  moveRunsBehind(index, lines.count - oldLines, points.count - oldPoints);
  context_.totalListsDidChange();
}

void ShapeList::redrawDeletingShape(int32_t index) {
  if (!holdsTotalLists_) return;
  if (index >= 0) {
    const auto& lines = shape(index).lineVertices;
    const auto& points = shape(index).pointVertices;
    context_._totalLines.erase(lines.pos, lines.count);
    context_._totalPoints.erase(points.pos, points.count);
    moveRunsBehind(index, -lines.count, -points.count);
  } else if (!_shapes.empty()) {
    context_._totalLines.count = _shapes.front().lineVertices.pos;
    context_._totalPoints.count = _shapes.front().pointVertices.pos;
  }
  context_.totalListsDidChange();
}

void ShapeList::moveRunsBehind(int32_t index, int32_t lines, int32_t points) {
  if (lines == 0 && points == 0) return;
  for (int32_t i = index + 1; i < shapeCount(); ++i) {
    shape(i).lineVertices.pos += lines;
    shape(i).pointVertices.pos += points;
  }
}

void ShapeList::removeSelectedShape() {
  if (!hasShape(tool_._iSelectedShape)) return;
  redrawDeletingShape(tool_._iSelectedShape);
  _shapes.erase(_shapes.begin() + tool_._iSelectedShape);
  tool_.unmark();
}

void ShapeList::removeLastShape() {
  if (_shapes.empty()) return;
  redrawDeletingShape(shapeCount() - 1);
  _shapes.pop_back();
  if (tool_._iSelectedShape == shapeCount()) tool_._iSelectedShape = -1;
  if (tool_._iHoverShape == shapeCount()) tool_._iHoverShape = -1;
}

void ShapeList::removeAllShapes() {
  if (_shapes.empty()) return;
  redrawDeletingShape(-1);
  _shapes.clear();
  tool_.unmark();
}

void ShapeList::setInputText(const std::string& text) {
  if (text.empty()) return;
  tool_.unmark();
  const TextureSize size = context_.cvTextureSize;
  SHAPE& s = newShape(
      {static_cast<double>(size.width / 2 + 10), static_cast<double>(size.height / 2 - 38)});
  s.type = kOprText;
  s.text = std::make_shared<const std::string>(text);
  // `_iDrawingShape` is meant to stay at the text: texts have no second step that would clear it.
  redrawSelectedShape(tool_._iDrawingShape);
}

void ShapeList::appendAllShapes() {
  MyDataArray<PointVertex>& totalLines = context_._totalLines;
  MyDataArray<PointVertex>& totalPoints = context_._totalPoints;
  for (int32_t i = 0; i < shapeCount(); ++i) {
    SHAPE& s = shape(i);
    s.lineVertices.pos = totalLines.count;
    s.pointVertices.pos = totalPoints.count;
    drawing_.drawShapeItem(i);
    totalLines.push_back(s.lineVertices.data, s.lineVertices.count);
    totalPoints.push_back(s.pointVertices.data, s.pointVertices.count);
  }
  holdsTotalLists_ = true;
}

}  // namespace tessary
