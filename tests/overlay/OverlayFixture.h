#pragma once

#include <gtest/gtest.h>

#include "FakeRasterizer.h"
#include "LogCapture.h"
#include "Vertices.h"
#include "overlay/Calibration.h"
#include "overlay/CalibrationLine.h"
#include "overlay/LinePrimitives.h"
#include "overlay/OverlayContext.h"
#include "overlay/Scale.h"
#include "overlay/TextPrimitives.h"
#include "settings/Preferences.h"

namespace tessary::test {

/// Settings that hold nothing but their defaults.
class NoStore final : public KeyValueStore {
 public:
  std::optional<Value> value(const std::string&) override { return std::nullopt; }
  void store(std::span<const Entry>) override {}
};
class NoGrants final : public FolderGrants {
 public:
  std::optional<Bytes> bookmarkData(const std::string&) const override { return std::nullopt; }
  std::optional<ResolvedFolder> resolveBookmarkData(const Bytes&) const override {
    return std::nullopt;
  }
};

/// The overlay's parts, wired as the view wires them.
class OverlayTest : public testing::Test {
 protected:
  OverlayTest() {
    preferences.gridColor = {1.0, 0.5, 0.25, 1.0};
    preferences.lineColor = {0.25, 1.0, 0.5, 1.0};
    preferences.textColor = {0.5, 0.25, 1.0, 1.0};
  }

  LogCapture log;  // the settings tell that they start empty
  NoStore store;
  UserDefaults defaults{store};
  NoGrants grants;
  Preferences preferences{defaults, grants};
  TextureSize size{640, 480};
  FakeRasterizer rasterizer;
  Calibration calibration;
  LinePrimitives lines{size};
  TextPrimitives text{rasterizer, preferences, size};
  Vertices _totalLines;
  Vertices _totalPoints;
  OverlayContext context{preferences, size, calibration, lines, text, _totalLines, _totalPoints};
  CalibrationLine calibrationLine{context};
  Scale scale{context, calibrationLine};

  const VertexColor gridColor{1.0f, 0.5f, 0.25f, 1.0f};
  const VertexColor lineColor{0.25f, 1.0f, 0.5f, 1.0f};
};

}  // namespace tessary::test
