#pragma once

#include <vector>

#include "capture/CameraControlBoard.h"
#include "ui/Dialog.h"

class QDialogButtonBox;
class QLabel;
class QPushButton;
class QScrollArea;

namespace tessary {

class CameraControlRow;

/// The window beside the picture in which the open camera is adjusted. Every change counts at once;
/// it follows what the camera and other programs change.
class CameraControlsWindow final : public Dialog {
  Q_OBJECT
 public:
  /// Stays above `parent`, which can be used meanwhile. `board` must outlive it.
  CameraControlsWindow(QWidget* parent, CameraControlBoard& board);
  ~CameraControlsWindow() override;

  /// Shows it beside its parent, or brings it forward where it is.
  void showWindow();

 private:
  void comeForward();
  void boardDidChange();
  /// Makes the rows anew: another camera, or another set of controls.
  void rebuild();
  bool hasRowsFor(std::span<const CameraControl> controls) const;
  /// Takes the size of the first rows that there are; from then on it is the user's.
  void fitToRows();

  CameraControlBoard& board_;
  QLabel* message_ = nullptr;  // all owned by the window
  QScrollArea* list_ = nullptr;
  QDialogButtonBox* buttons_ = nullptr;
  QPushButton* defaults_ = nullptr;
  std::vector<CameraControlRow*> rows_;  // in the board's order; owned by what the list shows
  bool isFitted_ = false;
  bool isAwaited_ = false;
};

}  // namespace tessary
