#pragma once
// The shaders, without their version line: valid in OpenGL 3.3 core and in OpenGL ES 3.0.
//
// The composed texture holds the camera's bytes as they are: its red channel is blue and the other
// way round, and its row 0, the picture's top, is the lowest row to OpenGL.

#include <string_view>

namespace tessary {

/// Lines and points of the overlay, into the composed texture.
///
/// `shift` is `lineShift` or `labelShift` of both axes. Colours are rounded to bytes here, halves
/// upwards: graphics cards take either of two when a colour lies halfway between them, and a
/// still's bytes are the same on all.
inline constexpr std::string_view kOverlayVertexShader = R"(
layout(location = 0) in vec4 position;
layout(location = 1) in vec4 color;
uniform vec2 shift;  // in clip space
out vec4 vertexColor;
void main() {
  gl_Position = vec4(position.x + shift.x * position.w,
                     shift.y * position.w - position.y, position.zw);
  gl_PointSize = 1.0;
  vertexColor = floor(clamp(color, 0.0, 1.0) * 255.0 + 0.5) / 255.0;
}
)";

inline constexpr std::string_view kOverlayFragmentShader = R"(
in vec4 vertexColor;
layout(location = 0) out vec4 fragment;
void main() { fragment = vertexColor.bgra; }
)";

/// One triangle over the whole surface; the scissor cuts out the picture.
inline constexpr std::string_view kPresentVertexShader = R"(
void main() {
  gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
}
)";

/// Whole multiples of the size, 1:1 among them: every pixel is one texel, unfiltered. The result is
/// opaque: an overlay's alpha must not show what lies behind the window.
inline constexpr std::string_view kPresentExactFragmentShader = R"(
uniform sampler2D picture;
uniform vec2 origin;  // of the picture on the surface, from the top left
uniform float surfaceHeight;
uniform vec2 texelsPerPixel;
layout(location = 0) out vec4 fragment;
void main() {
  vec2 pixel = vec2(gl_FragCoord.x, surfaceHeight - gl_FragCoord.y) - origin;
  fragment = vec4(texelFetch(picture, ivec2(pixel * texelsPerPixel), 0).bgr, 1.0);
}
)";

/// Any other size. Shrunk down to one half, the linear filter's two by two texels touch every texel
/// (at exactly one half they are its average), so that no thin line is lost and no mipmap is
/// needed. Enlarged, texels keep hard edges: only the pixel that an edge runs through mixes the two
/// sides.
inline constexpr std::string_view kPresentFilteredFragmentShader = R"(
uniform sampler2D picture;
uniform vec2 origin;
uniform float surfaceHeight;
uniform vec2 texelsPerPixel;
uniform vec2 textureSizeInTexels;
layout(location = 0) out vec4 fragment;
void main() {
  vec2 pixel = vec2(gl_FragCoord.x, surfaceHeight - gl_FragCoord.y) - origin;
  vec2 texel = pixel * texelsPerPixel;
  vec2 fromCentre = fract(texel) - 0.5;
  vec2 flatPart = max(0.5 - 0.5 * texelsPerPixel, 0.0);
  vec2 inEdge = (fromCentre - clamp(fromCentre, -flatPart, flatPart)) / min(texelsPerPixel, 1.0);
  vec2 at = (floor(texel) + 0.5 + inEdge) / textureSizeInTexels;
  fragment = vec4(texture(picture, at).bgr, 1.0);
}
)";

}  // namespace tessary
