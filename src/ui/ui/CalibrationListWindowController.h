#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "settings/Preferences.h"
#include "ui/Dialog.h"

namespace Ui {
class CalibrationListWindowController;
}

namespace tessary {

class CalibrationTableModel;

/// Told what to do with a slot.
class CalibrationListDelegate {
 public:
  virtual ~CalibrationListDelegate() = default;
  /// `slot` is -1 if no row was selected. `calibrateOrApply` is true to calibrate, false to apply.
  /// The sheet is still up and ends right after.
  virtual void calibrationListCompleted(int32_t slot, bool calibrateOrApply) = 0;
};

/// The sheet with the ten calibrations: to rename, delete, calibrate and apply them. It always ends
/// with 0; what was chosen reaches the delegate. Escape and the title bar end it like Close.
class CalibrationListWindowController final : public Dialog {
  Q_OBJECT
 public:
  /// Reads and changes the slots of `preferences`, which must outlive it. `slotInForce` tells
  /// which of them the calibration in force is, if any.
  CalibrationListWindowController(QWidget* parent, Preferences& preferences,
                                  std::function<std::optional<int32_t>()> slotInForce);
  ~CalibrationListWindowController() override;

  void setDelegate(CalibrationListDelegate* delegate) { _delegate = delegate; }
  /// The row in work; -1 after Close and while none is selected.
  int32_t editingItem() const { return _editingItem; }
  /// Selects the row as well, if there is one.
  void setEditingItem(int32_t row);

  void reject() override { closeClicked(); }

 protected:
  /// The table's keys: F2 renames from every cell of a row, and letters select nothing.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void layOutTable();
  void renameClicked();
  void deleteClicked();
  void calibrateClicked();
  void applyClicked();
  void closeClicked();
  void tableViewSelectionDidChange();
  /// Ends the sheet with the selected row handed to the delegate.
  void complete(bool calibrateOrApply);
  /// A name still being typed is taken over, as with any other click beside its field.
  void endEditing();
  int selectedRow() const;

  std::unique_ptr<Ui::CalibrationListWindowController> ui_;
  CalibrationTableModel* model_;  // owned by this dialog
  CalibrationListDelegate* _delegate = nullptr;
  int32_t _editingItem = -1;
};

}  // namespace tessary
