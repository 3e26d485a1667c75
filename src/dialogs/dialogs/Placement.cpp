#include "dialogs/Placement.h"

#include <cmath>

namespace tessary {

ScreenPoint placementIn(const ScreenRect& parent, double width, double below) noexcept {
  return {std::trunc(parent.origin.x + (parent.size.width - width) / 2),
          std::trunc(parent.origin.y + below)};
}

}  // namespace tessary
