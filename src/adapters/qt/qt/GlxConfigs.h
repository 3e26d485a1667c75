#pragma once

struct _XDisplay;  // Xlib's Display

namespace tessary {

/// Whether OpenGL has anything to offer for windows of this X11 display. Where its driver and the
/// display's don't belong together it has nothing at all: after an update of a driver, before the
/// restart, and on many displays in the network. Main thread.
bool hasGlxConfigs(_XDisplay* display);

}  // namespace tessary
