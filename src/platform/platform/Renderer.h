#pragma once

namespace tessary {

/// What draws the picture.
enum class Renderer {
  kOpenGl,  ///< A graphics card, or what stands for it.
  kRaster,  ///< This program itself, on the processor.
};

}  // namespace tessary
