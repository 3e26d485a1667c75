#pragma once

#include <optional>
#include <string>

namespace tessary {

/// What OpenGL calls its renderer (GL_RENDERER) in a context like the picture's; nothing where none
/// can be made. Loads the driver. Needs a QGuiApplication; main thread.
std::optional<std::string> openGlRenderer();

}  // namespace tessary
