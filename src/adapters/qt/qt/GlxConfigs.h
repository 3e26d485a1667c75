#pragma once

struct _XDisplay;  // Xlib's Display

namespace tessary {

/// Whether this X11 display has GLX, which offers nothing for windows. So it is where its driver
/// and the display's don't belong together: after an update of a driver, before the restart, and on
/// many displays in the network. Without GLX the toolkit finds its own way. Main thread.
bool offersNothingByGlx(_XDisplay* display);

}  // namespace tessary
