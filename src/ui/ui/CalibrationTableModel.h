#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include <QtCore/QAbstractTableModel>

#include "settings/Preferences.h"

namespace tessary {

/// The ten calibrations as rows of a table; the one in force has a mark before its number. A rename
/// is saved at once.
class CalibrationTableModel final : public QAbstractTableModel {
  Q_OBJECT
 public:
  /// Reads and changes the slots of `preferences`, which must outlive it. `slotInForce` tells
  /// which of them the calibration in force is, if any.
  CalibrationTableModel(Preferences& preferences,
                        std::function<std::optional<int32_t>()> slotInForce, QObject* parent);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  /// Takes any name as it stands, commas and semicolons too, though they cost the slot when the
  /// calibrations are read again.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  /// Empties the slot of a row and saves. The calibration in use stays in force.
  void deleteRow(int row);

 private:
  Preferences& preferences_;
  std::function<std::optional<int32_t>()> slotInForce_;
};

}  // namespace tessary
