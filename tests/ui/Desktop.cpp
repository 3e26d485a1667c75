#include "Desktop.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolBar>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "Program.h"

namespace tessary::test {
namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

/// The program's own connection under X11. Under Wayland another one, to the display that the
/// compositor covers.
xcb_connection_t* display() {
  if (auto* native = qApp->nativeInterface<QNativeInterface::QX11Application>())
    return native->connection();
  static const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> s_own(
      xcb_connect(nullptr, nullptr), &xcb_disconnect);
  return s_own.get();
}

xcb_screen_t& root() { return *xcb_setup_roots_iterator(xcb_get_setup(display())).data; }

xcb_atom_t atomOf(std::string_view name) {
  const Reply<xcb_intern_atom_reply_t> atom(
      xcb_intern_atom_reply(
          display(), xcb_intern_atom(display(), 0, uint16_t(name.size()), name.data()), nullptr),
      std::free);
  return atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);
}

/// The first 32 bits of a window's property, nothing where it has none.
std::optional<uint32_t> propertyOf(xcb_window_t window, std::string_view name, xcb_atom_t type) {
  const Reply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(
          display(), xcb_get_property(display(), 0, window, atomOf(name), type, 0, 1), nullptr),
      std::free);
  if (!reply || xcb_get_property_value_length(reply.get()) != sizeof(uint32_t)) return {};
  return *static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
}

/// Waits until the window manager has come to all that it was asked for before, by asking for one
/// thing more: the frame that a window would get which never shows.
bool windowManagerIsDone() {
  constexpr std::string_view kAnswer = "_NET_FRAME_EXTENTS";
  static const xcb_window_t s_window = [] {
    const xcb_window_t window = xcb_generate_id(display());
    xcb_create_window(display(), XCB_COPY_FROM_PARENT, window, root().root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
  }();
  xcb_delete_property(display(), s_window, atomOf(kAnswer));
  xcb_client_message_event_t asks{};
  asks.response_type = XCB_CLIENT_MESSAGE;
  asks.format = 32;
  asks.window = s_window;
  asks.type = atomOf("_NET_REQUEST_FRAME_EXTENTS");
  xcb_send_event(display(), 0, root().root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&asks));
  return waitUntil([&] { return propertyOf(s_window, kAnswer, XCB_ATOM_CARDINAL).has_value(); });
}

/// What is there on the display that the compositor covers.
QImage displayPart(const QRect& place) {
  const QRect area = place & QRect(0, 0, root().width_in_pixels, root().height_in_pixels);
  const Reply<xcb_get_image_reply_t> reply(
      xcb_get_image_reply(
          display(),
          xcb_get_image(display(), XCB_IMAGE_FORMAT_Z_PIXMAP, root().root, int16_t(area.x()),
                        int16_t(area.y()), uint16_t(area.width()), uint16_t(area.height()), ~0U),
          nullptr),
      std::free);
  if (!reply || reply->depth != 24) return {};
  QImage image(area.size(), QImage::Format_RGB32);
  std::memcpy(image.bits(), xcb_get_image_data(reply.get()),
              size_t(xcb_get_image_data_length(reply.get())));
  return image;
}

/// A row of pixels of a window by which it can be told.
struct Strip {
  QPoint place;  ///< In the window.
  std::vector<QRgb> pixels;
};

constexpr int kStripLength = 40;
constexpr int kFewestColours = 8;
constexpr size_t kMostStrips = 16;
constexpr int kVotes = 3;

/// The most colourful row in each band of eight, longest texts first.
std::vector<Strip> stripsOf(const QImage& image, QPoint origin) {
  std::vector<std::pair<size_t, Strip>> found;
  for (int band = 0; band < image.height(); band += 8) {
    size_t most = 0;
    Strip best;
    for (int y = band; y < std::min(band + 8, image.height()); ++y) {
      const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
      for (int x = 0; x + kStripLength <= image.width(); x += kStripLength / 2) {
        const size_t colours = std::set<QRgb>(row + x, row + x + kStripLength).size();
        if (colours <= most) continue;
        most = colours;
        best = {origin + QPoint(x, y), {row + x, row + x + kStripLength}};
      }
    }
    if (most >= kFewestColours) found.emplace_back(most, std::move(best));
  }
  std::ranges::stable_sort(found, std::greater<>(), &std::pair<size_t, Strip>::first);
  found.resize(std::min(found.size(), kMostStrips));
  std::vector<Strip> strips;
  for (auto& [colours, strip] : found) strips.push_back(std::move(strip));
  return strips;
}

/// What a window can be told by: all of it but the live picture.
std::vector<Strip> stripsOf(QWidget& window) {
  std::vector<QWidget*> parts;
  if (auto* main = qobject_cast<QMainWindow*>(&window)) {
    parts.push_back(main->menuBar());
    for (QToolBar* bar : main->findChildren<QToolBar*>()) parts.push_back(bar);
  } else {
    parts.push_back(&window);
  }
  std::vector<Strip> strips;
  for (QWidget* part : parts) {
    if (!part->isVisible()) continue;
    const QImage image = part->grab().toImage().convertToFormat(QImage::Format_RGB32);
    for (Strip& strip : stripsOf(image, part->mapTo(&window, QPoint()))) {
      for (QRgb& pixel : strip.pixels) pixel |= 0xFF000000;
      strips.push_back(std::move(strip));
    }
  }
  return strips;
}

