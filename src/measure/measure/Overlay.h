#pragma once

#include <cstdint>

#include "measure/MouseInteraction.h"
#include "measure/OverlayRedraw.h"
#include "measure/ShapeList.h"
#include "measure/ToolState.h"
#include "overlay/CalibrationLine.h"
#include "overlay/OverlayContext.h"
#include "overlay/Scale.h"
#include "preview/OverlayVertices.h"
#include "preview/ViewGeometry.h"

namespace tessary {

/// Everything that lies over the picture: what it is drawn with, the reticles, the calibration
/// line, the shapes, and the mouse that makes and moves them. Its parts are open to whoever owns
/// it; what concerns several of them is an operation of its own. Main thread.
class Overlay {
  ViewGeometry& geometry_;  // first: the mouse is made with it

 public:
  /// All are borrowed. `cvTextureSize` is the size of the current frame.
  Overlay(const Preferences& preferences, const TextureSize& cvTextureSize,
          TextRasterizer& rasterizer, ViewGeometry& geometry)
      : geometry_(geometry), context(preferences, cvTextureSize, rasterizer) {}

  /// Shows a reticle, one of the scale types.
  void changeScale(int32_t scaleType);
  /// Puts a calibration into force, `kUncalibrated` for none. Returns to 100 percent.
  void setCalibration(float pixelsPerUnit, int32_t unit);
  /// Shows the calibration line, in the middle of what is visible. Returns to 100 percent.
  void startCalibration();
  /// Takes it away again. Returns to 100 percent.
  void stopCalibration();
  /// Takes a tool in hand, and returns to 100 percent, the only zoom at which shapes are made.
  void changeOperation(int32_t op);
  /// The picture is gone, and with it calibration and calibration line. Redraws nothing.
  void stopPreview();
  /// Rebuilds all vertices from nothing.
  void redrawLinesAndPoints() { redraw.redrawLinesAndPoints(); }

  bool isEmpty() const { return context._totalLines.count == 0 && context._totalPoints.count == 0; }
  /// Good until the next change.
  OverlayVertices vertices() const {
    return {context._totalLines.elements(), context._totalPoints.elements(), context.revision};
  }

  OverlayContext context;
  ToolState tool;
  CalibrationLine calibrationLine{context};
  Scale scale{context, calibrationLine};
  ShapeList shapes{context, tool};
  OverlayRedraw redraw{context, scale, calibrationLine, shapes};
  MouseInteraction mouse{tool, shapes, calibrationLine, geometry_, redraw};
};

}  // namespace tessary
