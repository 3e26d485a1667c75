#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/PixelBuffer.h"

namespace tessary {

/// What lies under the simulated microscope: a stage micrometer over a specimen of cells that
/// drifts slowly behind it, seen with a camera's grain. A closed loop of pictures, the same in
/// every run.
///
///        1 mm = 100 divisions = 0.625 of the picture's width
///     |    .    |    .    |         lines stand upward from the middle of the picture's height;
///     |.........|.........|         every 10th is long, every 5th of middle length
///
/// Along the bottom edge, 16 squares of 16 by 16 pixels show the picture's index in the loop in
/// binary, lowest bit left, white for 1.
class SimulatedScene {
 public:
  /// Width, in parts of the picture's, that one millimetre takes.
  static constexpr double kMillimetre = 0.625;

  SimulatedScene(TextureSize size, size_t pictureCount);

  TextureSize size() const { return size_; }
  size_t pictureCount() const { return pictureCount_; }
  /// Draws picture `index`, below pictureCount(), into `picture` of this scene's size.
  void draw(size_t index, PixelBuffer& picture) const;

 private:
  void drawBackground();
  void drawCells();
  void drawMicrometer(PixelBuffer& picture) const;
  void drawIndex(size_t index, PixelBuffer& picture) const;
  uint32_t& specimenAt(int32_t x, int32_t y) { return specimen_[size_t(y) * stride_ + size_t(x)]; }

  TextureSize size_;
  size_t pictureCount_;
  int32_t drift_;   // radius in pixels of the circle on which the specimen moves
  size_t stride_;   // pixels in a row of the specimen
  int32_t height_;  // its rows
  // Blue, green, red from 0 to 223, alpha 255: the grain of 0 to 28 is added to whole words at a
  // time, and no sum may run over into its neighbour.
  std::vector<uint32_t> specimen_;
  std::vector<uint32_t> grain_;
};

}  // namespace tessary
