// The longest time that the main thread of the whole program, live at 1920 by 1080, answers
// nothing: while a still is saved (and from the Space key to the whole file under its name), and
// while a slider of the camera's controls is dragged; beside the longest in as much time without.
// Needs a display:
//
//   tests/ui/with_display build/release/bench/pause_bench [rounds]

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QSlider>
#include <fmt/format.h>

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "base/FourCharCode.h"
#include "base/Log.h"
#include "base/Number.h"
#include "qt/QtKeyValueStore.h"
#include "settings/Preferences.h"
#include "simulated/SimulatedCaptureSystem.h"
#include "ui/CameraControlsWindow.h"
#include "ui/PreviewWindowController.h"

namespace tessary {
namespace {

using std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr TextureSize kSize{1920, 1080};
constexpr Milliseconds kBetweenStills(400);
constexpr Milliseconds kBetweenSteps(20);  // of a slider under a hand
constexpr Milliseconds kPatience(20000);

/// Runs the event loop, in which a timer of 1 ms shows how long nothing else could run.
class MainThread {
 public:
  MainThread() {
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1);
    QObject::connect(&timer_, &QTimer::timeout, [this] { turn(); });
    timer_.start();
  }

  /// Until `condition` holds, asked at each turn of the loop. The program ends if it never does.
  void runUntil(const std::function<bool()>& condition) {
    const auto begin = steady_clock::now();
    while (!condition()) {
      if (steady_clock::now() - begin > kPatience) {
        fmt::print(stderr, "still waiting after {} ms\n", kPatience.count());
        std::exit(1);
      }
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
  }
  void runFor(Milliseconds time) {
    const auto begin = steady_clock::now();
    runUntil([&] { return steady_clock::now() - begin >= time; });
  }
  /// The longest pause since it was last asked.
  double takeLongestPause() { return std::exchange(longest_, Milliseconds(0)).count(); }

 private:
  void turn() {
    const auto now = steady_clock::now();
    longest_ = std::max(longest_, Milliseconds(now - last_));
    last_ = now;
  }

  QTimer timer_;
  steady_clock::time_point last_ = steady_clock::now();
  Milliseconds longest_{0};
};

size_t filesIn(const std::filesystem::path& folder, const std::string& extension) {
  return size_t(std::ranges::count_if(std::filesystem::directory_iterator(folder),
                                      [&](const std::filesystem::directory_entry& entry) {
                                        return entry.path().extension() == extension &&
                                               entry.file_size() > 0;
                                      }));
}

void printRow(const std::string& name, std::vector<double> values) {
  std::ranges::sort(values);
  fmt::print("{:44}{:9.1f}{:9.1f}{:9.1f}\n", name, values.front(), values[values.size() / 2],
             values.back());
}

void benchStills(MainThread& mainThread, const std::filesystem::path& folder, int32_t imagePNG,
                 int rounds) {
  const std::string format = imagePNG != 0 ? "PNG" : "JPEG";
  const std::string extension = imagePNG != 0 ? ".png" : ".jpg";
  gPreferences->imagePNG = imagePNG;
  QWidget& window = gPreviewWindowController->window();
  std::vector<double> keyToFile, pauseWith, pauseWithout;
  for (int round = 0; round < rounds; ++round) {
    mainThread.takeLongestPause();
    mainThread.runFor(kBetweenStills);
    pauseWithout.push_back(mainThread.takeLongestPause());
    const size_t before = filesIn(folder, extension);
    const auto begin = steady_clock::now();
    QCoreApplication::postEvent(
        &window, new QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " "));
    mainThread.runUntil([&] { return filesIn(folder, extension) > before; });
    keyToFile.push_back(Milliseconds(steady_clock::now() - begin).count());
    mainThread.runFor(kBetweenStills);  // with the notice that comes up
    pauseWith.push_back(mainThread.takeLongestPause());
  }
  printRow(format + ", key to whole file", keyToFile);
  printRow(format + ", longest pause", pauseWith);
  printRow("the same without a still", pauseWithout);
}

/// The slider of the camera's brightness in the window of its controls.
QSlider& openControls(MainThread& mainThread) {
  MainWindow& window = gPreviewWindowController->window();
  for (const QAction* menu : window.menuBar()->actions())
    for (QAction* action : menu->menu()->actions())
      if (action->text().remove('&').startsWith("Camera Controls")) action->trigger();
  QSlider* slider = nullptr;
  mainThread.runUntil([&] {
    const auto* controls = window.findChild<CameraControlsWindow*>();
    const auto sliders = controls ? controls->findChildren<QSlider*>() : QList<QSlider*>();
    for (QSlider* each : sliders)
      if (each->isVisible() && each->isEnabled()) slider = each;
    return slider != nullptr;
  });
  return *slider;
}

void benchControls(MainThread& mainThread, int rounds) {
  QSlider& slider = openControls(mainThread);
  mainThread.runFor(Milliseconds(1000));
  constexpr int kSteps = 20;
  std::vector<double> pauseWith, pauseWithout;
  for (int round = 0; round < rounds; ++round) {
    mainThread.takeLongestPause();
    mainThread.runFor(kSteps * kBetweenSteps);
    pauseWithout.push_back(mainThread.takeLongestPause());
    for (int step = 0; step < kSteps; ++step) {
      const int way = slider.maximum() - slider.minimum();
      slider.setValue(slider.minimum() + (round * kSteps + step) * 7 % (way + 1));
      mainThread.runFor(kBetweenSteps);
    }
    pauseWith.push_back(mainThread.takeLongestPause());
  }
  printRow("a control dragged, longest pause", pauseWith);
  printRow("the same without", pauseWithout);
}

void run(const std::filesystem::path& folder, int rounds) {
  Platform platform;
  auto simulated = std::make_unique<SimulatedCaptureSystem>(platform.mainQueue, frameDecoders(),
                                                            cameraEncoder());
  platform.store = std::make_unique<QtKeyValueStore>(folder / "settings.ini");
  platform.defaults = {{"uniqueID", simulated->devices().front()->uniqueID()},
                       {"videoType", int64_t(kMediaSubTypeMJPEG)},
                       {"width", int64_t(kSize.width)},
                       {"height", int64_t(kSize.height)}};
  platform.captureSystem = std::move(simulated);
  AppDelegate delegate(platform);
  delegate.applicationDidFinishLaunching();
  gPreferences->url = folder;

  MainThread mainThread;
  const PreviewView& view = gPreviewWindowController->getPreviewView();
  mainThread.runUntil([&] { return view.bitmapWidth() == kSize.width; });
  mainThread.runFor(Milliseconds(3000));  // it makes its pictures first
  fmt::print("{}x{}, live at {:.0f} frames a second, {} rounds\n", kSize.width, kSize.height,
             view.videoFrameRate(), rounds);
  fmt::print("{:44}{:>9}{:>9}{:>9}\n", "milliseconds", "least", "median", "most");
  for (const int32_t imagePNG : {0, 1}) benchStills(mainThread, folder, imagePNG, rounds);
  benchControls(mainThread, rounds);
}

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(tessary::intValue(argv[1]), 1) : 20;
  const auto application = tessary::makeApplication(argc, argv, "pause-bench");
  const tessary::LogRedirection quiet{[](std::string_view) {}};
  std::string folder = std::filesystem::temp_directory_path() / "tessary-bench-XXXXXX";
  if (!mkdtemp(folder.data())) return 1;
  tessary::run(folder, rounds);
  std::filesystem::remove_all(folder);
}
