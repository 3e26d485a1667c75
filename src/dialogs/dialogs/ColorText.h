#pragma once

#include <string>

#include "base/Color.h"

namespace tessary {

/// A colour for those who can't see it: what it is called, and what it is exactly, 8 bits for each
/// of red, green and blue. "dark red, #8B0000". The alpha is left out; what is out of range is
/// taken for the nearest that isn't.
std::string colorText(const Color& color);

}  // namespace tessary
