// The window and the screen that it is on; run on screens of several sizes.

#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <thread>

#include <QtCore/QTimer>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "Program.h"

namespace tessary::test {
namespace {

constexpr int kTopPanel = 40;
constexpr int kBottomPanel = 30;

/// A desktop's panel, along the whole of an edge of the screen.
class Panel final : public QWidget {
 public:
  Panel(Qt::Edge edge, int height) : edge_(edge) {
    setAttribute(Qt::WA_X11NetWmWindowTypeDock);
    const QRect all = screen()->geometry();
    setGeometry(0, edge == Qt::TopEdge ? 0 : all.height() - height, all.width(), height);
    // Left, right, top, bottom; and from where to where along each.
    std::array<uint32_t, 12> room{};
    room[edge == Qt::TopEdge ? 2 : 3] = uint32_t(height);
    room[edge == Qt::TopEdge ? 9 : 11] = uint32_t(all.width() - 1);
    xcb_connection_t* display =
        qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    constexpr std::string_view kName = "_NET_WM_STRUT_PARTIAL";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(display, xcb_intern_atom(display, 0, kName.size(), kName.data()),
                              nullptr),
        std::free);
    xcb_change_property(display, XCB_PROP_MODE_REPLACE, xcb_window_t(winId()), atom->atom,
                        XCB_ATOM_CARDINAL, 32, room.size(), room.data());
    show();
  }
  /// The next window that opens finds its room again.
  ~Panel() override {
    hide();
    EXPECT_TRUE(waitUntil([this] {
      const QRect room = screen()->availableGeometry();
      const QRect all = screen()->geometry();
      return edge_ == Qt::TopEdge ? room.top() == all.top() : room.bottom() == all.bottom();
    }));
  }

 private:
  const Qt::Edge edge_;
};

QRect frameOnDisplay(const QWidget& window) {
  return placeOnDisplay(window).value_or(QRect()).marginsAdded(
      window.windowHandle()->frameMargins());
}

/// Whether the window has come to lie within the part of the screen that is for windows, and shows
/// as much of its picture as goes there.
::testing::AssertionResult showsWhatItCan(Program& program, QSize picture) {
  const QWidget& window = program.window();
  QRect frame;
  const auto isWithin = [&] {
    frame = frameOnDisplay(window);
    return isInItsPlace(window) && window.screen()->availableGeometry().contains(frame);
  };
  const bool within = waitUntil(isWithin, std::chrono::seconds(5));
  const QRect room = window.screen()->availableGeometry();
  const QSize shown = program.container().size();
  if (within && (shown.width() == picture.width() || frame.right() == room.right()) &&
      (shown.height() == picture.height() || frame.bottom() == room.bottom()))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "frame to " << frame.right() << ", " << frame.bottom() << ", room to " << room.right()
         << ", " << room.bottom() << ", picture " << shown.width() << "x" << shown.height();
}

constexpr QSize kPictures[] = {{1280, 720}, {1920, 1080}};

TEST(Screen, TheFirstPictureLeavesTheWindowWithinIt) {
  for (const QSize picture : kPictures) {
    Program program(Start{.width = picture.width(), .height = picture.height()});
    ASSERT_TRUE(program.waitForPicture());
    EXPECT_TRUE(showsWhatItCan(program, picture)) << picture.width();
    QSlider& zoom = program.slider("zoomSlider");
    click(zoom, {6, zoom.height() / 2 - 3});
    EXPECT_TRUE(waitUntil([&] { return zoom.value() < kZoom100; })) << "it can be reached";
  }
}

/// The window manager handles nothing for a while, as it does on a busy machine.
class SlowWindowManager {
 public:
  explicit SlowWindowManager(std::chrono::milliseconds pause) {
    kill(pid_, SIGSTOP);
    QTimer::singleShot(pause, &goesOn_, [this] { goOn(); });
    // Stopped while the display is its own it would hold up this program's timer, too.
    rescue_ = std::jthread([this](const std::stop_token& stop) {
      std::unique_lock lock(mutex_);
      ended_.wait_for(lock, stop, std::chrono::seconds(3), [] { return false; });
      goOn();
    });
  }

 private:
  void goOn() const { kill(pid_, SIGCONT); }

  const pid_t pid_ = qEnvironmentVariableIntValue("WINDOW_MANAGER_PID");
  QObject goesOn_;
  std::mutex mutex_;
  std::condition_variable_any ended_;
  std::jthread rescue_;  // its end goes on, too
};

TEST(Screen, HoweverSlowTheWindowManagerTheWindowComesToTheSamePlace) {
  ASSERT_GT(qEnvironmentVariableIntValue("WINDOW_MANAGER_PID"), 0);
  const QScreen& screen = *QGuiApplication::primaryScreen();
  ASSERT_TRUE(waitUntil([&] { return screen.availableGeometry() == screen.geometry(); }));
  std::optional<QRect> usual;
  for (const int milliseconds : {0, 20, 100, 500}) {
    const SlowWindowManager windowManager{std::chrono::milliseconds(milliseconds)};
    Program program;
    ASSERT_TRUE(program.waitForPicture());
    QRect place;
    EXPECT_TRUE(waitUntil([&] {
      place = frameOnDisplay(program.window());
      return place.top() == 25 && place == usual.value_or(place);
    })) << milliseconds
        << ": " << place.x() << ", " << place.y() << " " << place.width() << "x" << place.height();
    usual = place;
  }
}

TEST(Screen, PanelsStayFree) {
  const Panel top(Qt::TopEdge, kTopPanel);
  const Panel bottom(Qt::BottomEdge, kBottomPanel);
  const QScreen& screen = *top.screen();
  ASSERT_TRUE(waitUntil([&] {
    return screen.availableGeometry() == screen.geometry().adjusted(0, kTopPanel, 0, -kBottomPanel);
  }));
  for (const QSize picture : kPictures) {
    Program program(Start{.width = picture.width(), .height = picture.height()});
    ASSERT_TRUE(program.waitForPicture());
    EXPECT_TRUE(showsWhatItCan(program, picture)) << picture.width();
  }
}

TEST(Screen, AWindowNearItsCornerMakesRoomForANewPicture) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  QWidget& window = program.window();
  const QSize room = window.screen()->availableGeometry().size();
  const QPoint corner(room.width() - 500, room.height() - 300);
  window.move(corner);
  ASSERT_TRUE(waitUntil([&] { return frameOnDisplay(window).topLeft() == corner; }));
  const auto replug = [&] {
    program.microscope->unplug();
    ASSERT_TRUE(waitUntil([&] { return !gCurrMicroscope; }));
    program.microscope->plug();
    ASSERT_TRUE(program.waitForPicture());
    EXPECT_TRUE(showsWhatItCan(program, {640, 480}));
  };
  replug();
  const QRect place = frameOnDisplay(window);
  EXPECT_NEAR(place.left(), corner.x(), 10) << "as far as its frame needs";
  EXPECT_LT(place.top(), corner.y()) << "or too little of it would be left";
  replug();
  EXPECT_EQ(frameOnDisplay(window), place) << "it doesn't creep";
}

}  // namespace
}  // namespace tessary::test
