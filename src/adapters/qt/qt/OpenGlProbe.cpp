#include "qt/OpenGlProbe.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

#include "qt/GlxConfigs.h"

namespace tessary {
namespace {

/// The toolkit ends the program where there is nothing to choose from.
bool canBeAskedFor() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return !x11 || !offersNothingByGlx(x11->display());
}

}  // namespace

std::optional<std::string> openGlRenderer() {
  if (!canBeAskedFor()) return std::nullopt;
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
