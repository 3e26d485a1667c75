#include "HeadlessContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include "base/Log.h"

namespace tessary {
namespace {

/// Without a screen: Mesa's platform for that, or the first graphics card of a driver that has
/// none.
EGLDisplay initializedDisplay() {
  const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
      eglGetProcAddress("eglGetPlatformDisplayEXT"));
  const auto queryDevices =
      reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
  if (!getPlatformDisplay) return EGL_NO_DISPLAY;
  EGLDisplay display =
      getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
  if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr)) return display;
  EGLDeviceEXT device = nullptr;
  EGLint devices = 0;
  if (!queryDevices || !queryDevices(1, &device, &devices) || devices == 0) return EGL_NO_DISPLAY;
  display = getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
  return display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) ? display
                                                                               : EGL_NO_DISPLAY;
}

}  // namespace

std::unique_ptr<HeadlessContext> HeadlessContext::make() {
  EGLDisplay display = initializedDisplay();
  if (display == EGL_NO_DISPLAY) {
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
