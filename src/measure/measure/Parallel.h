#pragma once

#include "base/Geometry.h"

namespace tessary {

/// Where a parallel stands to its baseline.
///
///     pt3 - half ------- pt3 ------- pt3 + half     d: distance of the two, of either sign
///                         |
///     pt1 -------------- foot ------ pt2
struct Parallel {
  ImagePoint foot;
  ImagePoint half;
  double d;
};

/// The parallel through `pt3` to the line from `pt1` to `pt2`.
Parallel parallelThrough(ImagePoint pt1, ImagePoint pt2, ImagePoint pt3);

}  // namespace tessary
