#pragma once

#include <epoxy/gl.h>

#include <string_view>

namespace tessary {

/// What a program draws to; only the words of its failure depend on it.
enum class GlTarget { kScreen, kTexture };

/// A vertex and a fragment shader, linked. Make and destroy it with its context current.
class GlProgram {
 public:
  /// Sources are without the version line. A program that can't be made ends the process with a log
  /// line: there is no picture without it.
  GlProgram(GlTarget target, std::string_view vertexSource, std::string_view fragmentSource);
  ~GlProgram();
  GlProgram(const GlProgram&) = delete;
  GlProgram& operator=(const GlProgram&) = delete;

  /// The context is gone, and this with it: nothing is left to delete.
  void forget() noexcept { name_ = 0; }
  void use() const { glUseProgram(name_); }
  /// -1 for a uniform that the program has no use for, which OpenGL ignores.
  GLint uniform(const char* uniformName) const { return glGetUniformLocation(name_, uniformName); }

 private:
  GLuint name_ = 0;
};

}  // namespace tessary
