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

}  // namespace tessary