bool isAt(const Strip& strip, const QImage& image, QPoint place) {
  if (!image.rect().contains(QRect(place, QSize(kStripLength, 1)))) return false;
  const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(place.y()));
  return std::equal(strip.pixels.begin(), strip.pixels.end(), row + place.x());
}

/// Where `image` has the window of these strips: there are at least three of them.
std::optional<QPoint> find(const std::vector<Strip>& strips, const QImage& image) {
  struct Less {
    bool operator()(QPoint a, QPoint b) const {
      return std::pair(a.y(), a.x()) < std::pair(b.y(), b.x());
    }
  };
  std::map<QPoint, int, Less> votes;
  for (const Strip& strip : strips) {
    // Looked for by a pixel unlike its neighbour, which most of a window is not.
    size_t telling = 1;
    while (strip.pixels[telling] == strip.pixels[telling - 1]) ++telling;
    for (int y = 0; y < image.height(); ++y) {
      const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
      for (int x = 0; x + kStripLength <= image.width(); ++x) {
        if (row[x + int(telling)] == strip.pixels[telling] && isAt(strip, image, {x, y}))
          ++votes[QPoint(x, y) - strip.place];
      }
    }
  }
  const auto best =
      std::ranges::max_element(votes, {}, [](const auto& vote) { return vote.second; });
  if (best == votes.end() || best->second < std::min<int>(kVotes, int(strips.size()))) return {};
  return best->first;
}

std::optional<QRect> placeUnderWayland(const QWidget& window) {
  if (!window.isVisible()) return {};
  const QImage screen = displayPart(QRect(0, 0, root().width_in_pixels, root().height_in_pixels));
  const auto corner = find(stripsOf(const_cast<QWidget&>(window)), screen);
  if (!corner) return {};
  return QRect(*corner, window.size());
}

}  // namespace

bool isWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

QImage displayed(const QWidget& widget) {
  if (isWayland()) return displayPart(QRect(onDisplay(widget, QPoint(0, 0)), widget.size()));
  const QPoint corner = widget.mapToGlobal(QPoint(0, 0));
  return widget.screen()
      ->grabWindow(0, corner.x(), corner.y(), widget.width(), widget.height())
      .toImage();
}

std::optional<QRect> placeOnDisplay(const QWidget& window) {
  if (isWayland()) return placeUnderWayland(window);
  const auto id = xcb_window_t(window.winId());
  const auto asked = xcb_get_window_attributes(display(), id);
  const auto askedSize = xcb_get_geometry(display(), id);
  const Reply<xcb_get_window_attributes_reply_t> state(
      xcb_get_window_attributes_reply(display(), asked, nullptr), std::free);
  const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(display(), askedSize, nullptr),
                                             std::free);
  if (!state || !size || state->map_state != XCB_MAP_STATE_VIEWABLE) return {};
  const Reply<xcb_translate_coordinates_reply_t> corner(
      xcb_translate_coordinates_reply(
          display(), xcb_translate_coordinates(display(), id, size->root, 0, 0), nullptr),
      std::free);
  if (!corner) return {};
  return QRect(corner->dst_x, corner->dst_y, size->width, size->height);
}

bool hasKeyboard(const QWidget& window) {
  if (!window.isActiveWindow()) return false;
  if (isWayland()) return true;  // the compositor itself says so
  return propertyOf(root().root, "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW) == window.winId();
}

bool isInItsPlace(const QWidget& window) {
  const std::optional<QRect> place = placeOnDisplay(window);
  if (!place || isWayland()) return place.has_value();
  const double ratio = window.devicePixelRatio();
  const int most = int(std::ceil(ratio)) - 1;  // what whole points can be off by, in pixels
  const auto isAlike = [&](int pixels, int points) {
    return std::abs(pixels - qRound(points * ratio)) <= most;
  };
  const QRect wanted = window.geometry();
  // The toolkit's own two ideas of it differ until the display has answered to a move.
  const QPoint corner = window.mapToGlobal(QPoint(0, 0));
  return isAlike(place->width(), wanted.width()) && isAlike(place->height(), wanted.height()) &&
         isAlike(place->x(), wanted.x()) && isAlike(place->y(), wanted.y()) &&
         isAlike(place->x(), corner.x()) && isAlike(place->y(), corner.y());
}

void waitForPlace(const QWidget& window) {
  const auto told = [](const QRect& rect) {
    return fmt::format("{}x{} at {}, {}", rect.width(), rect.height(), rect.x(), rect.y());
  };
  std::optional<QRect> before;
  const auto isInItForGood = [&] {
    if (!isInItsPlace(window)) return false;
    if (isWayland()) return true;
    // Each answer of the window manager's may be answered by the program.
    const std::optional<QRect> now = placeOnDisplay(window);
    return windowManagerIsDone() && now == std::exchange(before, now);
  };
  EXPECT_TRUE(waitUntil(isInItForGood))
      << window.windowTitle().toStdString() << " is not where it should be, "
      << told(window.geometry()) << ", but " << told(placeOnDisplay(window).value_or(QRect()))
      << "; its corner is " << told({window.mapToGlobal(QPoint(0, 0)), QSize()});
}

QPoint onDisplay(const QWidget& widget, QPoint position) {
  const QWidget& window = *widget.window();
  const QPointF inWindow = widget.mapTo(&window, QPointF(position)) * window.devicePixelRatio();
  return placeOnDisplay(window).value_or(QRect()).topLeft() + inWindow.toPoint();
}

}  // namespace tessary::test
