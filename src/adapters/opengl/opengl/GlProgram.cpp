#include "opengl/GlProgram.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "base/Log.h"

namespace tessary {
namespace {

[[noreturn]] void fail(GlTarget target, const std::string& error) {
  if (target == GlTarget::kScreen) {
    log("Failed to create pipeline state to render to screen: {}", error);
  } else {
    log("Failed to create pipeline state to render to texture: {}", error);
  }
  std::abort();
}

template <typename GetLog>
std::string infoLog(GLint length, GetLog getLog) {
  std::string text(size_t(std::max(length, 1)), '\0');
  GLsizei written = 0;
  getLog(GLsizei(text.size()), &written, text.data());
  text.resize(size_t(written));
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text.empty() ? "no reason given" : text;
}

/// Lives until the program is linked.
class Shader {
 public:
  Shader(GLenum type, GlTarget target, std::string_view source) : name_(glCreateShader(type)) {
    const std::string_view version =
        epoxy_is_desktop_gl() ? "#version 330 core\n" : "#version 300 es\nprecision highp float;\n";
    const std::array<const GLchar*, 2> texts{version.data(), source.data()};
    const std::array<GLint, 2> lengths{GLint(version.size()), GLint(source.size())};
    glShaderSource(name_, 2, texts.data(), lengths.data());
    glCompileShader(name_);
    GLint compiled = GL_FALSE;
    glGetShaderiv(name_, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE) return;
    GLint length = 0;
    glGetShaderiv(name_, GL_INFO_LOG_LENGTH, &length);
    fail(target, infoLog(length, [this](GLsizei size, GLsizei* written, GLchar* text) {
           glGetShaderInfoLog(name_, size, written, text);
         }));
  }
  ~Shader() { glDeleteShader(name_); }
  Shader(const Shader&) = delete;
  Shader& operator=(const Shader&) = delete;
  GLuint name() const { return name_; }

 private:
  GLuint name_;
};

}  // namespace

GlProgram::GlProgram(GlTarget target, std::string_view vertexSource,
                     std::string_view fragmentSource) {
  const Shader vertex(GL_VERTEX_SHADER, target, vertexSource);
  const Shader fragment(GL_FRAGMENT_SHADER, target, fragmentSource);
  name_ = glCreateProgram();
  glAttachShader(name_, vertex.name());
  glAttachShader(name_, fragment.name());
  glLinkProgram(name_);
  glDetachShader(name_, vertex.name());
  glDetachShader(name_, fragment.name());
  GLint linked = GL_FALSE;
  glGetProgramiv(name_, GL_LINK_STATUS, &linked);
  if (linked == GL_TRUE) return;
  GLint length = 0;
  glGetProgramiv(name_, GL_INFO_LOG_LENGTH, &length);
  fail(target, infoLog(length, [this](GLsizei size, GLsizei* written, GLchar* text) {
         glGetProgramInfoLog(name_, size, written, text);
       }));
}

GlProgram::~GlProgram() {
  if (name_ != 0) glDeleteProgram(name_);
}

}  // namespace tessary
