#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "measure/ShapeValues.h"
#include "measure/Shapes.h"
#include "measure/ToolState.h"
#include "overlay/OverlayContext.h"

namespace tessary {

/// Turns shapes into vertices. Each operation fills the shape's own two vertex lists and its hit
/// rectangles; none touches the total lists or tests the index. How far a construction has come is
/// told by `_iDrawingShape` and `_opr2`, so a stale index draws a shape as half made: accepted.
///
/// Lengths are labelled only under a calibration. What a label says is decided by
/// measure/ShapeValues.h. Main thread.
class ShapeDrawing {
 public:
  ShapeDrawing(OverlayContext& context, Shapes& shapes, const ToolState& tool)
      : context_(context), shapes_(shapes), tool_(tool) {}

  /// Empties the shape's two lists and draws it by its type. An unknown type draws nothing.
  void drawShapeItem(int32_t index);

  /// The line with ticks at its ends, or with handles; its length at `pt1`.
  void drawShapeLine(int32_t index);
  /// A baseline and, through `pt3`, a parallel of the same length; the distance between them at
  /// `pt3`.
  void drawShapeLine2(int32_t index);
  /// Radius, rim and centre; radius, circumference and area at the centre.
  void drawShapeCircle(int32_t index);
  /// Sides and area at the top left corner.
  void drawShapeRect(int32_t index);
  /// Two arms; the angle at the vertex, with or without a calibration.
  void drawShapeAngle(int32_t index);
  /// The stroke through `pencilPoints`.
  void drawShapePencil(int32_t index);
  /// The text, and its box while selected or hovered. Sets `pt2`.
  void drawShapeText(int32_t index);

 private:
  bool isCalibrated() const { return context_.calibration.isCalibrated(); }
  VertexColor vertexColor() const;
  ShapeValues valuesOf(const SHAPE& shape) const;
  /// The number with its unit, as labels show it.
  void appendValue(std::string& text, const ShapeValue& value) const;

  void addLine(SHAPE& shape, ImagePoint from, ImagePoint to);
  /// The four sides of the rectangle with these opposite corners.
  void addBox(SHAPE& shape, ImagePoint corner, ImagePoint opposite);
  void addTicks(SHAPE& shape, int32_t auxLen);
  void addFrame(int32_t index, ImagePoint center);
  /// A handle at each point if the shape is selected or hovered.
  void addFramesIfMarked(int32_t index, std::initializer_list<ImagePoint> centers);
  void addLabel(SHAPE& shape, const std::string& text, ImagePoint anchor);
  /// Three lines, from `text_`, `text2_` and `text3_`.
  void addLabel3(SHAPE& shape, ImagePoint anchor);

  OverlayContext& context_;
  Shapes& shapes_;
  const ToolState& tool_;
  // Kept from label to label, so that a redraw allocates nothing.
  std::string text_;
  std::string text2_;
  std::string text3_;
};

}  // namespace tessary
