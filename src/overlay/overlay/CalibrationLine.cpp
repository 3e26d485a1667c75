#include "overlay/CalibrationLine.h"

#include <algorithm>

#include "base/Truncate.h"
#include "settings/Preferences.h"

namespace tessary {

namespace {

constexpr int32_t kHandleReach = 60;  // up and down from the line
constexpr int32_t kArrowRise = 30;    // of the arrows over the line
constexpr int32_t kShortestLine = 50;

}  // namespace

void CalibrationLine::startCalibration(double superviewWidth) {
  const int64_t w = truncateToInt32(superviewWidth);
  // Since the first of the two leaves at most a third, the line always opens at two thirds.
  int64_t length = std::min<int64_t>(_calibrationLineLen, w / 3);
  length = std::max(length, 2 * w / 3);
  _calibrationLineLen = static_cast<int32_t>(length);
  _calibrationLineLeftPosition = static_cast<int32_t>((context_.cvTextureSize.width - length) / 2);
  _calibrationLineRightPosition =
      static_cast<int32_t>(int64_t{_calibrationLineLeftPosition} + length);
  _showCalibrationLine = 1;
}

void CalibrationLine::drawCalibrationLine() const {
  if (_showCalibrationLine == 0) return;
  const LinePrimitives& lines = context_.lines;
  MyDataArray<PointVertex>& target = context_._totalLines;
  const VertexColor color = LinePrimitives::mtlColorFromColor(context_.preferences.lineColor);
  const double y = context_.cvTextureSize.height / 2;
  const double left = _calibrationLineLeftPosition;
  const double right = _calibrationLineRightPosition;

  const auto addLine = [&](ImagePoint from, ImagePoint to) {
    lines.addLineToLineVector(target, from, to, color);
  };
  // A pair of arrows that point at the handle from both sides, their tips `gap` away from it.
  const auto addArrows = [&](double handle, double gap, int32_t size) {
    lines.drawSmallTriangle(target, {handle - gap, y - kArrowRise}, true, size, color);
    lines.drawSmallTriangle(target, {handle + gap, y - kArrowRise}, false, size, color);
  };

  addLine({left, y}, {right, y});
  addLine({left, y + 1}, {right, y + 1});
  addLine({left, y - kHandleReach}, {left, y + kHandleReach});
  addLine({right, y - kHandleReach}, {right, y + kHandleReach});
  addArrows(left, 4, 4);
  addArrows(right, 4, 4);
  if (_showCalibrationLineLeftArrow != 0) addArrows(left, 3, 6);
  if (_showCalibrationLineRightArrow != 0) addArrows(right, 3, 6);
}

void CalibrationLine::mouseMoved(ImagePoint point) {
  _showCalibrationLineLeftArrow = contains(leftHandleArea(), point) ? 1 : 0;
  _showCalibrationLineRightArrow = contains(rightHandleArea(), point) ? 1 : 0;
}

void CalibrationLine::mouseDown(ImagePoint point, int32_t& opr1) {
  if (contains(leftHandleArea(), point)) opr1 = kOprCalibrationLeft;
  if (contains(rightHandleArea(), point)) opr1 = kOprCalibrationRight;
  _calibrationLineLen0 = _calibrationLineLen;
  _calibrationLineLeftPosition0 = _calibrationLineLeftPosition;
  _calibrationLineRightPosition0 = _calibrationLineRightPosition;
}

bool CalibrationLine::mouseDragged(int32_t opr1, double screenDx, double viewLocationX,
                                   double superviewWidth) {
  // 64 bits: a drag may be as far as 32 bits go.
  const int64_t dx = truncateToInt32(screenDx);
  if (opr1 == kOprCalibrationLeft) {
    const int64_t left = _calibrationLineLeftPosition0 + dx;
    const int64_t length = _calibrationLineLen0 - dx;
    if (static_cast<double>(left) > viewLocationX && length >= kShortestLine &&
        left != _calibrationLineLeftPosition) {
      _calibrationLineLeftPosition = static_cast<int32_t>(left);
      _calibrationLineLen = static_cast<int32_t>(length);
      return true;
    }
  } else if (opr1 == kOprCalibrationRight) {
    const int64_t limit = truncateToInt32(viewLocationX + superviewWidth);
    const int64_t right = _calibrationLineRightPosition0 + dx;
    const int64_t length = _calibrationLineLen0 + dx;
    if (right < limit && length >= kShortestLine && right != _calibrationLineRightPosition) {
      _calibrationLineRightPosition = static_cast<int32_t>(right);
      _calibrationLineLen = static_cast<int32_t>(length);
      return true;
    }
  }
  return false;
}

ImageRect CalibrationLine::handleArea(int32_t x) const {
  const int32_t y = context_.cvTextureSize.height / 2;
  return {{static_cast<double>(x) - 4, static_cast<double>(y) - kHandleReach}, {9, 120}};
}

}  // namespace tessary
