#pragma once

#include <cstdint>
#include <optional>

#include "screen/FrameBuffer.h"

namespace tessary::lab {

/// A picture of the virtual microscope found on the screen.
struct PictureFound {
  uint16_t number = 0;  // the picture's
  int left = 0;         // of the picture
  int bottom = 0;       // the picture's last row
};

/// Where the microscope's picture is, at 100 percent and with its bottom in sight. Nothing if there
/// is none, if its colours are out of order, or if its strip is not of one picture.
std::optional<PictureFound> findPicture(const FrameBuffer& screen);

}  // namespace tessary::lab
