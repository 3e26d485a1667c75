#pragma once

#include <cstdint>

#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "overlay/Calibration.h"
#include "overlay/LinePrimitives.h"
#include "overlay/MyDataArray.h"
#include "overlay/TextPrimitives.h"

namespace tessary {

class Preferences;

/// What the overlay is drawn with and into. Whatever draws a part of it borrows this one. Main
/// thread.
struct OverlayContext {
  /// All three are borrowed, and read whenever something is drawn.
  OverlayContext(const Preferences& borrowedPreferences, const TextureSize& textureSize,
                 TextRasterizer& rasterizer)
      : preferences(borrowedPreferences),
        cvTextureSize(textureSize),
        text(rasterizer, borrowedPreferences, textureSize) {}
  OverlayContext(const OverlayContext&) = delete;
  OverlayContext& operator=(const OverlayContext&) = delete;

  /// Whoever has changed the total lists says so, or the change is not composed.
  void totalListsDidChange() { ++revision; }

  const Preferences& preferences;
  const TextureSize& cvTextureSize;
  Calibration calibration;
  const LinePrimitives lines{cvTextureSize};
  TextPrimitives text;
  MyDataArray<PointVertex> _totalLines;
  MyDataArray<PointVertex> _totalPoints;
  uint64_t revision = 0;  ///< Counts the changes of the two total lists.
};

}  // namespace tessary
