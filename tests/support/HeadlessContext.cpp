#include "HeadlessContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include "base/Log.h"

namespace tessary {
namespace {

EGLDisplay surfacelessDisplay() {
  const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
      eglGetProcAddress("eglGetPlatformDisplayEXT"));
  if (!getPlatformDisplay) return EGL_NO_DISPLAY;
  return getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

}  // namespace

std::unique_ptr<HeadlessContext> HeadlessContext::make() {
  EGLDisplay display = surfacelessDisplay();
  if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) {
    log("No headless display: EGL error {:#x}", eglGetError());
    return nullptr;
  }
  const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                               3,
                               EGL_CONTEXT_MINOR_VERSION,
                               3,
                               EGL_CONTEXT_OPENGL_PROFILE_MASK,
                               EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                               EGL_NONE};
  EGLContext context = EGL_NO_CONTEXT;
  if (eglBindAPI(EGL_OPENGL_API)) {
    context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
  }
  if (context == EGL_NO_CONTEXT ||
      !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
    log("No headless context: EGL error {:#x}", eglGetError());
    if (context != EGL_NO_CONTEXT) eglDestroyContext(display, context);
    return nullptr;
  }
  return std::unique_ptr<HeadlessContext>(new HeadlessContext(display, context));
}

HeadlessContext::~HeadlessContext() {
  eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  eglDestroyContext(display_, context_);
  // The display is the process's own and shared by all contexts; ending it here would end theirs.
}

void HeadlessContext::makeCurrent() {
  eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_);
}

}  // namespace tessary
