#pragma once

#include <epoxy/gl.h>

#include <utility>

namespace tessary {

/// Owns one OpenGL name. Make and destroy it with its context current. `Kind` says how the name is
/// made and deleted.
template <typename Kind>
class GlObject {
 public:
  GlObject() { Kind::generate(&name_); }
  ~GlObject() {
    if (name_ != 0) Kind::remove(&name_);
  }
  GlObject(GlObject&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
  GlObject& operator=(GlObject&& other) noexcept {
    std::swap(name_, other.name_);
    return *this;
  }
  GlObject(const GlObject&) = delete;
  GlObject& operator=(const GlObject&) = delete;

  GLuint name() const noexcept { return name_; }
  /// The context is gone, and the name with it: nothing is left to delete.
  void forget() noexcept { name_ = 0; }

 private:
  GLuint name_ = 0;
};

struct GlTextureKind {
  static void generate(GLuint* name) { glGenTextures(1, name); }
  static void remove(const GLuint* name) { glDeleteTextures(1, name); }
};
struct GlFramebufferKind {
  static void generate(GLuint* name) { glGenFramebuffers(1, name); }
  static void remove(const GLuint* name) { glDeleteFramebuffers(1, name); }
};
struct GlBufferKind {
  static void generate(GLuint* name) { glGenBuffers(1, name); }
  static void remove(const GLuint* name) { glDeleteBuffers(1, name); }
};
struct GlVertexArrayKind {
  static void generate(GLuint* name) { glGenVertexArrays(1, name); }
  static void remove(const GLuint* name) { glDeleteVertexArrays(1, name); }
};

using GlTexture = GlObject<GlTextureKind>;
using GlFramebuffer = GlObject<GlFramebufferKind>;
using GlBuffer = GlObject<GlBufferKind>;
using GlVertexArray = GlObject<GlVertexArrayKind>;

}  // namespace tessary
