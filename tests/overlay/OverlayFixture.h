#pragma once

#include <gtest/gtest.h>

#include "FakeRasterizer.h"
#include "LogCapture.h"
#include "MemoryKeyValueStore.h"
#include "NoGrants.h"
#include "Vertices.h"
#include "overlay/Calibration.h"
#include "overlay/CalibrationLine.h"
#include "overlay/LinePrimitives.h"
#include "overlay/OverlayContext.h"
#include "overlay/Scale.h"
#include "overlay/TextPrimitives.h"
#include "settings/Preferences.h"

namespace tessary::test {

/// What the overlay is drawn with and into, and the two parts of it that need nothing else.
class OverlayTest : public testing::Test {
 protected:
  OverlayTest() {
    preferences.gridColor = {1.0, 0.5, 0.25, 1.0};
    preferences.lineColor = {0.25, 1.0, 0.5, 1.0};
    preferences.textColor = {0.5, 0.25, 1.0, 1.0};
  }

  LogCapture log;  // the settings tell that they start empty
  MemoryKeyValueStore store;
  UserDefaults defaults{store};
  NoGrants grants;
  Preferences preferences{defaults, grants};
  TextureSize size{640, 480};
  FakeRasterizer rasterizer;
  OverlayContext context{preferences, size, rasterizer};
  Calibration& calibration = context.calibration;
  const LinePrimitives& lines = context.lines;
  TextPrimitives& text = context.text;
  Vertices& _totalLines = context._totalLines;
  Vertices& _totalPoints = context._totalPoints;
  CalibrationLine calibrationLine{context};
  Scale scale{context, calibrationLine};

  const VertexColor gridColor{1.0f, 0.5f, 0.25f, 1.0f};
  const VertexColor lineColor{0.25f, 1.0f, 0.5f, 1.0f};
};

}  // namespace tessary::test
