#include "Program.h"

#include <algorithm>

#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtGui/QScreen>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>
#include <gtest/gtest.h>

#include "base/FourCharCode.h"

namespace tessary::test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  QElapsedTimer timer;
  timer.start();
  while (!condition()) {
    if (timer.elapsed() > limit.count()) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return true;
}

void xdotool(const QStringList& arguments) {
  QProcess process;
  process.start(QStringLiteral("xdotool"), arguments);
  const bool ended = waitUntil([&] { return process.state() == QProcess::NotRunning; });
  EXPECT_TRUE(ended && process.exitCode() == 0) << arguments.join(' ').toStdString();
  // What xdotool sent is in the server; one round trip brings it here.
  QElapsedTimer settle;
  settle.start();
  waitUntil([&] { return settle.elapsed() > 30; });
}

void moveTo(const QWidget& widget, QPoint position) {
  const QPoint global = widget.mapToGlobal(position);
  xdotool({"mousemove", QString::number(global.x()), QString::number(global.y())});
}

void press() { xdotool({"mousedown", "1"}); }
void release() { xdotool({"mouseup", "1"}); }

void click(const QWidget& widget, QPoint position) {
  moveTo(widget, position);
  press();
  release();
}

void click(const QWidget& widget) { click(widget, widget.rect().center()); }

void drag(const QWidget& widget, QPoint from, QPoint to) {
  moveTo(widget, from);
  press();
  moveTo(widget, (from + to) / 2);
  moveTo(widget, to);
  release();
}

void key(const char* name) { xdotool({"key", QString::fromLatin1(name)}); }

Program::Program(Start start) : platform(std::make_unique<Platform>()) {
  auto memory = std::make_unique<MemoryKeyValueStore>();
  store = memory.get();
  auto simulated = std::make_unique<SimulatedCaptureSystem>(platform->mainQueue, frameDecoders());
  microscope = simulated.get();
  const std::string uniqueID = simulated->devices().front()->uniqueID();
  if (!start.plugged) simulated->unplug();
  if (start.remembered) {
    const uint32_t type =
        std::string(start.subtype) == "dmb1" ? kMediaSubTypeMJPEG : kMediaSubTypeYUYV;
    memory->values = {{"uniqueID", uniqueID},
                      {"videoType", int64_t(type)},
                      {"width", int64_t(start.width)},
                      {"height", int64_t(start.height)}};
  }
  if (start.prepare) start.prepare(*memory);
  platform->store = std::move(memory);
  platform->captureSystem = std::move(simulated);
  if (start.furnish) start.furnish(*platform);
  delegate = std::make_unique<AppDelegate>(*platform);
  delegate->applicationDidFinishLaunching();
  EXPECT_TRUE(waitUntil([this] { return window().isActiveWindow(); }));
  // The window manager places the window after it is mapped: clicks before that would miss.
  QRect place;
  int turnsInPlace = 0;
  EXPECT_TRUE(waitUntil([&] {
    const QRect now(container().mapToGlobal(QPoint()), container().size());
    turnsInPlace = now == std::exchange(place, now) ? turnsInPlace + 1 : 0;
    return turnsInPlace > 8;
  }));
}

Program::~Program() {
  window().close();
  delegate.reset();
  gMicroscopes.clear();
  gCurrMicroscope.reset();
}

QWidget& Program::container() { return *window().centralWidget(); }

bool Program::waitForPicture() {
  return waitUntil([this] {
    const QImage image = screenshot();
    return !image.isNull() && image.pixelColor(image.width() / 2, image.height() / 4).value() > 60;
  });
}

QImage Program::screenshot() {
  const QPoint corner = container().mapToGlobal(QPoint(0, 0));
  return window()
      .screen()
      ->grabWindow(0, corner.x(), corner.y(), container().width(), container().height())
      .toImage();
}

QWidget& Program::button(const char* identifier) {
  auto* bar = find<QToolBar>("TessaryToolbar");
  for (QAction* action : bar->actions())
    if (action->objectName() == QLatin1String(identifier)) return *bar->widgetForAction(action);
  ADD_FAILURE() << "no toolbar button " << identifier;
  return *bar;
}

bool Program::isEnabled(const char* identifier) { return button(identifier).isEnabled(); }

int Program::enabledCommands() {
  return int(std::ranges::count_if(
      allCommands(), [this](const CommandInfo& info) { return isEnabled(info.identifier); }));
}

}  // namespace tessary::test

namespace {

/// The application object is made when the first test runs, so that listing needs no display.
class ApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    application_ = tessary::makeApplication(argc_, argv_, "tessary-test");
    QApplication::setQuitOnLastWindowClosed(false);
  }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[8] = "ui_test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};

const auto* const s_environment = ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace
