#include "opengl/GlCompositor.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/Log.h"
#include "opengl/GlObject.h"
#include "opengl/GlProgram.h"
#include "opengl/GlShaders.h"

namespace tessary {
namespace {

/// A toolkit draws into a framebuffer of its own: puts back which one, and its viewport, and sets
/// what this file relies on, as a painter may have left anything.
class GlStateGuard {
 public:
  GlStateGuard() {
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawFramebuffer_);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readFramebuffer_);
    glGetIntegerv(GL_VIEWPORT, viewport_);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glActiveTexture(GL_TEXTURE0);
    glBindSampler(0, 0);
  }
  ~GlStateGuard() {
    glDisable(GL_SCISSOR_TEST);
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindVertexArray(0);
    glUseProgram(0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, GLuint(drawFramebuffer_));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(readFramebuffer_));
    glViewport(viewport_[0], viewport_[1], viewport_[2], viewport_[3]);
  }
  GlStateGuard(const GlStateGuard&) = delete;
  GlStateGuard& operator=(const GlStateGuard&) = delete;

 private:
  GLint drawFramebuffer_ = 0;
  GLint readFramebuffer_ = 0;
  GLint viewport_[4] = {};
};

bool isWholeMultiple(double size, int32_t texture) {
  return size >= texture && std::fmod(size, texture) == 0.0;
}

void setPlainUnpacking() {
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
}

void setPlainPacking() {
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  glPixelStorei(GL_PACK_SKIP_ROWS, 0);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
}

}  // namespace

/// A texture of the frame's size, and what draws into it.
struct GlCompositor::Texture {
  explicit Texture(TextureSize textureSize) {
    glBindTexture(GL_TEXTURE_2D, texture.name());
    setPlainUnpacking();
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, textureSize.width, textureSize.height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);

    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer.name());
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
    complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
  }

  void forget() {
    texture.forget();
    framebuffer.forget();
  }

  bool complete = false;
  GlTexture texture;
  GlFramebuffer framebuffer;  // over texture
};

struct GlCompositor::Picture {
  explicit Picture(TextureSize frameSize) : size(frameSize), frame(size), _bufferTexture(size) {}

  bool isComplete() const { return frame.complete && _bufferTexture.complete; }

  TextureSize size;
  Texture frame;
  Texture _bufferTexture;            // frame and overlay
  const Texture* composed = &frame;  // whichever holds the composed picture
};

/// What draws, whatever the size of the picture.
struct GlCompositor::Programs {
  /// A program that draws the composed texture to the screen, and where its numbers go.
  struct Presenter {
    explicit Presenter(std::string_view fragmentShader)
        : program(GlTarget::kScreen, kPresentVertexShader, fragmentShader),
          origin(program.uniform("origin")),
          surfaceHeight(program.uniform("surfaceHeight")),
          texelsPerPixel(program.uniform("texelsPerPixel")),
          textureSizeInTexels(program.uniform("textureSizeInTexels")) {}
    GlProgram program;
    GLint origin;
    GLint surfaceHeight;
    GLint texelsPerPixel;
    GLint textureSizeInTexels;
  };

