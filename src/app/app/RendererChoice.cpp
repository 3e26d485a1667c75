#include "app/RendererChoice.h"

#include <fmt/format.h>

#include "base/Log.h"
#include "opengl/GraphicsCard.h"
#include "qt/OpenGlProbe.h"

namespace tessary {

RendererChoice chooseRenderer(std::optional<Renderer> wanted, bool hasGraphicsCard,
                              const std::function<std::optional<std::string>()>& openGlRenderer) {
  if (wanted == Renderer::kRaster) return {Renderer::kRaster, "as asked for"};
  if (!wanted && !hasGraphicsCard) return {Renderer::kRaster, "there is no graphics card"};
  const std::optional<std::string> renderer = openGlRenderer();
  if (!renderer) return {Renderer::kRaster, "OpenGL can't be had"};
  if (!wanted && isSoftwareRenderer(*renderer))
    return {Renderer::kRaster, fmt::format("OpenGL would run on the processor ({})", *renderer)};
  return {Renderer::kOpenGl, *renderer};
}

Renderer chooseRenderer(std::optional<Renderer> wanted) {
  const RendererChoice choice = chooseRenderer(wanted, hasGraphicsCard(), openGlRenderer);
  log("The picture is drawn {} OpenGL: {}",
      choice.renderer == Renderer::kOpenGl ? "with" : "without", choice.reason);
  return choice.renderer;
}

}  // namespace tessary
