#pragma once
// What lies over the picture, in words: for those who hear it.

#include <string>

#include "measure/SHAPE.h"
#include "overlay/Calibration.h"

namespace tessary {

class Overlay;

/// Kind and values of a finished shape, the values with the digits of its label, or in pixels
/// without a calibration: "Line, 0.523mm". That a measurement has no extent is said in their place.
std::string shapeText(const SHAPE& shape, const Calibration& calibration);

/// The tool in hand, the reticle, the calibration in force and the selected shape:
/// "Tool: None. Reticle: Grid. Calibration: 625.00 pixels per mm. Selected: Line, 0.523mm."
std::string overlayText(const Overlay& overlay);

}  // namespace tessary
