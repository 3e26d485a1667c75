#pragma once

#include <cstdint>

#include "base/Geometry.h"
#include "overlay/OverlayContext.h"

namespace tessary {

/// Values of `_opr1` while an end of the calibration line is dragged.
inline constexpr int32_t kOprCalibrationLeft = 51;
inline constexpr int32_t kOprCalibrationRight = 52;

/// The movable double line that the user lays over a known distance to calibrate.
///
///          L                    R
///        > | <                > | <      arrows, larger while the mouse is over the handle
///          |====================|        two pixels thick, at half the frame's height
///          |                    |        handles, 60 up and 60 down
///
/// The mouse rules hold at 100 percent only; the caller tests the zoom and `_showCalibrationLine`.
/// Lengths are video pixels. Main thread.
class CalibrationLine {
 public:
  explicit CalibrationLine(OverlayContext& context) : context_(context) {}

  bool isShown() const { return _showCalibrationLine != 0; }
  int32_t calibrationLineLen() const { return _calibrationLineLen; }
  /// Where a press takes hold of a handle.
  ImageRect leftHandleArea() const { return handleArea(_calibrationLineLeftPosition); }
  ImageRect rightHandleArea() const { return handleArea(_calibrationLineRightPosition); }

  /// Shows the line, centred in the frame, two thirds of the visible width long (view units); what
  /// is wider than one and a half frames gives a line longer than the frame. The caller zooms to
  /// 100 percent and redraws.
  void startCalibration(double superviewWidth);
  /// Hides the line; the caller zooms and redraws. Its length and hover flags stay.
  void stopCalibration() { _showCalibrationLine = 0; }

  /// Appends the line to `_totalLines` if it is shown.
  void drawCalibrationLine() const;

  /// Sets the hover flags; the caller redraws.
  void mouseMoved(ImagePoint point);
  /// Takes hold: `opr1` becomes 51 or 52 on a handle, the right one before the left, and stays as
  /// it is elsewhere. Remembers where the drag starts.
  void mouseDown(ImagePoint point, int32_t& opr1);
  /// Moves the end that `opr1` tells to `screenDx` screen units from where it was at the press.
  /// Refused, and the line left as it is, outside the visible part of the frame (from
  /// `viewLocationX` on, `superviewWidth` wide) and for a length below 50. True if the line changed
  /// and is to be redrawn.
  bool mouseDragged(int32_t opr1, double screenDx, double viewLocationX, double superviewWidth);
  /// Lets go: a tool that was armed before is meant to be lost.
  static void mouseUp(int32_t& opr1) { opr1 = 0; }

  int32_t _showCalibrationLine = 0;  ///< Not 0 while calibrating.
  int32_t _calibrationLineLen = 0;   ///< Right minus left.
  int32_t _calibrationLineLeftPosition = 0;
  int32_t _calibrationLineRightPosition = 0;
  int32_t _calibrationLineLen0 = 0;  ///< The three as they were at the press.
  int32_t _calibrationLineLeftPosition0 = 0;
  int32_t _calibrationLineRightPosition0 = 0;
  int32_t _showCalibrationLineLeftArrow = 0;  ///< Not 0 while the mouse is over that handle.
  int32_t _showCalibrationLineRightArrow = 0;

 private:
  ImageRect handleArea(int32_t x) const;

  OverlayContext& context_;
};

}  // namespace tessary
