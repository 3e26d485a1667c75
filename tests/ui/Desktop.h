#pragma once
// Where the display has the program's windows, which only the display knows: X11, or a Wayland
// compositor that shows itself in a window of an X11 display and covers it.

#include <optional>

#include <QtCore/QRect>
#include <QtGui/QImage>
#include <QtWidgets/QWidget>

namespace tessary::test {

bool isWayland();

/// Where the display has a window, without its frame, in its pixels; nothing while it does not show
/// it, or not enough of it. The window manager moves and shows windows in its own time.
std::optional<QRect> placeOnDisplay(const QWidget& window);
/// Whether it is the active window, and the window manager takes it for that, too, with its own
/// keys. Whoever acts before meets the keyboard on its way from one window to the next.
bool hasKeyboard(const QWidget& window);
/// Whether the display has the window where, and as large as, the program believes it to be.
/// Wayland tells programs no places.
bool isInItsPlace(const QWidget& window);
/// Waits until the display has the window where, and as large as, the program believes it to be,
/// and neither the window manager nor the program has anything left to say to that: on a busy
/// machine a window that has just been framed goes to and fro.
void waitForPlace(const QWidget& window);

/// Where the display, in its pixels, has this position of a widget, whose window is in its place.
QPoint onDisplay(const QWidget& widget, QPoint position);
/// What the display shows where the widget is.
QImage displayed(const QWidget& widget);

}  // namespace tessary::test
