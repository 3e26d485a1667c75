// What one event of the mouse costs while shapes with labels lie over the picture, and what a full
// rebuild does. The second argument tells what draws the labels: 0 for plain blocks of about as
// many pixels, which leaves this program's own work, 1 for the real letters.

#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "FakeViewHost.h"
#include "MemoryKeyValueStore.h"
#include "NoGrants.h"
#include "base/Log.h"
#include "measure/Overlay.h"
#include "qt/QtTextRasterizer.h"
#include "settings/Preferences.h"

namespace tessary {
namespace {

constexpr TextureSize kFrame{1920, 1080};

class BlockRasterizer final : public TextRasterizer {
 public:
  Size imageBounds(const std::string& text, const Font& font) override {
    return {double(text.size()) * font.pixelSize / 2, double(font.pixelSize)};
  }
  void drawLine(const std::string& text, const Font& font, const Color&, double x, double baseline,
                const Bitmap& bitmap) override {
    const int32_t bottom = bitmap.height - int32_t(baseline);
    const int32_t width = int32_t(text.size()) * font.pixelSize / 2;
    for (int32_t y = bottom - font.pixelSize * 3 / 4; y < bottom; ++y) {
      uint8_t* pixel = bitmap.data + y * bitmap.bytesPerRow + int32_t(x) * 4;
      for (int32_t c = 0; c < width; c += 3, pixel += 12) std::fill_n(pixel, 4, uint8_t{200});
    }
  }
};

/// The overlay under a calibration, with so many labelled lines, the first one at (50, 60).
struct Desk {
  explicit Desk(benchmark::State& state) : isReal(state.range(1) != 0) {
    preferences.lineColor = preferences.textColor = {0.0, 0.9, 0.9, 1.0};
    preferences.font = {26};
    host.container = {1920, 1080};
    geometry.frameSizeDidChange(texture);
    geometry.zoomTo(-1);
    overlay.setCalibration(3.7f, kUnitMillimetre);
    const auto count = int32_t(state.range(0));
    for (int32_t i = 0; i < count; ++i) {
      tool._opr1 = kOprLine;
      const ImagePoint from{50.0 + i % 12 * 150, 60.0 + i / 12 % 20 * 50};
      mouse.mouseDown({from.x, from.y}, {});
      mouse.mouseDragged({from.x + 100, from.y + 30}, {});
      mouse.mouseUp({from.x + 100, from.y + 30});
    }
    state.counters["points"] = double(overlay.context._totalPoints.count);
  }

  bool isReal;
  LogRedirection quiet{[](std::string_view) {}};
  test::MemoryKeyValueStore store;
  UserDefaults defaults{store};
  test::NoGrants grants;
  Preferences preferences{defaults, grants};
  TextureSize texture = kFrame;
  test::FakeViewHost host;
  ViewGeometry geometry{host, texture};
  BlockRasterizer blocks;
  QtTextRasterizer letters;
  TextRasterizer& rasterizer = isReal ? static_cast<TextRasterizer&>(letters) : blocks;
  Overlay overlay{preferences, texture, rasterizer, geometry};
  ToolState& tool = overlay.tool;
  ShapeList& shapes = overlay.shapes;
  MouseInteraction& mouse = overlay.mouse;
};

void redrawSelectedShape(benchmark::State& state) {
  Desk desk(state);
  desk.tool._iSelectedShape = 0;
  for ([[maybe_unused]] auto _ : state) desk.shapes.redrawSelectedShape(0);
}

/// One event of a drag that moves the oldest shape, whose runs lie before all others.
void dragAShape(benchmark::State& state) {
  Desk desk(state);
  desk.mouse.mouseDown({50, 60}, {0, 0});
  double x = 0;
  for ([[maybe_unused]] auto _ : state) {
    x = x < 200 ? x + 1 : 0;
    desk.mouse.mouseDragged({50 + x, 60}, {x, 0});
  }
  if (desk.tool._iSelectedShape != 0) state.SkipWithError("no shape was selected");
}

/// Drawing a line out: its label changes its width with every event.
void drawAShape(benchmark::State& state) {
  Desk desk(state);
  desk.tool._opr1 = kOprLine;
  desk.mouse.mouseDown({900, 500}, {});
  double x = 0;
  for ([[maybe_unused]] auto _ : state) {
    x = x < 800 ? x + 7 : 0;
    desk.mouse.mouseDragged({900 + x, 520}, {});
  }
}

/// The mouse onto and off the oldest shape in turns: its frames move all runs behind it.
void hoverAShape(benchmark::State& state) {
  Desk desk(state);
  bool on = false;
  for ([[maybe_unused]] auto _ : state) {
    on = !on;
    desk.mouse.mouseMoved(on ? ViewPoint{50, 60} : ViewPoint{5, 5});
  }
}

void redrawLinesAndPoints(benchmark::State& state) {
  Desk desk(state);
  desk.overlay.changeScale(kScaleCrosshair);
  for ([[maybe_unused]] auto _ : state) desk.overlay.redrawLinesAndPoints();
}

void shapesAndLetters(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"shapes", "letters"})
      ->ArgsProduct({{10, 100, 1000}, {0, 1}})
      ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(redrawSelectedShape)->Apply(shapesAndLetters);
BENCHMARK(dragAShape)->Apply(shapesAndLetters);
BENCHMARK(drawAShape)->Apply(shapesAndLetters);
BENCHMARK(hoverAShape)->Apply(shapesAndLetters);
BENCHMARK(redrawLinesAndPoints)
    ->ArgNames({"shapes", "letters"})
    ->ArgsProduct({{100}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  const QGuiApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
