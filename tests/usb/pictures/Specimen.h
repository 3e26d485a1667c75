#pragma once

#include <cstdint>
#include <vector>

#include "pictures/Canvas.h"

namespace tessary::lab {

/// What lies under the virtual microscope: a stage micrometer, 1 mm in 100 divisions over 0.625 of
/// the picture's width, on a stained specimen. Every picture of it has noise of its own, as a
/// camera's has, and its number in the strip of common/PictureStrip.h.
class Specimen {
 public:
  explicit Specimen(Size size);

  Canvas picture(uint16_t number) const;

 private:
  void drawMicrometer(Canvas& canvas) const;
  static void drawStrip(Canvas& canvas, uint16_t number);

  Size size_;
  std::vector<Rgb> still_;  // without noise, row by row
};

}  // namespace tessary::lab
