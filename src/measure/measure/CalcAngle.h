#pragma once

#include "base/Geometry.h"

namespace tessary {

/// The angle at `pt1` between the arms to `pt2` and `pt3`, in degrees from 0 to 180.
float _CalcAngle(ImagePoint pt1, ImagePoint pt2, ImagePoint pt3);

}  // namespace tessary
