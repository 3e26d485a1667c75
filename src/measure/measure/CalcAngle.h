#pragma once

#include "base/Geometry.h"

namespace tessary {

/// The angle at `pt1` between the arms to `pt2` and `pt3`, in degrees from 0 to 180.
float _CalcAngle(Point pt1, Point pt2, Point pt3);

}  // namespace tessary
