#pragma once

#include <memory>

namespace tessary {

/// An OpenGL 3.3 core context without a display and without a framebuffer of its own, for tests and
/// benchmarks. It is current on the thread that makes it, until it goes.
class HeadlessContext {
 public:
  /// Null, with a log line, where the machine has no such context.
  static std::unique_ptr<HeadlessContext> make();
  ~HeadlessContext();
  HeadlessContext(const HeadlessContext&) = delete;
  HeadlessContext& operator=(const HeadlessContext&) = delete;

  void makeCurrent();

 private:
  HeadlessContext(void* display, void* context) : display_(display), context_(context) {}

  void* display_;  // an EGLDisplay and an EGLContext, kept out of this header
  void* context_;
};

}  // namespace tessary
