// Loaded before the system's OpenGL: a driver that has nothing to offer for the display, as after
// an update of the driver until the restart.

extern "C" {
void* glXChooseFBConfig(void* /*display*/, int /*screen*/, const int* /*attributes*/, int* count) {
  *count = 0;
  return nullptr;
}
void* glXChooseVisual(void* /*display*/, int /*screen*/, int* /*attributes*/) { return nullptr; }
}
