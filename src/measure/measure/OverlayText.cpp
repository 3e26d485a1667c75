#include "measure/OverlayText.h"

#include <array>
#include <cstddef>
#include <string_view>

#include <fmt/format.h>

#include "base/ScaleType.h"
#include "measure/Overlay.h"
#include "measure/ShapeValues.h"

namespace tessary {
namespace {

constexpr std::string_view kNone = "None";

std::string_view toolText(int32_t operation) {
  if (operation == kOprCalibrationLeft || operation == kOprCalibrationRight)
    return "Calibration Line";
  const std::string_view kind = shapeKind(operation);
  return kind.empty() ? kNone : kind;
}

std::string_view reticleText(int32_t scaleType) {
  switch (scaleType) {
    case kScaleCrosshair: return "Crosshair";
    case kScaleGrid: return "Grid";
    case kScaleConcentric: return "Concentric";
    default: return kNone;
  }
}

std::string calibrationText(const Calibration& calibration) {
  if (!calibration.isCalibrated()) return std::string(kNone);
  return fmt::format("{:.2f} pixels per {}", calibration._pixelsPerUnit, calibration._unit);
}

/// What the values of a shape with three of them are, in the order of its label.
std::array<std::string_view, ShapeValues::kMost> valueNames(int32_t type) {
  if (type == kOprCircle) return {"radius ", "circumference ", "area "};
  if (type == kOprRect) return {"width ", "height ", "area "};
  return {};
}

}  // namespace

std::string shapeText(const SHAPE& shape, const Calibration& calibration) {
  std::string text(shapeKind(shape.type));
  if (shape.type == kOprPencil) return text;
  if (shape.text) return fmt::format("{}, {}", text, *shape.text);
  const ShapeValues values = shapeValues(shape, calibration);
  if (values.count() == 0) return text + ", no size";
  for (size_t i = 0; i < values.count(); ++i) {
    text.append(", ").append(valueNames(shape.type)[i]);
    appendNumber(text, values[i]);
    appendUnit(text, values[i].kind, calibration);
  }
  return text;
}

std::string overlayText(const Overlay& overlay) {
  const Calibration& calibration = overlay.context.calibration;
  const int32_t selected = overlay.tool._iSelectedShape;
  return fmt::format("Tool: {}. Reticle: {}. Calibration: {}. Selected: {}.",
                     toolText(overlay.tool.getCurrOperation()),
                     reticleText(overlay.scale.getCurrScale()), calibrationText(calibration),
                     overlay.shapes.hasShape(selected)
                         ? shapeText(overlay.shapes.shape(selected), calibration)
                         : std::string(kNone));
}

}  // namespace tessary
