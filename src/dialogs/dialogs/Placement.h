#pragma once

#include "base/Geometry.h"

namespace tessary {

/// How far below the upper edge of the main window its auxiliary windows stand, in pixels.
inline constexpr double kBelowTitle = 77;
inline constexpr double kNoticeBelowTop = 67;

/// Upper left corner of a window of `width` that stands centred in `parent`, its upper edge `below`
/// the parent's; y grows downward. Each coordinate is the integer part of its whole sum, so that
/// left of and above the screen's origin it is rounded towards it.
ScreenPoint placementIn(const ScreenRect& parent, double width, double below) noexcept;

/// Upper left corner of a window of `width` that stands beside `parent`, upper edges level: to its
/// right if there is room on `screen`, the part of it that is for windows, else to its left, else
/// at the screen's right edge.
ScreenPoint placementBeside(const ScreenRect& parent, const ScreenRect& screen,
                            double width) noexcept;

/// `frame` brought into `screen`, the part of it that is for windows: moved no further than need
/// be, and cut only where the screen is too small for it, though not below `least`.
ScreenRect broughtWithin(const ScreenRect& frame, const ScreenRect& screen, Size least) noexcept;

}  // namespace tessary
