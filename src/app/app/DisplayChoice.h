#pragma once

#include <functional>
#include <optional>
#include <string>

class QVersionNumber;

namespace tessary {

/// The toolkit's names of what to try to show the windows on, in order, with ';' between; nothing
/// to leave it to the toolkit, which takes Wayland where it is offered.
///
/// Its version 6.4 isn't left to it: there a window that closes under Wayland may take the program
/// with it, since two threads let go the same frame callback (about one closing in 6,000 while the
/// window is drawn without a pause). Wayland desktops take programs for X11, too. `isSet` tells of
/// variables of the environment: what the user chose there, and where X11 isn't to be had, counts.
std::optional<std::string> displaysToTry(const QVersionNumber& toolkit,
                                         const std::function<bool(const char*)>& isSet);

}  // namespace tessary
