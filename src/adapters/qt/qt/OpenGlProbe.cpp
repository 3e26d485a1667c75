#include "qt/OpenGlProbe.h"

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace tessary {

std::optional<std::string> openGlRenderer() {
  QOpenGLContext context;
  QOffscreenSurface surface;
  if (!context.create()) return std::nullopt;
  surface.setFormat(context.format());
  surface.create();
  if (!context.makeCurrent(&surface)) return std::nullopt;
  const auto* name = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
  std::string renderer = name ? name : "";
  context.doneCurrent();
  return renderer;
}

}  // namespace tessary
