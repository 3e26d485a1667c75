#pragma once

#include <cstdint>
#include <string>

#include "measure/ShapeDrawing.h"
#include "measure/Shapes.h"
#include "measure/ToolState.h"
#include "overlay/OverlayContext.h"

namespace tessary {

/// The shapes over the picture, and their share of the total lists.
///
///     _totalLines:  | reticle | shape 0 | shape 1 | ... | shape n-1 |      _totalPoints alike
///                             ^ pos     ^ pos + count
///
/// Each shape caches its vertices; a change to one shape redraws that one and splices its run.
///
/// While the calibration line is shown the total lists hold that line alone, and the `pos` fields
/// match nothing. Until the next full rebuild every operation then changes the shapes only. Main
/// thread.
class ShapeList : public Shapes {
 public:
  ShapeList(OverlayContext& context, ToolState& tool)
      : context_(context), tool_(tool), drawing_(context, *this, tool) {}
  ShapeList(const ShapeList&) = delete;
  ShapeList& operator=(const ShapeList&) = delete;

  /// The shape under construction, null for none. Good until the list next changes.
  SHAPE* drawingShape() {
    return hasShape(tool_._iDrawingShape) ? &shape(tool_._iDrawingShape) : nullptr;
  }
  /// The oldest shape with a hit rectangle around `point`, -1 for none. It wins over newer ones
  /// that are drawn on top of it: meant.
  int32_t hitTest(ImagePoint point) const;

  /// Appends a shape of the tool in hand that starts at `p` and makes it `_iDrawingShape`. Draws
  /// nothing. The record is good until the list next changes.
  SHAPE& newShape(ImagePoint p);
  /// Moves the whole shape, without a limit at the image's edge, and redraws it. A pencil's `pt1`
  /// and `pt2` are meant to stay. Ignores an index that is not in range.
  void moveShape(int32_t index, int32_t dx, int32_t dy);
  /// Rebuilds one shape's vertices and splices them into the total lists. The caller checks the
  /// index.
  void redrawSelectedShape(int32_t index);
  /// Takes one shape's vertices out of the total lists, or every shape's for a negative index. The
  /// records stay.
  void redrawDeletingShape(int32_t index);

  void removeSelectedShape();
  void removeLastShape();
  void removeAllShapes();
  /// Adds a text (UTF-8) near the centre of the image; nothing for an empty one. Shapes that were
  /// selected or hovered are deselected without a redraw: they are meant to keep their handles on
  /// screen until their next one.
  void setInputText(const std::string& text);

  /// The shapes' part of a full rebuild: draws every shape and appends it to the total lists, which
  /// hold the reticle by now.
  void appendAllShapes();
  /// The total lists have been filled with something that is not the shapes.
  void totalListsWereTaken() { holdsTotalLists_ = false; }

 private:
  /// Moves the runs behind shape `index` by so many vertices.
  void moveRunsBehind(int32_t index, int32_t lines, int32_t points);

  OverlayContext& context_;
  ToolState& tool_;
  ShapeDrawing drawing_;
  bool holdsTotalLists_ = true;
};

}  // namespace tessary
