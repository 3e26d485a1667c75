#pragma once

#include <cstdint>
#include <vector>

#include "pictures/Canvas.h"

namespace tessary::lab {

/// A JPEG with colours at half the width, as USB cameras send. Throws std::runtime_error.
std::vector<uint8_t> encodeJpeg(const Canvas& canvas);

/// Two bytes a pixel, brightness 16 to 235. The width has to be even.
std::vector<uint8_t> encodeYuyv(const Canvas& canvas);

}  // namespace tessary::lab
