#include "Program.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtGui/QCursor>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>
#include <gtest/gtest.h>

namespace tessary::test {
namespace {

/// Counts what the display sends to the program's windows.
class InputWatch final : public QObject {
 public:
  qsizetype events = 0;  ///< Presses and releases of the left button, and presses of keys.

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    const bool isButton = event->type() == QEvent::MouseButtonPress ||
                          event->type() == QEvent::MouseButtonDblClick ||
                          event->type() == QEvent::MouseButtonRelease;
    if (!watched->isWindowType()) return false;
    if (isButton && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) ++events;
    // A key that is a shortcut is pressed for nobody; whoever wants it for himself is asked first.
    if (event->type() == QEvent::ShortcutOverride) ++events;
    return false;
  }
};

InputWatch* s_input = nullptr;

/// How many of the events that are counted come of these arguments of xdotool, at the least.
qsizetype inputEvents(const QStringList& arguments) {
  qsizetype count = 0;
  for (qsizetype i = 0; i + 1 < arguments.size(); ++i) {
    const QString& command = arguments[i];
    const QString& what = arguments[i + 1];
    if (command == "key") count += what.count('+') + 1;
    if (command == "type") count += arguments.last().size();
    if (command == "mousedown" || command == "mouseup") count += what == "1";
  }
  return count;
}

}  // namespace

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

void minimize(QWidget& window) {
  window.showMinimized();
  EXPECT_TRUE(waitUntil([&] { return !placeOnDisplay(window); }));
}

void xdotool(const QStringList& arguments) {
  const qsizetype before = s_input->events;
  QProcess process;
  process.start(QStringLiteral("xdotool"), arguments);
  const bool ended = waitUntil([&] { return process.state() == QProcess::NotRunning; });
  EXPECT_TRUE(ended && process.exitCode() == 0) << arguments.join(' ').toStdString();
  // They come by way of the window manager; none comes to a window that is blocked.
  waitUntil([&] { return s_input->events - before >= inputEvents(arguments); },
            std::chrono::seconds(2));
  // What else xdotool sent is in the server; one round trip brings it here.
  QElapsedTimer settle;
  settle.start();
  waitUntil([&] { return settle.elapsed() > 30; });
}

namespace {

/// Until one of the program's windows has the keyboard, the dialog if one is up: a hand is slower
/// than the window manager, which would otherwise meet the next press while it hands the keyboard
/// from one to another. What pops up has taken it for itself.
void waitForKeyboard() {
  EXPECT_TRUE(waitUntil([] {
    if (QApplication::activePopupWidget()) return true;
    const QWidget* dialog = QApplication::activeModalWidget();
    const QWidget* active = dialog ? dialog : QApplication::activeWindow();
    return active && active->isVisible() && hasKeyboard(*active);
  })) << "no window of the program has the keyboard";
}

}  // namespace

