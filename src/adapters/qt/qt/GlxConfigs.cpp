#include "qt/GlxConfigs.h"

#include <GL/glx.h>

namespace tessary {

bool offersNothingByGlx(_XDisplay* display) {
  int error = 0;
  int event = 0;
  if (!glXQueryExtension(display, &error, &event)) return false;
  const int attributes[] = {GLX_RENDER_TYPE, GLX_RGBA_BIT, GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, None};
  int count = 0;
  GLXFBConfig* configs = glXChooseFBConfig(display, DefaultScreen(display), attributes, &count);
  if (configs) XFree(configs);
  return count == 0;
}

}  // namespace tessary
