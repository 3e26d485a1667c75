#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "base/Geometry.h"
#include "base/PointVertex.h"
#include "measure/Operations.h"
#include "overlay/MyDataArray.h"

namespace tessary {

/// One measurement or annotation over the picture, and the vertices that draw it. Points are image
/// coordinates; one without a role in its type holds (-1, -1).
///
///     type             pt1          pt2                  pt3                  hitRects
///     line             start        end                                       2
///     parallel lines   base start   base end             middle of parallel   2
///     circle           centre       on the rim                                2
///     rectangle        corner       opposite corner                           4
///     angle            vertex       end of first arm     end of second arm    3
///     pencil           first click  last release                              2
///     text             top left     bottom right, which each draw computes    1
///
/// The vertex arrays' `pos` tell where these vertices begin in the view's total lists.
struct SHAPE {
  SHAPE() { pencilPoints.pos = lineVertices.pos = pointVertices.pos = 0; }
  /// The text is shared; arrays are deep copies.
  SHAPE(const SHAPE&) = default;
  /// Takes the text over; arrays are deep copies all the same.
  SHAPE& operator=(SHAPE&&) = default;
  ~SHAPE() = default;

  int32_t type = kOprLine;
  ImagePoint pt1;
  ImagePoint pt2;
  ImagePoint pt3;
  MyDataArray<ImagePoint> pencilPoints;     ///< The stroke of a pencil shape.
  std::shared_ptr<const std::string> text;  ///< UTF-8; null except for a text shape.
  /// Where the mouse takes hold, rewritten by each draw. A zero rectangle never hits.
  std::array<ImageRect, 4> hitRects;
  MyDataArray<PointVertex> lineVertices;  ///< In pairs.
  MyDataArray<PointVertex> pointVertices;
};

}  // namespace tessary