void xdotoolAtOnce(const QStringList& arguments) {
  EXPECT_EQ(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
}

void moveTo(const QWidget& widget, QPoint position) {
  moveToPixel(widget, (QPointF(position) * widget.devicePixelRatio()).toPoint());
}

void moveToPixel(const QWidget& widget, QPoint pixel) {
  waitForKeyboard();
  waitForPlace(*widget.window());
  const QPoint place = onDisplay(widget, QPoint(0, 0)) + pixel;
  xdotool({"mousemove", QString::number(place.x()), QString::number(place.y())});
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

void key(const char* name) {
  waitForKeyboard();
  xdotool({"key", QString::fromLatin1(name)});
}

QMenu* openMenu(const char* letter) {
  key(("alt+" + std::string(letter)).c_str());
  const auto menu = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
  return waitUntil([&] { return menu() != nullptr; }) ? menu() : nullptr;
}

QWidget* waitForWindow(const char* title) {
  const bool isThere = waitUntil([&] {
    const QWidget* active = QApplication::activeWindow();
    return active && active->windowTitle() == title && hasKeyboard(*active);
  });
  return isThere ? QApplication::activeWindow() : nullptr;
}

QWidget* openByKey(const std::vector<const char*>& names, const char* title) {
  const QWidget* last = nullptr;
  for (const char* name : names) {
    const auto hasNext = [&] { return QApplication::activeWindow() != last; };
    if (!waitUntil(hasNext)) return nullptr;
    last = QApplication::activeWindow();
    key(name);
  }
  return waitForWindow(title);
}

Program::Program(Start start) : platform(std::make_unique<Platform>()) {
  auto memory = std::make_unique<MemoryKeyValueStore>();
  store = memory.get();
  auto simulated = std::make_unique<SimulatedCaptureSystem>(platform->mainQueue, frameDecoders(),
                                                            cameraEncoder(), start.offered);
  microscope = simulated.get();
  const std::string uniqueID = simulated->devices().front()->uniqueID();
  if (!start.plugged) simulated->unplug();
  if (start.remembered) {
    memory->values = {{"uniqueID", uniqueID},
                      {"videoType", int64_t(start.subtype)},
                      {"width", int64_t(start.width)},
                      {"height", int64_t(start.height)}};
  }
  if (start.prepare) start.prepare(*memory);
  platform->store = std::move(memory);
  platform->captureSystem = std::move(simulated);
  if (qgetenv("TESSARY_TEST_RENDERER") == "opengl") platform->renderer = Renderer::kOpenGl;
  if (start.furnish) start.furnish(*platform);
  delegate = std::make_unique<AppDelegate>(*platform);
  delegate->applicationDidFinishLaunching();
  EXPECT_TRUE(waitUntil([this] { return hasKeyboard(window()); }));
  // The window manager places the window after it is mapped: clicks before that would miss.
  waitForPlace(window());
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
    // Or it would be another part of the display that is looked at.
    if (!isInItsPlace(window())) return false;
    // The commands hear of a picture at the end of that turn: a click before that would be lost.
    if (!QApplication::activeModalWidget() && !isEnabled("Crosshair Item Identifier")) return false;
    const QImage image = screenshot();
    return !image.isNull() && image.pixelColor(image.width() / 2, image.height() / 4).value() > 60;
  });
}

QImage Program::screenshot() { return displayed(container()); }

QWidget& Program::button(const char* identifier) {
  auto* bar = find<QToolBar>("TessaryToolbar");
  for (QAction* action : bar->actions())
    if (action->objectName() == QLatin1String(identifier)) return *bar->widgetForAction(action);
  ADD_FAILURE() << "no toolbar button " << identifier;
  return *bar;
}

bool Program::isEnabled(const char* identifier) { return button(identifier).isEnabled(); }

int Program::enabledCommands() {
  return int(
      std::ranges::count_if(find<QToolBar>("TessaryToolbar")->actions(), [](const QAction* action) {
        return !action->objectName().isEmpty() && action->isEnabled();
      }));
}

}  // namespace tessary::test

namespace {

/// Leaves a picture of the display as a test first failed on it.
class ScreenshotOfFailure final : public ::testing::EmptyTestEventListener {
 public:
  explicit ScreenshotOfFailure(QString folder) : folder_(std::move(folder)) {}

  void OnTestStart(const ::testing::TestInfo& test) override {
    QString name = QString("%1.%2").arg(test.test_suite_name(), test.name());
    file_ = folder_ + "/failed-" + name.replace('/', '-') + ".png";
  }
  void OnTestPartResult(const ::testing::TestPartResult& result) override {
    const QString file = result.failed() ? std::exchange(file_, {}) : QString();
    if (file.isEmpty()) return;
    QDir().mkpath(folder_);
    QProcess::execute("import", {"-silent", "-window", "root", file});
    const QPoint pointer = QCursor::pos();
    printf("The display then: %s, the pointer at %d, %d\n", qPrintable(file), pointer.x(),
           pointer.y());
  }

 private:
  const QString folder_;
  QString file_;  ///< Of the current test, until it is taken.
};

/// The application object is made when the first test runs, so that listing needs no display.
class ApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    application_ = tessary::makeApplication(argc_, argv_, "tessary-test");
    QApplication::setQuitOnLastWindowClosed(false);
    tessary::test::s_input = new tessary::test::InputWatch;
    tessary::test::s_input->setParent(application_.get());
    application_->installEventFilter(tessary::test::s_input);
    ::testing::UnitTest::GetInstance()->listeners().Append(
        new ScreenshotOfFailure(QCoreApplication::applicationDirPath() + "/screenshots"));
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
