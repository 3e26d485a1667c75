#include "dialogs/Placement.h"

#include <algorithm>
#include <cmath>

namespace tessary {
namespace {

struct Span {
  double start;
  double length;
};

Span broughtWithin(Span span, Span room, double least) noexcept {
  const double length = std::min(span.length, std::max(room.length, least));
  const double last = room.start + room.length - length;
  return {std::max(std::min(span.start, last), room.start), length};
}

}  // namespace

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

ScreenRect broughtWithin(const ScreenRect& frame, const ScreenRect& screen, Size least) noexcept {
  const Span across = broughtWithin({frame.origin.x, frame.size.width},
                                    {screen.origin.x, screen.size.width}, least.width);
  const Span down = broughtWithin({frame.origin.y, frame.size.height},
                                  {screen.origin.y, screen.size.height}, least.height);
  return {{across.start, down.start}, {across.length, down.length}};
}

}  // namespace tessary
