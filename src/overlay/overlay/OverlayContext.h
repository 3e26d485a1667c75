#pragma once

#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/Calibration.h"
#include "overlay/LinePrimitives.h"
#include "overlay/MyDataArray.h"
#include "overlay/TextPrimitives.h"

namespace tessary {

class Preferences;

/// What the overlay is drawn with and into, borrowed from the view, which owns all of it and
/// outlives whoever holds this. Main thread.
struct OverlayContext {
  const Preferences& preferences;
  const TextureSize& cvTextureSize;
  const Calibration& calibration;
  const LinePrimitives& lines;
  TextPrimitives& text;
  MyDataArray<PointVertex>& _totalLines;
  MyDataArray<PointVertex>& _totalPoints;
};

}  // namespace tessary
