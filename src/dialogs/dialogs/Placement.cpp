#include "dialogs/Placement.h"

#include <algorithm>
#include <cmath>

namespace tessary {

ScreenPoint placementIn(const ScreenRect& parent, double width, double below) noexcept {
  return {std::trunc(parent.origin.x + (parent.size.width - width) / 2),
          std::trunc(parent.origin.y + below)};
}

ScreenPoint placementBeside(const ScreenRect& parent, const ScreenRect& screen,
                            double width) noexcept {
  const double right = screen.origin.x + screen.size.width;
  const double behind = parent.origin.x + parent.size.width;
  const double before = parent.origin.x - width;
  double x = behind;
  if (behind + width > right) x = before >= screen.origin.x ? before : right - width;
  return {x, std::max(parent.origin.y, screen.origin.y)};
}

}  // namespace tessary