  Programs() {
    glBindVertexArray(overlayVertices.name());
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer.name());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the calls take offsets for pointers.
    const auto offset = [](size_t bytes) { return reinterpret_cast<const void*>(bytes); };
    glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, sizeof(PointVertex),
                          offset(offsetof(PointVertex, position)));
    glVertexAttribPointer(1, 4, GL_FLOAT, GL_FALSE, sizeof(PointVertex),
                          offset(offsetof(PointVertex, color)));
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
  }

  void drawOverlay(const Picture& target, std::span<const PointVertex> lines,
                   std::span<const PointVertex> points) {
    const size_t count = lines.size() + points.size();
    const TextureSize size = target.size;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, target.frame.framebuffer.name());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, target._bufferTexture.framebuffer.name());
    glBlitFramebuffer(0, 0, size.width, size.height, 0, 0, size.width, size.height,
                      GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glViewport(0, 0, size.width, size.height);
    overlay.use();
    glBindVertexArray(overlayVertices.name());
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer.name());
    // A new block of the same size each time: the last one may still be read by the graphics card.
    if (count > vertexRoom) vertexRoom = count + count / 2;
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertexRoom * sizeof(PointVertex)), nullptr,
                 GL_STREAM_DRAW);
    if (!lines.empty()) {
      glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(lines.size_bytes()), lines.data());
      if (!points.empty()) {
        glBufferSubData(GL_ARRAY_BUFFER, GLintptr(lines.size_bytes()),
                        GLsizeiptr(points.size_bytes()), points.data());
      }
      // OpenGL leaves out one end of a line, and which one is a matter of its direction and the
      // last bit. The ends by themselves make closed figures closed; first, so that later lines lie
      // over them.
      glUniform2f(overlayShift, lineShift(size.width), lineShift(size.height));
      glDrawArrays(GL_POINTS, 0, GLsizei(lines.size()));
      glDrawArrays(GL_LINES, 0, GLsizei(lines.size()));
    } else {
      glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(points.size_bytes()), points.data());
    }
    if (points.empty()) return;
    glUniform2f(overlayShift, labelShift(size.width), labelShift(size.height));
    glDrawArrays(GL_POINTS, GLint(lines.size()), GLsizei(points.size()));
  }

  void drawPicture(const Picture& source, const SurfaceRect& picture, TextureSize surface) const {
    const TextureSize size = source.size;
    // Also kept off the far side of 32 bits: only what lies on the surface counts.
    const double left = std::clamp(picture.origin.x, 0.0, double(surface.width));
    const double top = std::clamp(picture.origin.y, 0.0, double(surface.height));
    const double right =
        std::clamp(picture.origin.x + picture.size.width, 0.0, double(surface.width));
    const double bottom =
        std::clamp(picture.origin.y + picture.size.height, 0.0, double(surface.height));
    if (!(right > left && bottom > top)) return;
    glEnable(GL_SCISSOR_TEST);
    glScissor(GLint(left), surface.height - GLint(bottom), GLint(right) - GLint(left),
              GLint(bottom) - GLint(top));

    const bool exact = isWholeMultiple(picture.size.width, size.width) &&
                       isWholeMultiple(picture.size.height, size.height);
    const Presenter& presenter = exact ? exactPresenter : filteredPresenter;
    presenter.program.use();
    glUniform2f(presenter.origin, float(picture.origin.x), float(picture.origin.y));
    glUniform1f(presenter.surfaceHeight, float(surface.height));
    glUniform2f(presenter.texelsPerPixel, float(size.width / picture.size.width),
                float(size.height / picture.size.height));
    glUniform2f(presenter.textureSizeInTexels, float(size.width), float(size.height));
    glBindTexture(GL_TEXTURE_2D, source.composed->texture.name());
    glBindVertexArray(noVertices.name());
    glDrawArrays(GL_TRIANGLES, 0, 3);
  }

  void forget() {
    vertexBuffer.forget();
    overlayVertices.forget();
    noVertices.forget();
    for (GlProgram* program : {&overlay, &exactPresenter.program, &filteredPresenter.program})
      program->forget();
  }

  GlBuffer vertexBuffer;
  size_t vertexRoom = 0;
  GlVertexArray overlayVertices;  // over vertexBuffer
  GlVertexArray noVertices;
  GlProgram overlay{GlTarget::kTexture, kOverlayVertexShader, kOverlayFragmentShader};
  GLint overlayShift = overlay.uniform("shift");
  Presenter exactPresenter{kPresentExactFragmentShader};
  Presenter filteredPresenter{kPresentFilteredFragmentShader};
};

GlCompositor::GlCompositor() = default;
GlCompositor::~GlCompositor() = default;

void GlCompositor::initBufferResources(TextureSize size) {
  picture_.reset();
  if (size.width <= 0 || size.height <= 0) return;
  GLint largest = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
  if (size.width > largest || size.height > largest) {
    log("A picture of {} by {} pixels can't be shown: the graphics card ends at {}.", size.width,
        size.height, largest);
    return;
  }
  const GlStateGuard guard;
  auto picture = std::make_unique<Picture>(size);
  if (!picture->isComplete()) {
    log("A picture of {} by {} pixels can't be shown: the graphics card has no room for it.",
        size.width, size.height);
    return;
  }
  if (!programs_) programs_ = std::make_unique<Programs>();
  picture_ = std::move(picture);
}

void GlCompositor::clearBufferResources() { picture_.reset(); }

void GlCompositor::contextWillBeDestroyed() {
  picture_.reset();
  programs_.reset();
}

void GlCompositor::contextWasLost() {
  if (picture_) {
    picture_->frame.forget();
    picture_->_bufferTexture.forget();
  }
  if (programs_) programs_->forget();
  contextWillBeDestroyed();
}

void GlCompositor::setFrame(std::shared_ptr<const PixelBuffer> frame) {
  if (!picture_ || frame->size() != picture_->size) return;
  const GlStateGuard guard;
  setPlainUnpacking();
  glBindTexture(GL_TEXTURE_2D, picture_->frame.texture.name());
  // Fills every pixel, so nothing has to be cleared before.
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture_->size.width, picture_->size.height, GL_RGBA,
                  GL_UNSIGNED_BYTE, frame->data());
}

void GlCompositor::compose(std::span<const PointVertex> lines,
                           std::span<const PointVertex> points) {
  if (!picture_) return;
  picture_->composed = &picture_->frame;
  if (lines.empty() && points.empty()) return;
  picture_->composed = &picture_->_bufferTexture;
  const GlStateGuard guard;
  programs_->drawOverlay(*picture_, lines, points);
}

void GlCompositor::present(const SurfaceRect& picture, const Surface& surface) {
  const GlStateGuard guard;
  glViewport(0, 0, surface.size.width, surface.size.height);
  glClearColor(kSurroundingGrey, kSurroundingGrey, kSurroundingGrey, 1.0F);
  glClear(GL_COLOR_BUFFER_BIT);
  if (picture_) programs_->drawPicture(*picture_, picture, surface.size);
}

bool GlCompositor::readBack(PixelBuffer& target) {
  if (!picture_ || target.size() != picture_->size) return false;
  const GlStateGuard guard;
  glBindFramebuffer(GL_READ_FRAMEBUFFER, picture_->composed->framebuffer.name());
  setPlainPacking();
  glReadPixels(0, 0, target.size().width, target.size().height, GL_RGBA, GL_UNSIGNED_BYTE,
               target.data());
  return true;
}

}  // namespace tessary
