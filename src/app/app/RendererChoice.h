#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/Renderer.h"

namespace tessary {

struct RendererChoice {
  Renderer renderer = Renderer::kRaster;
  std::string reason;  ///< For the log: the end of a sentence.
};

/// OpenGL where a graphics card drives it; else, and where OpenGL runs on the processor too, this
/// program draws the picture itself, at a fraction of the cost. What the user `wanted` counts
/// before that, as far as it can be done.
///
/// `openGlRenderer` tells what drives OpenGL, nothing if it can't be had; it is asked only where
/// that matters, since the answer may cost a tenth of a second and thirty megabytes.
RendererChoice chooseRenderer(std::optional<Renderer> wanted, bool hasGraphicsCard,
                              const std::function<std::optional<std::string>()>& openGlRenderer);

/// The same for this machine, with a line in the log. Needs the application object.
Renderer chooseRenderer(std::optional<Renderer> wanted);

}  // namespace tessary
